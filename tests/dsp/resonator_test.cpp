#include "dsp/resonator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

namespace norava {
namespace {

using Buffer = std::vector<float>;

struct Output {
    Buffer left, right;
};

// What one band adds to an impulse on both channels.
Output impulseResponse(long band, float frequency, float feedback, std::size_t frames) {
    CResonator bank;
    Output out{Buffer(frames), Buffer(frames)};
    bank.process(out.left.data(), out.right.data(), 1);  // not even lines yet
    bank.setSampleRate(48000.0);
    bank.setBandFreq(band, frequency);
    bank.setBandFdbk(band, feedback);
    bank.setBandOn(band, 1.0f);
    out.left[0] = out.right[0] = 0.5f;
    bank.process(out.left.data(), out.right.data(), static_cast<long>(frames));
    out.left[0] = out.right[0] = 0.0f;
    return out;
}

double energy(const Buffer& buffer, std::size_t from = 0) {
    const auto first = buffer.begin() + static_cast<long>(from);
    return std::inner_product(first, buffer.end(), first, 0.0);
}

TEST(Resonator, AnswersAfterBothLinesAndLeansToOneSide) {
    const Output even = impulseResponse(0, 0.5f, 0.0f, 2000);
    const Output odd = impulseResponse(1, 0.5f, 0.0f, 2000);
    EXPECT_NEAR(energy(even.right) / energy(even.left), std::pow(1.25 / 0.75, 2.0), 1e-3);
    EXPECT_NEAR(energy(odd.left) / energy(odd.right), std::pow(1.25 / 0.75, 2.0), 1e-3);
    // The two lines follow each other, the second 5 % longer, inverted between them.
    const double fraction = 1.0 - std::pow(0.5, 0.1);
    const auto lowest = std::ranges::min_element(even.left) - even.left.begin();
    EXPECT_NEAR(static_cast<double>(lowest), 2.05 * fraction * 4798.0 + 4.0, 2.0);
    EXPECT_GT(-*std::ranges::min_element(even.left), *std::ranges::max_element(even.left));
}

TEST(Resonator, DecaysWithFullFeedbackAndSoonerWithLess) {
    const Buffer full = impulseResponse(2, 0.6f, 1.0f, 96000).left;
    const Buffer half = impulseResponse(2, 0.6f, 0.5f, 96000).left;
    EXPECT_GT(energy(full, 48000), 0.0);
    EXPECT_LT(energy(full, 48000), 0.5 * energy(full));
    EXPECT_LT(energy(half, 48000), 1e-3 * energy(full, 48000));
}

}  // namespace
}  // namespace norava
