#include "program/spectrum.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>

namespace norava {

namespace {

using Complex = std::complex<double>;

// Radix-2 transform in place; the size is a power of two.
void Transform(std::vector<Complex>& x) {
    const std::size_t n = x.size();
    for (std::size_t i = 1, j = 0; i < n; ++i) {
        std::size_t bit = n >> 1;
        for (; j & bit; bit >>= 1)
            j ^= bit;
        j ^= bit;
        if (i < j) std::swap(x[i], x[j]);
    }
    for (std::size_t length = 2; length <= n; length *= 2) {
        const Complex step = std::polar(1.0, -2.0 * std::numbers::pi / double(length));
        for (std::size_t start = 0; start < n; start += length) {
            Complex w = 1.0;
            for (std::size_t k = 0; k < length / 2; ++k, w *= step) {
                const Complex a = x[start + k], b = w * x[start + k + length / 2];
                x[start + k] = a + b;
                x[start + k + length / 2] = a - b;
            }
        }
    }
}

// Where the parabola through the logarithms of three neighbours has its top, in bins.
double PeakPosition(const std::vector<double>& power, std::size_t bin) {
    const double a = std::log(power[bin - 1] + 1e-30);
    const double b = std::log(power[bin] + 1e-30);
    const double c = std::log(power[bin + 1] + 1e-30);
    const double bend = a - 2.0 * b + c;
    return double(bin) + (bend < 0.0 ? 0.5 * (a - c) / bend : 0.0);
}

}  // namespace

std::vector<double> PowerSpectrum(std::span<const float> piece, std::size_t size) {
    std::vector<Complex> x(size);
    for (std::size_t i = 0; i < piece.size(); ++i) {
        const double turn = (double(i) + 0.5) / double(piece.size());
        const double window = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * turn);
        x[i] = window * double(piece[i]);
    }
    Transform(x);
    std::vector<double> power(size / 2);
    std::ranges::transform(x.begin(), x.begin() + std::ptrdiff_t(size / 2), power.begin(),
                           [](const Complex& z) { return std::norm(z); });
    return power;
}

double CentsAbove(std::span<const float> piece, double sampleRateHz, double hertz) {
    constexpr int kPartials = 4;
    constexpr double kReach = 70.0;  // cents
    const std::size_t size = 2 * std::bit_ceil(piece.size());
    const std::vector<double> power = PowerSpectrum(piece, size);
    const double binsPerHertz = double(size) / sampleRateHz;
    double sum = 0.0, weight = 0.0;
    for (int partial = 1; partial <= kPartials; ++partial) {
        const double centre = hertz * partial * binsPerHertz;
        const auto first = std::size_t(centre * std::exp2(-kReach / 1200.0));
        const auto last = std::size_t(centre * std::exp2(kReach / 1200.0)) + 1;
        if (first < 2 || last + 1 >= power.size()) continue;
        const auto top = std::max_element(power.begin() + std::ptrdiff_t(first),
                                          power.begin() + std::ptrdiff_t(last) + 1);
        const double position = PeakPosition(power, std::size_t(top - power.begin()));
        sum += *top * 1200.0 * std::log2(position / centre);
        weight += *top;
    }
    return weight > 0.0 ? sum / weight : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace norava
