#include "fx/tape_delay.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "fx/chorus.h"
#include "fx/tape_pair.h"

namespace norava {
namespace {

using Buffer = std::vector<float>;

Buffer run(CTapeDelay& line, std::size_t frames, std::size_t impulseAt) {
    Buffer out;
    for (std::size_t i = 0; i < frames; ++i)
        out.push_back(line.GetFrame(i == impulseAt ? 1.0f : 0.0f));
    return out;
}

// Position, sum and centre of gravity of what comes out around a place.
struct Echo {
    double sum = 0.0;
    double centre = 0.0;
};
Echo echoAround(const Buffer& out, double place) {
    Echo echo;
    for (auto i = static_cast<std::size_t>(place - 10.0);
         i < static_cast<std::size_t>(place + 10.0); ++i) {
        echo.sum += static_cast<double>(out[i]);
        echo.centre += static_cast<double>(out[i]) * static_cast<double>(i);
    }
    echo.centre /= echo.sum;
    return echo;
}

TEST(TapeDelay, SpacesItsEchoesByOnePassAndAlternatesTheirSign) {
    CTapeDelay line(1000, 0.3);
    line.setDelay(0.4);
    line.setFdbk(-0.5);
    run(line, 20000, 20000);  // wet and speed glide to their places
    const double pass = 0.4 * 998.0 + 2.0;
    const Buffer out = run(line, 2500, 100);
    // A frame is played before it is recorded, which makes the way round one frame longer than the
    // pass.
    double place = 100.0;
    double level = 1.0;
    for (int echo = 0; echo < 4; ++echo) {
        place += pass + 1.0;
        const Echo found = echoAround(out, place);
        EXPECT_NEAR(found.centre, place, 2e-2);
        EXPECT_NEAR(found.sum, level, 1e-2);
        level *= -0.5;
    }
}

TEST(TapeDelay, KeepsItsPassBetweenTwoFramesAndItsLength) {
    const auto delayOf = [](int length, double fraction) {
        CTapeDelay line(length, 0.0);
        line.setDelay(fraction);
        line.reset();  // the speed arrives at once
        for (int i = 0; i < 5000; ++i)
            line.GetFrame(0.0f);
        const Buffer out = run(line, 3000, 0);
        std::size_t loudest = 0;
        for (std::size_t i = 0; i < out.size(); ++i) {
            if (std::fabs(out[i]) > std::fabs(out[loudest])) loudest = i;
        }
        return static_cast<double>(loudest) - 1.0;
    };
    EXPECT_NEAR(delayOf(1000, 2.0), 0.99 * 998.0 + 2.0, 1.0);
    EXPECT_NEAR(delayOf(1000, std::nan("")), 501.0, 1.0);
    EXPECT_NEAR(delayOf(1000, -1.0), 5.0, 1.0);  // the tape runs at most 0.2 passes a frame
    EXPECT_NEAR(delayOf(2, 0.99), 4.0, 1.0);
}

TEST(TapeDelay, BendsThePitchWithItsWow) {
    // At the fastest of the wow, a depth of 1 halves the delay.
    CTapeDelay line(1000, 0.0);
    line.setDelay(0.5);
    line.setDepth(1.0);
    line.setSpeed(1.0, 40000.0);
    run(line, 19000, 19000);
    const Buffer out = run(line, 2000, 750);  // half a cycle from the start
    EXPECT_NEAR(echoAround(out, 750.0 + 251.5).centre, 750.0 + 251.5, 3.0);
}

TEST(TapeDelay, FiltersWhatItPlays) {
    CTapeDelay line(200, 0.0);
    line.setHighPass(5000.0f, 1.0f, 48000.0);
    line.setHiEnable(true);
    const auto loudestOfConstant = [&line] {
        for (int i = 0; i < 4000; ++i)
            line.GetFrame(0.5f);
        return std::fabs(line.GetFrame(0.5f));
    };
    EXPECT_LT(loudestOfConstant(), 1e-3f);
    line.setHiEnable(false);
    line.setLowPass(std::nanf(""), -1.0f, 48000.0);  // as low as it goes, without resonance
    line.setLowEnable(true);
    EXPECT_TRUE(std::isfinite(loudestOfConstant()));
    line.setLowEnable(false);
    EXPECT_NEAR(loudestOfConstant(), 0.5f, 1e-3f);
}

TEST(TapeDelay, SoundsAsNewAfterReset) {
    CTapeDelay used(300, 0.6), fresh(300, 0.6);
    used.setFdbk(0.9);
    run(used, 777, 3);
    used.reset();
    fresh.setFdbk(0.9);
    EXPECT_EQ(run(used, 2000, 5), run(fresh, 2000, 5));
}

TEST(TapePair, GivesTheBitsOfItsLines) {
    std::minstd_rand random(5);
    std::uniform_real_distribution<double> any(0.0, 1.0);
    for (const int length : {4, 60, 900, 30000}) {
        CTapeDelay a(length, 0.2), b(length / 2, 0.9), pairA(length, 0.2), pairB(length / 2, 0.9);
        TapePair pair;
        for (int block = 0; block < 800; ++block) {
            // Time enough for speed and wet gain to arrive at times.
            if (block % 7 == 0 && block % 200 < 50) {
                const double delay = any(random), depth = any(random), wet = any(random);
                const double speed = block % 5 == 0 ? 30000.0 : 20.0 * any(random);
                for (CTapeDelay* line : {&a, &pairA, &b, &pairB}) {
                    line->setDelay(delay);
                    line->setDepth(block % 3 == 0 ? 0.0 : depth);
                    line->setWet(wet);
                    line->setFdbk(-0.9 * wet);
                    line->setSpeed(speed, 8000.0);
                    if (block % 140 == 0) line->reset();
                }
            }
            const int frames = 1 + static_cast<int>(any(random) * 64.0) % 64;
            v128 samples[64], inputs[64];
            for (int i = 0; i < frames; ++i) {
                inputs[i] = v128{static_cast<float>(any(random)), static_cast<float>(any(random))};
            }
            pair.process(pairA, pairB, inputs, samples, frames);
            for (int i = 0; i < frames; ++i) {
                ASSERT_EQ(samples[i][0], a.GetFrame(inputs[i][0])) << length << " " << block;
                ASSERT_EQ(samples[i][1], b.GetFrame(inputs[i][1])) << length << " " << block;
            }
        }
    }
}

struct Stereo {
    Buffer left, right;
    bool operator==(const Stereo&) const = default;
};

Stereo chorused(CChorus& chorus, std::size_t frames) {
    std::minstd_rand random(9);
    std::uniform_real_distribution<float> noise(-0.5f, 0.5f);
    Stereo sound{Buffer(frames), Buffer(frames)};
    for (std::size_t i = 0; i < frames; ++i)
        sound.left[i] = sound.right[i] = noise(random);
    chorus.process(sound.left.data(), sound.right.data(), static_cast<long>(frames));
    return sound;
}

TEST(Chorus, ChangesTheSignOfItsWetGainWithEachSampleRate) {
    CChorus chorus;
    const Stereo dry = chorused(chorus, 5000);
    chorus.setSampleRate(48000.0);
    EXPECT_TRUE(chorused(chorus, 5000) == dry);  // off
    chorus.setEnable(0.0001f);
    chorus.setRate(0.5f);
    chorus.setDelay(0.0f);
    chorus.setWet(0.4f);
    const auto added = [&](Stereo sound) {
        for (std::size_t i = 0; i < sound.left.size(); ++i)
            sound.left[i] -= dry.left[i];
        return sound.left;
    };
    chorus.reset();
    const Buffer plus = added(chorused(chorus, 5000));
    chorus.setSampleRate(48000.0);
    const Buffer minus = added(chorused(chorus, 5000));
    chorus.setSampleRate(48000.0);
    const Buffer again = added(chorused(chorus, 5000));
    double largest = 0.0;
    for (std::size_t i = 0; i < plus.size(); ++i) {
        ASSERT_NEAR(plus[i], -minus[i], 1e-6);
        ASSERT_EQ(plus[i], again[i]);
        largest = std::max(largest, static_cast<double>(std::fabs(plus[i])));
    }
    EXPECT_GT(largest, 0.1);
}

TEST(Chorus, PutsItsThreeLinesWhereTheyBelong) {
    CChorus chorus;
    chorus.setSampleRate(96000.0);
    chorus.setSampleRate(48000.0);
    chorus.setEnable(1.0f);
    chorus.setWet(0.5f);
    std::vector<float> left(48000), right(48000);
    left[40000] = 1.0f;
    chorus.process(left.data(), right.data(), 48000);
    // Half of 1.1, 0.854 and 1 times 20 ms; the second on both sides.
    const auto place = [](double ratio) {
        return 40000.0 + 0.5 * (0.02 * 48000.0 * ratio - 2.0) + 3.0;
    };
    EXPECT_NEAR(echoAround(left, place(1.1)).sum, 0.5, 1e-2);
    EXPECT_NEAR(echoAround(left, place(0.854)).sum, 0.5, 1e-2);
    EXPECT_NEAR(echoAround(right, place(0.854)).sum, 0.5, 1e-2);
    EXPECT_NEAR(echoAround(right, place(1.0)).sum, 0.5, 1e-2);
    EXPECT_NEAR(echoAround(right, place(1.1)).sum, 0.0, 1e-2);
}

}  // namespace
}  // namespace norava
