#pragma once

#include <cmath>

// Small guards for numbers that come from outside and for signals that decay towards nothing.

namespace norava {

inline constexpr double kPi = 3.14159265358979323846;

// Recursive paths drop what is below -180 dB, so that no decay ever runs into denormal numbers.
inline constexpr float kSilence = 1e-9f;

inline float flushTiny(float value) {
    return std::fabs(value) < kSilence ? 0.0f : value;
}

// `value`, or `fallback` if it is infinite or not a number.
template <class T>
T finiteOr(T value, T fallback) {
    return std::isfinite(value) ? value : fallback;
}

// `value` within low..high; not a number becomes `fallback`.
template <class T>
T clampOr(T value, T low, T high, T fallback) {
    if (std::isnan(value)) return fallback;
    return value < low ? low : value > high ? high : value;
}

}  // namespace norava
