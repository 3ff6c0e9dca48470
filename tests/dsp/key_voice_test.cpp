#include "dsp/key_voice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "dsp/key_kernel.h"
#include "reference/reference_key.h"

namespace norava {
namespace {

constexpr int kFrames = 48;  // a control block of 1 ms
constexpr int kMaxBlock = 400;

// All keys of an instrument, as the product plays them and as the plain reference does.
struct Sound {
    std::vector<float> left = std::vector<float>(kMaxBlock), right = left;
    float peak1 = 0.0f, peak2 = 0.0f;
};

struct Instrument : Sound {
    explicit Instrument(KernelPath kernelPath = fastestKernelPath()) : path(kernelPath) {
        for (int k = 0; k < kNumKeys; ++k) {
            own.push_back(std::make_unique<CNoravaKey>(kFirstKeyNote + k, settings));
            keys.push_back(own.back().get());
        }
    }
    void render(int frames) {
        processKeys(path, settings, left.data(), right.data(), frames, keys.data(), &peak1, &peak2);
    }

    KernelPath path;
    SoundSettings settings;
    std::vector<std::unique_ptr<CNoravaKey>> own;
    std::vector<CNoravaKey*> keys;
};

struct Twin : Sound {
    explicit Twin(const Instrument& product) {
        keys.reserve(kNumKeys);
        for (int k = 0; k < kNumKeys; ++k)
            keys.emplace_back(kFirstKeyNote + k, product.settings);
    }
    void render(int frames) {
        reference::processKeys(keys, seed, left.data(), right.data(), frames, &peak1, &peak2);
    }

    std::vector<reference::Key> keys;
    std::uint32_t seed = 0;
};

class Dice {
  public:
    explicit Dice(unsigned seed) : engine_(seed) {}
    float unit() { return std::uniform_real_distribution<float>(0.0f, 1.0f)(engine_); }
    int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(engine_); }
    bool chance(float p) { return unit() < p; }
    // A knob: often at an end, where the formulas have their corners.
    float knob() { return chance(0.3f) ? 0.0f : chance(0.15f) ? 1.0f : unit(); }

  private:
    std::mt19937 engine_;
};

void throwSound(Dice& dice, SoundSettings& s) {
    ++s.revision;
    for (float* const knob :
         {&s.ampSustain, &s.stringMix, &s.stringStereoSeparation, &s.combRatio, &s.combLevel,
          &s.loCutCutoff, &s.loCutResonance, &s.hiCutSustain, &s.hiCutCutoff,
          &s.noiseLevelComplement, &s.noiseRate, &s.egSustain, &s.modWheel, &s.channelAftertouch})
        *knob = dice.knob();
    for (StringSettings* const string : {&s.string1, &s.string2}) {
        *string = {.decay = 0.5f + 0.5f * dice.unit(),
                   .decayInverted = dice.chance(0.3f),
                   .dampOffset = dice.knob(),
                   .dampAmount = dice.knob(),
                   .dampSharpness = dice.knob()};
    }
    s.tuneSemitones = dice.unit() * 2 - 1;
    s.ampAttackSeconds = 0.001f + 0.2f * dice.knob();
    s.ampDecaySeconds = 0.001f + dice.knob();
    s.ampReleaseSeconds = 0.01f + 0.1f * dice.knob();
    s.stringSaturation = dice.chance(0.5f) ? 0.0f : dice.unit();
    s.combFeedback = 0.9f * dice.knob();
    s.combFeedbackInverted = dice.chance(0.5f);
    s.combLevelInverted = dice.chance(0.5f);
    s.hiCutAttack = 0.3f * dice.knob();
    s.hiCutDecay = 0.3f * dice.knob();
    s.hiCutResonance = 0.4f * dice.knob();
    s.hiCutDrive = dice.chance(0.5f) ? 0.0f : 10.0f * dice.unit();
    s.egAttackSeconds = 0.001f + 0.05f * dice.knob();
    s.egDecaySeconds = 0.001f + 0.1f * dice.knob();
    s.stringRatio = dice.below(7);
    s.octaveSelector = static_cast<float>(dice.below(7)) / 6.0f;
    s.pitchWheel = dice.unit() * 2 - 1;
    // Sources and destinations that no menu has are among them.
    for (ModulationSlot& slot : s.matrix)
        slot = {.source = dice.chance(0.4f) ? 0 : dice.below(11) - 1,
                .amount = (dice.unit() * 2 - 1) * (dice.chance(0.2f) ? 1.0f : 0.2f),
                .destination = dice.below(17) - 1};
}

// One instrument as the product renders it and one as the reference does, played at random.
void playAgainstReference(KernelPath path, unsigned seed) {
    Instrument product(path);
    Twin twin(product);
    Dice dice(seed);
    for (int block = 0; block < 120; ++block) {
        if (block == 0 || dice.chance(0.1f)) throwSound(dice, product.settings);
        product.settings.lfoValue = std::cos(0.1f * static_cast<float>(block));
        for (int n = dice.chance(0.3f) ? dice.below(30) : 0; n > 0; --n) {
            const auto k = static_cast<std::size_t>(dice.below(kNumKeys));
            if (dice.chance(0.5f)) {
                const float velocity = dice.unit();
                product.keys[k]->start(velocity);
                twin.keys[k].start(velocity);
            } else {
                product.keys[k]->release();
                twin.keys[k].release();
            }
        }
        // The usual chunk, hosts that cut at every event, and everything between.
        const int frames = dice.chance(0.4f)   ? kFrames
                           : dice.chance(0.5f) ? 1 + dice.below(8)
                                               : 1 + dice.below(kMaxBlock);
        product.render(frames);
        twin.render(frames);
        for (std::size_t i = 0; i < static_cast<std::size_t>(frames); ++i) {
            // Two silences may differ in sign, and a blown-up sound in how it blew up: neither can
            // be heard.
            if (!std::isfinite(twin.left[i]) || std::abs(twin.left[i]) > 1e9f) return;
            ASSERT_EQ(product.left[i], twin.left[i]) << "block " << block << " frame " << i;
            ASSERT_EQ(product.right[i], twin.right[i]) << "block " << block << " frame " << i;
        }
        ASSERT_EQ(product.peak1, twin.peak1) << "block " << block;
        ASSERT_EQ(product.peak2, twin.peak2) << "block " << block;
        ASSERT_EQ(product.settings.noiseSeed, twin.seed);
    }
}

class KeyKernel : public testing::TestWithParam<KernelPath> {};

TEST_P(KeyKernel, GivesTheBitsOfThePlainReference) {
    if (!kernelPathAvailable(GetParam())) GTEST_SKIP() << "this machine lacks the instructions";
    for (unsigned seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE(seed);
        ASSERT_NO_FATAL_FAILURE(playAgainstReference(GetParam(), seed));
    }
}

INSTANTIATE_TEST_SUITE_P(Paths, KeyKernel, testing::Values(KernelPath::baseline, KernelPath::wide),
                         [](const testing::TestParamInfo<KernelPath>& path) {
                             return path.param == KernelPath::wide ? "Wide" : "Baseline";
                         });

struct Voice {
    explicit Voice(int note = 60) : key(note, settings) {}
    // Control blocks until the key falls silent, or `most`.
    int blocksLeft(int most) {
        int blocks = 0;
        for (; blocks < most && key.isActive(); ++blocks)
            key.updateParams(kFrames);
        return blocks;
    }
    const KeyStrings& strings() const { return key.kernelData().strings; }
    int lengthFrames(int line) const {
        return strings().lines.length[line] / strings().lines.stride[line];
    }

    SoundSettings settings;
    CNoravaKey key;
};

TEST(KeyVoice, FallsSilentAfterTheReleaseTime) {
    Voice voice;
    voice.settings.ampReleaseSeconds = 0.1f;
    voice.key.release();  // of a silent key: nothing
    voice.key.start(1.0f);
    EXPECT_EQ(voice.blocksLeft(500), 500) << "held";
    for (const char* release : {"first", "second: begins anew"}) {
        voice.key.release();
        voice.blocksLeft(60);
        voice.key.release();
        EXPECT_EQ(voice.blocksLeft(500), 102) << release << ", 100 blocks and those at its ends";
        voice.key.start(1.0f);
    }
    voice.key.release();
    voice.blocksLeft(60);
    voice.key.start(1.0f);
    EXPECT_EQ(voice.blocksLeft(500), 500) << "a new start takes the release back";
}

// Whatever the lengths, which are whole frames, the key sounds at its pitch and the strings stand
// in their ratio.
TEST(KeyVoice, StringLengthsKeepPitchAndRatio) {
    constexpr int kFirst[] = {4, 3, 2, 1, 1, 1, 1}, kSecond[] = {1, 1, 1, 1, 2, 3, 4};
    for (int note = kFirstKeyNote; note < kFirstKeyNote + kNumKeys; ++note) {
        Voice voice(note);
        const KeyLines& lines = voice.strings().lines;
        for (int setting = 0; setting < 7 * 7; ++setting) {
            const int octave = setting / 7, ratio = setting % 7;
            SCOPED_TRACE(testing::Message() << note << " " << octave << " " << ratio);
            voice.settings.octaveSelector = static_cast<float>(octave) / 6.0f;
            voice.settings.stringRatio = ratio;
            voice.settings.combRatio = ratio % 2 == 0 ? 0.0f : 1.0f;
            ++voice.settings.revision;
            voice.key.start(1.0f);
            voice.key.updateParams(kFrames);

            const double hz = 220.0 * std::exp2((note - 57) / 12.0 + octave - 3);
            const int length1 = voice.lengthFrames(kString1Pair);
            const int length2 = voice.lengthFrames(kString2Pair);
            ASSERT_GE(std::min(length1, length2), 1);
            ASSERT_EQ(length1 * kSecond[ratio], length2 * kFirst[ratio]);
            ASSERT_GT(length1, 48000 / hz - kFirst[ratio] - 0.01) << "shortened without need";
            ASSERT_NEAR(voice.strings().pitchRatio * 48000 / length1 / hz, 1.0, 1e-6);
            ASSERT_EQ(voice.lengthFrames(kComb1), ratio % 2 == 0 ? 1 : length1);
            ASSERT_EQ(voice.lengthFrames(kComb2), ratio % 2 == 0 ? 1 : length2);
            for (int line = 0; line + 1 < kKeyLines; ++line)
                ASSERT_LE(lines.end[line], lines.start[line + 1]) << "lines overlap";
        }
    }
}

// A start clears no line and moves no head. Bent far down, a key steps once in many frames, so that
// notes also start while a line stands at its end.
TEST(KeyVoice, AStartGoesOnWhereTheLinesStand) {
    Instrument product;
    Twin twin(product);
    const std::vector<float> tuning(128, -60.0f);
    product.settings.keyTuningSemitones = tuning.data();
    product.settings.hiCutCutoff = 0.9f;
    Dice dice(1);
    for (int i = 0; i < 20000; ++i) {
        if (i == 0 || dice.below(64) == 0) {
            product.settings.octaveSelector = static_cast<float>(3 + dice.below(4)) / 6.0f;
            product.settings.stringRatio = dice.below(7);
            ++product.settings.revision;
            product.keys[70]->start(1.0f);
            twin.keys[70].start(1.0f);
        }
        product.render(1);
        twin.render(1);
        ASSERT_EQ(product.left[0], twin.left[0]) << i;
    }
    EXPECT_GT(product.peak1, 0.0f);
}

}  // namespace
}  // namespace norava
