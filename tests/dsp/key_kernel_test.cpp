#include "dsp/key_kernel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "dsp/key_instruments.h"

namespace norava {
namespace {

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

void throwString(Dice& dice, StringSettings& string) {
    string = {.decay = 0.5f + 0.5f * dice.unit(),
              .decayInverted = dice.chance(0.3f),
              .dampOffset = dice.knob(),
              .dampAmount = dice.knob(),
              .dampSharpness = dice.knob()};
}

void throwSound(Dice& dice, SoundSettings& s) {
    ++s.revision;
    s.tuneSemitones = dice.unit() * 2 - 1;
    s.ampAttackSeconds = 0.001f + 0.2f * dice.knob();
    s.ampDecaySeconds = 0.001f + dice.knob();
    s.ampSustain = dice.knob();
    s.ampReleaseSeconds = 0.01f + 0.1f * dice.knob();
    throwString(dice, s.string1);
    throwString(dice, s.string2);
    s.stringSaturation = dice.chance(0.5f) ? 0.0f : dice.unit();
    s.stringMix = dice.knob();
    s.stringStereoSeparation = dice.knob();
    s.combRatio = dice.knob();
    s.combFeedback = 0.9f * dice.knob();
    s.combFeedbackInverted = dice.chance(0.5f);
    s.combLevel = dice.knob();
    s.combLevelInverted = dice.chance(0.5f);
    s.loCutCutoff = dice.knob();
    s.loCutResonance = dice.knob();
    s.hiCutAttack = 0.3f * dice.knob();
    s.hiCutDecay = 0.3f * dice.knob();
    s.hiCutSustain = dice.knob();
    s.hiCutCutoff = dice.knob();
    s.hiCutResonance = 0.4f * dice.knob();
    s.hiCutDrive = dice.chance(0.5f) ? 0.0f : 10.0f * dice.unit();
    s.noiseLevelComplement = dice.knob();
    s.noiseRate = dice.knob();
    s.egAttackSeconds = 0.001f + 0.05f * dice.knob();
    s.egDecaySeconds = 0.001f + 0.1f * dice.knob();
    s.egSustain = dice.knob();
    s.stringRatio = dice.below(7);
    s.octaveSelector = static_cast<float>(dice.below(7)) / 6.0f;
    s.modWheel = dice.unit();
    s.pitchWheel = dice.unit() * 2 - 1;
    s.channelAftertouch = dice.unit();
    for (ModulationSlot& slot : s.matrix)
        slot = {.source = dice.chance(0.4f) ? 0 : dice.below(10),
                .amount = (dice.unit() * 2 - 1) * (dice.chance(0.2f) ? 1.0f : 0.2f),
                .destination = dice.below(16)};
}

// One instrument as the product renders it and one as the reference does, played at random.
void playAgainstReference(KernelPath path, unsigned seed, int blocks) {
    Instrument product(path);
    Twin twin;
    Dice dice(seed);
    throwSound(dice, product.settings);
    copySound(product.settings, twin.settings);
    for (int block = 0; block < blocks; ++block) {
        if (dice.chance(0.1f)) {
            throwSound(dice, product.settings);
            copySound(product.settings, twin.settings);
        }
        product.settings.lfoValue = twin.settings.lfoValue =
            std::cos(0.1f * static_cast<float>(block));
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
        const int frames = dice.chance(0.4f)   ? 48
                           : dice.chance(0.5f) ? 1 + dice.below(8)
                                               : 1 + dice.below(kMaxBlock);
        product.render(frames);
        twin.render(frames);
        for (int i = 0; i < frames; ++i) {
            const auto at = static_cast<std::size_t>(i);
            // Two silences may differ in sign, and a blown-up sound in how it blew up: neither can
            // be heard.
            if (!std::isfinite(twin.left[at]) || std::abs(twin.left[at]) > 1e9f) return;
            ASSERT_EQ(product.left[at], twin.left[at])
                << "seed " << seed << " block " << block << " frame " << i;
            ASSERT_EQ(product.right[at], twin.right[at])
                << "seed " << seed << " block " << block << " frame " << i;
        }
        ASSERT_EQ(product.peak1, twin.peak1) << "seed " << seed << " block " << block;
        ASSERT_EQ(product.peak2, twin.peak2) << "seed " << seed << " block " << block;
        ASSERT_EQ(product.settings.noiseSeed, twin.seed);
    }
}

class KeyKernel : public testing::TestWithParam<KernelPath> {
  protected:
    void SetUp() override {
        if (!kernelPathAvailable(GetParam()))
            GTEST_SKIP() << "this machine lacks the instruction set";
    }
};

TEST_P(KeyKernel, GivesTheBitsOfThePlainReference) {
    for (unsigned seed = 1; seed <= 12; ++seed) {
        playAgainstReference(GetParam(), seed, 120);
        if (HasFatalFailure()) return;
    }
}

TEST_P(KeyKernel, ASilencedKeyStartsAsIfItWereNew) {
    Instrument used(GetParam());
    used.settings.matrix[0] = {.source = 1, .amount = 0.5f, .destination = 5};
    used.settings.stringRatio = 6;
    for (CNoravaKey* key : used.keys)
        key->start(1.0f);
    for (int i = 0; i < 100; ++i)
        used.render(300);
    for (CNoravaKey* key : used.keys)
        key->reset();
    used.settings.noiseSeed = 0;

    Instrument fresh(GetParam());
    copySound(used.settings, fresh.settings);
    for (Instrument* instrument : {&used, &fresh})
        for (int k : {0, 7, 40, 83})
            instrument->keys[static_cast<std::size_t>(k)]->start(0.7f);
    for (int i = 0; i < 200; ++i) {
        used.render(300);
        fresh.render(300);
        ASSERT_EQ(used.left, fresh.left) << i;
        ASSERT_EQ(used.right, fresh.right) << i;
    }
}

TEST_P(KeyKernel, RunawayPitchModulationStaysBounded) {
    Instrument instrument(GetParam());
    // The LFO drives its own amplitude, and the amplitude the pitch.
    instrument.settings.matrix[0] = {.source = 2, .amount = 1.0f, .destination = 0};
    instrument.settings.matrix[1] = {.source = 5, .amount = 1.0f, .destination = 0};
    instrument.settings.matrix[2] = {.source = 2, .amount = 1.0f, .destination = 3};
    instrument.settings.lfoValue = instrument.settings.channelAftertouch = 1.0f;
    for (CNoravaKey* key : instrument.keys)
        key->start(1.0f);
    for (int i = 0; i < 300; ++i)
        instrument.render(48);
    for (const CNoravaKey* key : instrument.keys) {
        EXPECT_LE(key->kernelData().strings.pitchRatio, kMaxPitchRatio);
        EXPECT_LE(key->getModulator(0), 64.0f);
    }
}

INSTANTIATE_TEST_SUITE_P(Paths, KeyKernel, testing::Values(KernelPath::baseline, KernelPath::wide),
                         [](const testing::TestParamInfo<KernelPath>& path) {
                             return path.param == KernelPath::wide ? "Wide" : "Baseline";
                         });

}  // namespace
}  // namespace norava
