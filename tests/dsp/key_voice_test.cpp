#include "dsp/key_voice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "dsp/key_instruments.h"

namespace norava {
namespace {

constexpr int kFrames = 48;  // a control block of 1 ms

struct Voice {
    explicit Voice(int note = 60) : key(note, settings) {}
    void change() { ++settings.revision; }
    // Control blocks until the key falls silent, or `most`.
    int blocksLeft(int most) {
        int blocks = 0;
        for (; blocks < most && key.isActive(); ++blocks)
            key.updateParams(kFrames);
        return blocks;
    }
    const KeyExciter& exciter() const { return key.kernelData().exciter; }
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
    voice.key.release();
    EXPECT_EQ(voice.blocksLeft(500), 102) << "100 blocks, the one past them and the one that ends";

    voice.key.start(1.0f);
    voice.key.release();
    voice.blocksLeft(60);
    voice.key.release();
    EXPECT_EQ(voice.blocksLeft(500), 102) << "a second release begins anew";

    voice.key.start(1.0f);
    voice.key.release();
    voice.blocksLeft(60);
    voice.key.start(1.0f);
    EXPECT_EQ(voice.blocksLeft(500), 500) << "a new start takes the release back";
}

// In their stated time the segments come within -76.6 dB of where they lead; the attack, aiming far
// beyond 1, just reaches it.
TEST(KeyVoice, AmplitudeKeepsItsTimes) {
    Instrument instrument(fastestKernelPath());
    SoundSettings& s = instrument.settings;
    s.ampAttackSeconds = 0.2f;
    s.ampDecaySeconds = 0.1f;
    s.ampReleaseSeconds = 0.3f;
    s.ampSustain = 0.25f;
    CNoravaKey& key = *instrument.keys[30];
    const auto ampAfter = [&](int milliseconds) {
        for (int i = 0; i < milliseconds; ++i)
            instrument.render(kFrames);
        return key.amplitude();
    };
    key.start(1.0f);
    EXPECT_NEAR(ampAfter(100), 0.53, 0.01);
    EXPECT_NEAR(ampAfter(98), 0.99, 0.005);
    EXPECT_EQ(ampAfter(2), 1.0f);
    EXPECT_NEAR(ampAfter(100) - 0.25, 0.75 * std::exp(-8.82), 1e-5);
    key.release();
    EXPECT_NEAR(ampAfter(300), 0.25 * std::exp(-8.82), 2e-6);
    EXPECT_TRUE(key.isActive());
}

TEST(KeyVoice, HiCutEnvelopeKeepsItsTimes) {
    Voice voice;
    voice.key.start(1.0f);
    voice.key.updateParams(kFrames);
    EXPECT_EQ(voice.exciter().hiCutEnvRate, 1.0f) << "no attack opens the filter at once";
    voice.settings.hiCutAttack = 0.2f;   // 0.5 * 0.2^2 = 20 ms
    voice.settings.hiCutDecay = 0.5f;    // 0.001 + 3 * 0.5^3 = 0.376 s
    voice.settings.hiCutSustain = 0.5f;  // a quarter
    voice.change();
    voice.key.start(1.0f);
    for (int ms = 0; ms <= 20; ++ms) {
        voice.key.updateParams(kFrames);
        ASSERT_EQ(voice.exciter().hiCutEnvTarget, 1.0f) << ms;
        ASSERT_FLOAT_EQ(voice.exciter().hiCutEnvRate, 0.01f) << ms;
    }
    voice.key.updateParams(kFrames);
    EXPECT_EQ(voice.exciter().hiCutEnvTarget, 0.25f);
    EXPECT_FLOAT_EQ(voice.exciter().hiCutEnvRate, 0.0002f / 0.376f);
    voice.key.release();
    voice.key.updateParams(kFrames);
    EXPECT_EQ(voice.exciter().hiCutEnvTarget, 0.0f);
    EXPECT_EQ(voice.exciter().hiCutEnvRate, 0.002f);
}

TEST(KeyVoice, MatrixSumsItsSlots) {
    Voice voice(80);
    ModulationMatrix& matrix = voice.settings.matrix;
    matrix.fill({.source = 0, .amount = 1.0f, .destination = 1});
    for (int d = 0; d < kModulationDestinations; ++d)
        EXPECT_EQ(voice.key.getModulator(d), d < 2 ? 1.0f : 0.0f) << d;

    voice.settings.pitchWheel = -0.5f;
    matrix[0] = {.source = 6, .amount = 0.5f, .destination = 1};
    matrix[3] = {.source = 7, .amount = -1.0f, .destination = 1};
    matrix[5] = {.source = 4, .amount = 0.25f, .destination = 3};
    matrix[6] = {.source = 4, .amount = 1.0f, .destination = 15};
    matrix[7] = {.source = 4, .amount = 1.0f, .destination = -1};
    voice.change();
    voice.key.start(0.75f);
    EXPECT_FLOAT_EQ(voice.key.getModulator(1), 0.5f * 0.75f - 1.0f);
    EXPECT_EQ(voice.key.getModulator(3), -0.125f);
    EXPECT_EQ(voice.key.getModulator(0), 1.0f);

    // A source that no menu has is a source, of value 0: level is no longer neutral.
    matrix.fill({});
    for (const int source : {-1, 9, 1000}) {
        matrix[2] = {.source = source, .amount = 1.0f, .destination = 1};
        voice.change();
        EXPECT_EQ(voice.key.getModulator(1), 0.0f) << source;
    }
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
            voice.change();
            voice.key.start(1.0f);
            voice.key.updateParams(kFrames);

            const double hz = 220.0 * std::exp2((note - 57) / 12.0 + octave - 3);
            const int length1 = voice.lengthFrames(kString1Pair);
            const int length2 = voice.lengthFrames(kString2Pair);
            ASSERT_GE(std::min(length1, length2), 1);
            ASSERT_EQ(length1 * kSecond[ratio], length2 * kFirst[ratio]);
            ASSERT_GT(length1, 48000 / hz - kFirst[ratio] - 0.01) << "shortened without need";
            ASSERT_NEAR(voice.strings().pitchRatio * 48000 / length1 / hz, 1.0, 1e-6);
            ASSERT_FLOAT_EQ(voice.strings().inverseLength[3] * static_cast<float>(length2), 1.0f);
            ASSERT_EQ(voice.lengthFrames(kComb1), ratio % 2 == 0 ? 1 : length1);
            ASSERT_EQ(voice.lengthFrames(kComb2), ratio % 2 == 0 ? 1 : length2);
            for (int line = 0; line + 1 < kKeyLines; ++line)
                ASSERT_LE(lines.end[line], lines.start[line + 1]) << "lines overlap";
        }
    }
}

TEST(KeyVoice, GarbageNeverBecomesALengthOrAStepCount) {
    for (const float garbage : {NAN, INFINITY, -INFINITY, 1e30f, -1e30f, 2.0f, -2.0f}) {
        Instrument instrument(fastestKernelPath());
        std::vector<float> tuning(128, garbage);
        instrument.settings.keyTuningSemitones = tuning.data();
        instrument.settings.combRatio = instrument.settings.octaveSelector = garbage;
        instrument.settings.matrix[0] = {.source = 6, .amount = garbage, .destination = 3};
        for (CNoravaKey* key : instrument.keys)
            key->start(1.0f);
        for (int i = 0; i < 50; ++i)
            instrument.render(kFrames);
        for (const CNoravaKey* key : instrument.keys) {
            const KeyStrings& strings = key->kernelData().strings;
            ASSERT_GE(strings.pitchRatio, 0.0) << garbage;
            ASSERT_LE(strings.pitchRatio, kMaxPitchRatio) << garbage;
            ASSERT_GE(strings.lines.length[kComb1], 4) << garbage;
            ASSERT_LE(strings.lines.length[kComb1], strings.lines.length[kString1Pair] / 2);
        }
    }
}

// A start clears no line and moves no head. Bent far down, a key steps once in many frames, so that
// notes also start while a line stands at its end.
TEST(KeyVoice, AStartGoesOnWhereTheLinesStand) {
    Instrument product(fastestKernelPath());
    Twin twin;
    const std::vector<float> tuning(128, -60.0f);
    product.settings.keyTuningSemitones = tuning.data();
    product.settings.hiCutCutoff = 0.9f;
    std::mt19937 dice(1);
    for (int i = 0; i < 20000; ++i) {
        if (i == 0 || dice() % 64 == 0) {
            product.settings.octaveSelector = static_cast<float>(3 + dice() % 4) / 6.0f;
            product.settings.stringRatio = static_cast<int>(dice() % 7);
            ++product.settings.revision;
            copySound(product.settings, twin.settings);
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
