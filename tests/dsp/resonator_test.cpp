#include "dsp/resonator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

namespace norava {
namespace {

using Buffer = std::vector<float>;

struct Output {
    Buffer left, right;
    bool operator==(const Output&) const = default;
};

// What the bank adds to an impulse on both channels.
Output impulseResponse(CResonator& bank, std::size_t frames, float level = 0.5f) {
    Output out{Buffer(frames), Buffer(frames)};
    out.left[0] = out.right[0] = level;
    bank.process(out.left.data(), out.right.data(), static_cast<long>(frames));
    out.left[0] -= level;
    out.right[0] -= level;
    return out;
}

std::unique_ptr<CResonator> bankWith(long band, float frequency, float feedback) {
    auto bank = std::make_unique<CResonator>();
    bank->setSampleRate(48000.0);
    bank->setBandFreq(band, frequency);
    bank->setBandFdbk(band, feedback);
    bank->setBandOn(band, 1.0f);
    return bank;
}

double energy(const Buffer& buffer) {
    double sum = 0.0;
    for (const float x : buffer)
        sum += static_cast<double>(x) * static_cast<double>(x);
    return sum;
}

TEST(Resonator, LeavesTheMixAloneWhileAllBandsAreOff) {
    CResonator bank;
    Buffer left{0.1f, -0.2f, 0.3f};
    Buffer right{-0.4f, 0.5f, -0.0f};
    bank.process(left.data(), right.data(), 3);  // not even lines yet
    bank.setSampleRate(44100.0);
    bank.process(left.data(), right.data(), 3);
    EXPECT_EQ(left, (Buffer{0.1f, -0.2f, 0.3f}));
    EXPECT_EQ(right, (Buffer{-0.4f, 0.5f, -0.0f}));
}

TEST(Resonator, AnswersAfterBothLinesAndLeansToOneSide) {
    const float v = 0.5f;
    const Output even = impulseResponse(*bankWith(0, v, 0.0f), 2000);
    const Output odd = impulseResponse(*bankWith(1, v, 0.0f), 2000);
    EXPECT_NEAR(energy(even.right) / energy(even.left), std::pow(1.25 / 0.75, 2.0), 1e-3);
    EXPECT_NEAR(energy(odd.left) / energy(odd.right), std::pow(1.25 / 0.75, 2.0), 1e-3);
    // The two lines follow each other, the second 5 % longer.
    const double fraction = 1.0 - std::pow(0.5, 0.1);
    const double frames = 2.05 * fraction * 4798.0 + 4.0;
    std::size_t loudest = 0;
    for (std::size_t i = 0; i < even.left.size(); ++i) {
        if (std::fabs(even.left[i]) > std::fabs(even.left[loudest])) loudest = i;
    }
    EXPECT_NEAR(static_cast<double>(loudest), frames, 2.0);
    EXPECT_LT(even.left[loudest], 0.0f);  // inverted between the lines
}

TEST(Resonator, DecaysWithFullFeedbackAndSoonerWithLess) {
    const auto tail = [](float feedback) {
        const auto bank = bankWith(2, 0.6f, feedback);
        impulseResponse(*bank, 48000);
        return energy(impulseResponse(*bank, 48000, 0.0f).left);
    };
    EXPECT_GT(tail(1.0f), 0.0);
    EXPECT_LT(tail(1.0f), energy(impulseResponse(*bankWith(2, 0.6f, 1.0f), 48000).left));
    EXPECT_LT(tail(0.5f), 1e-3 * tail(1.0f));
}

TEST(Resonator, RestartsABandEachTimeItIsSwitchedOn) {
    const auto bank = bankWith(3, 0.4f, 1.0f);
    const Output first = impulseResponse(*bank, 5000);
    bank->setBandOn(3, 0.0f);
    bank->setBandOn(3, std::nanf(""));  // as good as any other value but 0
    bank->setBandOn(3, 1.0f);
    // The high-pass behind the bands still rings a little.
    const Output again = impulseResponse(*bank, 5000, 0.0f);
    EXPECT_LT(energy(again.left), 1e-2 * energy(first.left));
    bank->reset();
    EXPECT_TRUE(impulseResponse(*bank, 5000) == first);
    bank->setSampleRate(48000.0);
    bank->reset();
    EXPECT_TRUE(impulseResponse(*bank, 5000) == first);
}

}  // namespace
}  // namespace norava
