#include "fx/reverb.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "reference/reference_reverb.h"

namespace norava {
namespace {

using Buffer = std::vector<float>;

struct Sound {
    explicit Sound(std::size_t frames) : left(frames), right(frames) {}
    static Sound Noise(std::size_t frames, unsigned seed) {
        std::minstd_rand random(seed);
        std::uniform_real_distribution<float> noise(-0.5f, 0.5f);
        Sound sound(frames);
        for (std::size_t i = 0; i < frames; ++i) {
            sound.left[i] = noise(random);
            sound.right[i] = noise(random);
        }
        return sound;
    }
    Buffer left, right;
};

void reverberate(fxReverb& reverb, Sound& sound) {
    float* channels[2] = {sound.left.data(), sound.right.data()};
    reverb.processReplacing(channels, channels, static_cast<int>(sound.left.size()));
}

void setWetOnly(fxReverb& reverb) {
    reverb.setParameter(kReverbMuteDry, 1.0f);
    reverb.setParameter(kReverbMuteER, 1.0f);
}

TEST(Reverb, CooksItsDefaultsToWholeNumbers) {
    const int expected[] = {0, 75, 40, 0, 50, 100, 10, 500, 15, 40, 0, -35, -120, 100, 0, 0, 0, 0};
    for (std::size_t i = 0; i < kReverbParameters; ++i) {
        const float v = kDefaultReverbProgram.values[i];
        EXPECT_EQ(reverbValueOf(static_cast<ReverbParameter>(i), v), expected[i]) << i;
    }
    EXPECT_EQ(reverbValueOf(kReverbHighCut, 7.0f), kReverbFilterOff);
    EXPECT_EQ(reverbValueOf(kReverbHighCut, -7.0f), 5);
    EXPECT_EQ(reverbValueOf(kReverbHighCut, std::nanf("")), 40);
}

TEST(Reverb, TellsItsParametersInWords) {
    fxReverb reverb;
    reverb.setParameter(kReverbDecay, 3.5f);
    EXPECT_EQ(reverb.getParameter(kReverbDecay), 3.5f) << "as it came";
    const std::pair<int, const char*> cases[] = {{kReverbER, "ER|-3.5|dB"},
                                                 {kReverbHighCut, "HighCut|4000|Hz"},
                                                 {kReverbMuteDry, "MuteDry|Off|"},
                                                 {kReverbParameters, "||"}};
    for (const auto& [index, words] : cases) {
        char name[32], label[32], display[8];
        reverb.getParameterName(index, name, sizeof name);
        reverb.getParameterLabel(index, label, sizeof label);
        reverb.getParameterDisplay(index, display, sizeof display);
        EXPECT_EQ(std::string(name) + "|" + display + "|" + label, words);
    }
}

// Time in which a tail of noise loses 60 dB, by the slope between two moments.
double decaySeconds(float decay) {
    fxReverb reverb;
    reverb.setSampleRate(48000.0f);
    setWetOnly(reverb);
    reverb.setParameter(kReverbHighDamping, 1.0f);
    reverb.setParameter(kReverbDecay, decay);
    Sound sound = Sound::Noise(48000, 1);
    reverberate(reverb, sound);
    const auto levelOfASecond = [&reverb] {
        Sound tail(48000);
        reverberate(reverb, tail);
        const Buffer& left = tail.left;
        return 10.0 * std::log10(std::inner_product(left.begin(), left.end(), left.begin(), 0.0));
    };
    const double first = levelOfASecond();
    return 60.0 / (first - levelOfASecond());
}

TEST(Reverb, DiesAwayInItsDecayTime) {
    for (const int tenths : {10, 30, 100}) {
        // The decay counts the four delays of the tank, but the way round leads through the
        // diffusers too.
        const double expected = (15553.0 + 6036.0) / 15553.0 * tenths / 10.0;
        const double seconds = decaySeconds(static_cast<float>(tenths - 1) / 199.0f);
        EXPECT_NEAR(seconds, expected, 0.15 * expected);
    }
}

TEST(Reverb, AccumulatesWhatItWouldReplace) {
    fxReverb replacing, adding;
    Sound in = Sound::Noise(700, 4), base = Sound::Noise(700, 5), sum = base;
    float* inputs[2] = {in.left.data(), in.right.data()};
    float* sums[2] = {sum.left.data(), sum.right.data()};
    adding.process(inputs, sums, 700);
    reverberate(replacing, in);
    for (std::size_t i = 0; i < 700; ++i)
        ASSERT_EQ(sum.left[i], base.left[i] + in.left[i]);
}

TEST(Reverb, PassesItsInputWhileBypassed) {
    fxReverb reverb;
    reverb.startBypassCountdown(100);
    for (const bool passes : {true, true, false}) {  // 100, 36 and no frames left
        Sound sound(64);
        sound.left[3] = 2.0f;
        const Buffer dry = sound.left;
        reverberate(reverb, sound);
        EXPECT_EQ(sound.left == dry, passes);
    }
    EXPECT_TRUE(reverb.inputMeters()[0].clipped);
    EXPECT_GE(reverb.inputMeters()[0].peak, 1.9f);
    EXPECT_FALSE(reverb.inputMeters()[1].clipped);
    reverb.setBypass(true);
    Sound silence(64);
    reverberate(reverb, silence);
    EXPECT_FALSE(reverb.inputMeters()[0].clipped);
}

// All parameters and sample rates, blocks of all sizes, forgotten again and again before the lines
// are full.
TEST(Reverb, GivesTheBitsOfItsPlainTwin) {
    std::minstd_rand random(11);
    std::uniform_real_distribution<float> knob(0.0f, 1.0f);
    for (const float rate : {1000.0f, 3000.0f, 8000.0f, 44100.0f, 48000.0f, 192000.0f, 768000.0f}) {
        fxReverb reverb;
        reference::Reverb twin;
        reverb.setSampleRate(rate);
        twin.setSampleRate(rate);
        for (unsigned block = 0; block < 120; ++block) {
            for (int i = 0; i < kReverbParameters; ++i) {
                // The geometry rarely, the rest often.
                const bool geometry = i == kReverbRoomSize || i == kReverbPredelay;
                if (knob(random) > (geometry ? 0.05f : 0.1f)) continue;
                const float v =
                    i >= int{kReverbMuteInput} ? std::floor(1.2f * knob(random)) : knob(random);
                reverb.setParameter(i, v);
                twin.setParameter(i, v);
            }
            if (block % 29 == 0) {
                reverb.suspend();
                twin.suspend();
            }
            const std::size_t sizes[] = {1, 5, 6, 64, 511, 3000};
            const std::size_t frames = sizes[random() % 6];
            Sound sound = block % 11 < 7 ? Sound::Noise(frames, block) : Sound(frames);
            Sound expected = sound;
            reverberate(reverb, sound);
            for (std::size_t i = 0; i < frames; ++i)
                twin.frame(expected.left[i], expected.right[i]);
            const std::size_t bytes = frames * sizeof(float);
            ASSERT_EQ(std::memcmp(sound.left.data(), expected.left.data(), bytes), 0) << rate;
            ASSERT_EQ(std::memcmp(sound.right.data(), expected.right.data(), bytes), 0) << block;
        }
    }
}

}  // namespace
}  // namespace norava
