#include "dsp/iir_filters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <vector>

#include "dsp/stereo_high_pass.h"

namespace norava {
namespace {

constexpr double kRate = 48000.0;

template <class Filter>
std::vector<double> impulseResponse(float frequency, float q, int frames = 48000) {
    Filter filter;
    filter.Set(frequency, q, static_cast<float>(kRate));
    std::vector<double> response;
    for (int i = 0; i < frames; ++i) {
        response.push_back(static_cast<double>(filter.GetFrame(i == 0 ? 1.0f : 0.0f)));
    }
    return response;
}

// Gain at a frequency, by the response's Fourier sum.
double gainAt(const std::vector<double>& response, double hz) {
    std::complex<double> sum = 0.0;
    for (std::size_t i = 0; i < response.size(); ++i) {
        sum += response[i] * std::polar(1.0, -2.0 * kPi * hz / kRate * static_cast<double>(i));
    }
    return std::abs(sum);
}

struct Recursion {
    double b, c1, c2;
};

// What the formulas of high- and low-pass give in double precision.
Recursion expected(double frequency, double q, double sign) {
    const double w = 2.0 * kPi * frequency / kRate;
    const double s = std::sin(w);
    const double c = std::cos(w);
    return {(1.0 + sign * c) / (2.0 + s / q), -2.0 * q * c / (q + s), (q - s) / (q + s)};
}

TEST(IirFilters, FollowTheirDifferenceEquations) {
    for (const double sign : {1.0, -1.0}) {
        const Recursion r = expected(2000.0, 3.0, sign);
        const auto response = sign > 0.0 ? impulseResponse<CFilterIIR_HP>(2000.0f, 3.0f, 200)
                                         : impulseResponse<CFilterIIR_LP>(2000.0f, 3.0f, 200);
        double x1 = 0, x2 = 0, y1 = 0, y2 = 0;
        for (std::size_t i = 0; i < response.size(); ++i) {
            const double x = i == 0 ? 1.0 : 0.0;
            const double y = r.b * (x - sign * 2.0 * x1 + x2) - r.c1 * y1 - r.c2 * y2;
            EXPECT_NEAR(response[i], y, 1e-5) << i;
            x2 = x1;
            x1 = x;
            y2 = y1;
            y1 = y;
        }
    }
}

TEST(IirFilters, PassTheirBands) {
    EXPECT_LT(gainAt(impulseResponse<CFilterIIR_HP>(1000.0f, 1.0f), 20.0), 1e-2);
    EXPECT_GT(gainAt(impulseResponse<CFilterIIR_HP>(1000.0f, 1.0f), 15000.0), 0.9);
    EXPECT_LT(gainAt(impulseResponse<CFilterIIR_LP>(1000.0f, 1.0f), 20000.0), 1e-2);
    EXPECT_GT(gainAt(impulseResponse<CFilterIIR_LP>(1000.0f, 1.0f), 20.0), 0.9);
    // Constant skirt gain: the band-pass has the gain q at its centre.
    EXPECT_NEAR(gainAt(impulseResponse<CFilterIIR_BP>(1000.0f, 5.0f), 1000.0), 5.0, 1e-3);
    EXPECT_LT(gainAt(impulseResponse<CFilterIIR_BP>(1000.0f, 5.0f), 10.0), 1e-1);
}

TEST(IirFilters, StartAt100HzAndKeepTheirStateWhenSet) {
    CFilterIIR_LP fresh, set;
    set.Set(100.0f, 1.0f, 44100.0f);
    EXPECT_EQ(fresh.GetFrame(1.0f), set.GetFrame(1.0f));
    fresh.Set(5000.0f, 1.0f, 44100.0f);
    EXPECT_NE(fresh.GetFrame(0.0f), 0.0f);
    fresh.Reset();
    EXPECT_EQ(fresh.GetFrame(1e-10f), 0.0f);  // counts as silence
    CFilterIIR_HP marginal;
    marginal.Set(0.0f, 1.0f, 44100.0f);
    EXPECT_EQ(marginal.coefficients().b, 1.0f);
    EXPECT_EQ(marginal.coefficients().c1, -2.0f);
    EXPECT_EQ(marginal.coefficients().c2, 1.0f);
}

TEST(StereoHighPass, ComesToRestAndWakesUp) {
    StereoHighPass filter;
    filter.Set(32.0f, 1.0f, static_cast<float>(kRate));
    std::vector<float> left(512), right(512);
    left[0] = 1.0f;
    for (int block = 0; block < 200 && !(block > 0 && filter.atRest()); ++block) {
        filter.process(left.data(), right.data(), 512);
        left.assign(512, 0.0f);
    }
    EXPECT_TRUE(filter.atRest());
    CFilterIIR_HP single;
    single.Set(32.0f, 1.0f, static_cast<float>(kRate));
    right[100] = -0.5f;
    filter.process(left.data(), right.data(), 512);
    for (int i = 0; i < 512; ++i) {
        ASSERT_EQ(right[static_cast<std::size_t>(i)], single.GetFrame(i == 100 ? -0.5f : 0.0f));
    }
}

}  // namespace
}  // namespace norava
