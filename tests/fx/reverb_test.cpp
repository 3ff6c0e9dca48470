#include "fx/reverb.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "reference/reference_reverb.h"

namespace norava {
namespace {

using Buffer = std::vector<float>;

struct Sound {
    explicit Sound(std::size_t frames) : left(frames), right(frames) {}
    int frames() const { return static_cast<int>(left.size()); }
    void addNoise(unsigned seed) {
        std::minstd_rand random(seed);
        std::uniform_real_distribution<float> noise(-0.5f, 0.5f);
        for (float& x : left)
            x += noise(random);
        for (float& x : right)
            x += noise(random);
    }
    bool sameBits(const Sound& other) const {
        for (std::size_t i = 0; i < left.size(); ++i) {
            if (std::bit_cast<std::uint32_t>(left[i]) !=
                    std::bit_cast<std::uint32_t>(other.left[i]) ||
                std::bit_cast<std::uint32_t>(right[i]) !=
                    std::bit_cast<std::uint32_t>(other.right[i])) {
                return false;
            }
        }
        return true;
    }
    Buffer left, right;
};

void reverberate(fxReverb& reverb, Sound& sound) {
    float* channels[2] = {sound.left.data(), sound.right.data()};
    reverb.processReplacing(channels, channels, sound.frames());
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
    const fxReverb reverb;
    const auto texts = [&reverb](int index) {
        char name[32], label[32], display[32];
        reverb.getParameterName(index, name, sizeof name);
        reverb.getParameterLabel(index, label, sizeof label);
        reverb.getParameterDisplay(index, display, sizeof display);
        return std::string(name) + "|" + display + "|" + label;
    };
    EXPECT_EQ(texts(kReverbER), "ER|-3.5|dB");
    EXPECT_EQ(texts(kReverbHighCut), "HighCut|4000|Hz");
    EXPECT_EQ(texts(kReverbDecay), "Decay|1.5|s");
    EXPECT_EQ(texts(kReverbMuteDry), "MuteDry|Off|");
    EXPECT_EQ(texts(18), "||");
    char text[8];
    FormatdB(-361, text, sizeof text);
    EXPECT_STREQ(text, "-Inf");
    FormatdB(-5, text, sizeof text);
    EXPECT_STREQ(text, "0.5");
    reverb.getProgramName(text, sizeof text);
    EXPECT_STREQ(text, "[1] Def");  // cut to what fits
    fxReverb kept;
    kept.setParameter(kReverbDecay, 3.5f);
    EXPECT_EQ(kept.getParameter(kReverbDecay), 3.5f);  // as it came
}

// Time in which a tail of noise loses 60 dB, by the slope between two moments.
double decaySeconds(float decay) {
    fxReverb reverb;
    reverb.setSampleRate(48000.0f);
    setWetOnly(reverb);
    reverb.setParameter(kReverbHighDamping, 1.0f);
    reverb.setParameter(kReverbDecay, decay);
    Sound burst(24000);
    burst.addNoise(1);
    reverberate(reverb, burst);
    const auto levelOf = [&reverb] {
        Sound tail(24000);
        reverberate(reverb, tail);
        double sum = 0.0;
        for (const float x : tail.left)
            sum += static_cast<double>(x) * static_cast<double>(x);
        return 10.0 * std::log10(sum);
    };
    levelOf();
    const double first = levelOf();
    levelOf();
    return 60.0 * 1.0 / (first - levelOf());
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

TEST(Reverb, DelaysItsSoundByThePredelay) {
    const auto firstSound = [](float predelay) {
        fxReverb reverb;
        setWetOnly(reverb);
        reverb.setParameter(kReverbPredelay, predelay);
        Sound impulse(30000);
        impulse.left[0] = 1.0f;
        reverberate(reverb, impulse);
        long i = 0;
        while (std::fabs(impulse.left[static_cast<std::size_t>(i)]) < 1e-7f)
            ++i;
        return i;
    };
    EXPECT_EQ(firstSound(0.4f) - firstSound(0.0f), 4410 - 1);
}

TEST(Reverb, MutesExactly) {
    fxReverb reverb;
    reverb.setParameter(kReverbMuteReverb, 1.0f);
    reverb.setParameter(kReverbER, 0.0f);  // the bottom is silence too
    Sound sound(2000);
    sound.addNoise(3);
    const Buffer dry = sound.left;
    reverberate(reverb, sound);
    EXPECT_EQ(sound.left, dry);
}

TEST(Reverb, AccumulatesWhatItWouldReplace) {
    fxReverb replacing, adding;
    Sound in(700), out(700), base(700);
    in.addNoise(4);
    base.addNoise(5);
    Sound sum = base;
    float* inputs[2] = {in.left.data(), in.right.data()};
    float* replaced[2] = {out.left.data(), out.right.data()};
    float* added[2] = {sum.left.data(), sum.right.data()};
    replacing.processReplacing(inputs, replaced, 700);
    adding.process(inputs, added, 700);
    for (std::size_t i = 0; i < 700; ++i)
        ASSERT_EQ(sum.left[i], base.left[i] + out.left[i]);
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
            for (std::size_t i = 0; i < kReverbParameters; ++i) {
                // The geometry rarely, the rest often.
                const bool geometry = i == kReverbRoomSize || i == kReverbPredelay;
                if (knob(random) > (geometry ? 0.05f : 0.1f)) continue;
                const float v =
                    i >= kReverbMuteInput ? std::floor(1.2f * knob(random)) : knob(random);
                reverb.setParameter(static_cast<int>(i), v);
                twin.setParameter(static_cast<int>(i), v);
            }
            if (block % 29 == 0) {
                reverb.suspend();
                twin.suspend();
            }
            const int sizes[] = {1, 5, 6, 64, 511, 3000};
            Sound sound(static_cast<std::size_t>(sizes[random() % 6]));
            if (block % 11 < 7) sound.addNoise(block);
            Sound expected = sound;
            reverberate(reverb, sound);
            twin.process(expected.left.data(), expected.right.data(), expected.frames());
            ASSERT_TRUE(sound.sameBits(expected)) << rate << " Hz, block " << block;
        }
    }
}

}  // namespace
}  // namespace norava
