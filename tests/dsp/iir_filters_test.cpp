#include "dsp/iir_filters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>

namespace norava {
namespace {

constexpr float kRate = 48000.0f;

// By the Fourier sum of the impulse response.
template <class Filter>
double gainAt(double hz, float frequency, float q) {
    Filter filter;
    filter.Set(frequency, q, kRate);
    std::complex<double> sum = 0.0;
    for (int i = 0; i < 48000; ++i) {
        const auto response = static_cast<double>(filter.GetFrame(i == 0 ? 1.0f : 0.0f));
        sum += response * std::polar(1.0, -2.0 * kPi * hz / static_cast<double>(kRate) * i);
    }
    return std::abs(sum);
}

TEST(IirFilters, PassTheirBands) {
    EXPECT_LT(gainAt<CFilterIIR_HP>(20.0, 1000.0f, 1.0f), 1e-2);
    EXPECT_GT(gainAt<CFilterIIR_HP>(15000.0, 1000.0f, 1.0f), 0.9);
    EXPECT_LT(gainAt<CFilterIIR_LP>(20000.0, 1000.0f, 1.0f), 1e-2);
    EXPECT_GT(gainAt<CFilterIIR_LP>(20.0, 1000.0f, 1.0f), 0.9);
    // They ring as a filter of half the given q.
    EXPECT_NEAR(gainAt<CFilterIIR_HP>(1000.0, 1000.0f, 4.0f), 2.0, 0.05);
    EXPECT_NEAR(gainAt<CFilterIIR_LP>(1000.0, 1000.0f, 4.0f), 2.0, 0.05);
    // Constant skirt gain: the band-pass has the gain q at its centre.
    EXPECT_NEAR(gainAt<CFilterIIR_BP>(1000.0, 1000.0f, 5.0f), 5.0, 1e-3);
    EXPECT_LT(gainAt<CFilterIIR_BP>(10.0, 1000.0f, 5.0f), 1e-1);
}

}  // namespace
}  // namespace norava
