#include "fx/tape_delay.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "fx/chorus.h"

namespace norava {
namespace {

using Buffer = std::vector<float>;

Buffer run(CTapeDelay& line, std::size_t frames, std::size_t impulseAt) {
    Buffer out;
    for (std::size_t i = 0; i < frames; ++i)
        out.push_back(line.GetFrame(i == impulseAt ? 1.0f : 0.0f));
    return out;
}

// Sum and centre of gravity of what comes out around a place.
struct Echo {
    Echo(const Buffer& out, double place) {
        const auto from = static_cast<std::size_t>(place - 10.0);
        for (std::size_t i = from; i < from + 20; ++i) {
            sum += static_cast<double>(out[i]);
            centre += static_cast<double>(out[i]) * static_cast<double>(i);
        }
        centre /= sum;
    }
    double sum = 0.0, centre = 0.0;
};

TEST(TapeDelay, SpacesItsEchoesByOnePassAndAlternatesTheirSign) {
    CTapeDelay line(1000, 0.3);
    line.setDelay(0.4);
    line.setFdbk(-0.5);
    run(line, 20000, 20000);  // wet and speed glide to their places
    const double pass = 0.4 * 998.0 + 2.0;
    const Buffer out = run(line, 2500, 100);
    // A frame is played before it is recorded, which makes the way round one frame longer than the
    // pass.
    for (int echo = 0; echo < 4; ++echo) {
        const double place = 100.0 + (echo + 1) * (pass + 1.0);
        EXPECT_NEAR(Echo(out, place).centre, place, 2e-2);
        EXPECT_NEAR(Echo(out, place).sum, std::pow(-0.5, echo), 1e-2);
    }
}

TEST(TapeDelay, BendsThePitchWithItsWow) {
    // At the fastest of the wow, a depth of 1 halves the delay.
    CTapeDelay line(1000, 0.0);
    line.setDelay(0.5);
    line.setDepth(1.0);
    line.setSpeed(1.0, 40000.0);
    run(line, 19000, 19000);
    const Buffer out = run(line, 2000, 750);  // half a cycle from the start
    EXPECT_NEAR(Echo(out, 750.0 + 251.5).centre, 750.0 + 251.5, 3.0);
}

TEST(TapeDelay, FiltersWhatItPlays) {
    CTapeDelay line(200, 0.0);
    const auto levelOfConstant = [&line] {
        for (int i = 0; i < 4000; ++i)
            line.GetFrame(0.5f);
        return std::fabs(line.GetFrame(0.5f));
    };
    line.setHighPass(5000.0f, 1.0f, 48000.0);
    line.setHiEnable(true);
    EXPECT_LT(levelOfConstant(), 1e-3f);
    line.setHiEnable(false);
    line.setLowPass(std::nanf(""), -1.0f, 48000.0);  // as low as it goes, without resonance
    line.setLowEnable(true);
    EXPECT_TRUE(std::isfinite(levelOfConstant()));
    line.setLowEnable(false);
    EXPECT_NEAR(levelOfConstant(), 0.5f, 1e-3f);
}

struct Stereo {
    explicit Stereo(CChorus& chorus) {
        left[40000] = 1.0f;
        chorus.process(left.data(), right.data(), 48000);
    }
    Buffer left = Buffer(48000), right = Buffer(48000);
};

// Half of 1.1, 0.854 and 1 times 20 ms after the impulse; the second on both sides.
TEST(Chorus, PutsItsThreeLinesWhereTheyBelong) {
    CChorus chorus;
    EXPECT_EQ(Stereo(chorus).right, Buffer(48000)) << "without lines";
    chorus.setSampleRate(96000.0);
    chorus.setWet(0.5f);
    // Each change of rate turns the sign.
    for (const double gain : {-0.5, 0.5}) {
        chorus.setSampleRate(48000.0);
        chorus.setEnable(0.0f);
        EXPECT_EQ(Stereo(chorus).right, Buffer(48000)) << "off";
        chorus.setEnable(0.0001f);
        const Stereo sound(chorus);
        const auto level = [](const Buffer& side, double ratio) {
            return Echo(side, 40000.0 + 0.5 * (0.02 * 48000.0 * ratio - 2.0) + 3.0).sum;
        };
        EXPECT_NEAR(level(sound.left, 1.1), gain, 1e-2);
        EXPECT_NEAR(level(sound.left, 0.854), gain, 1e-2);
        EXPECT_NEAR(level(sound.right, 0.854), gain, 1e-2);
        EXPECT_NEAR(level(sound.right, 1.0), gain, 1e-2);
        EXPECT_NEAR(level(sound.right, 1.1), 0.0, 1e-2);
    }
}

}  // namespace
}  // namespace norava
