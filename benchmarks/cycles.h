#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

// Core cycles as the unit of every figure in this folder. Wall-clock time says little on a machine
// whose clock wanders and whose cores are shared; a chain of dependent float multiplications takes
// a number of cycles that the processor's design fixes, so timing such a chain right before and
// right after the work gives the length of a cycle at that very moment.

namespace norava::bench {

// Cycles from one dependent single-precision multiplication to the next: 4 on Intel since Skylake
// and on Apple's cores, 3 on AMD since the first Zen and on Arm's server cores.
inline int multiplyLatencyCycles() {
#if defined(__x86_64__)
    return __builtin_cpu_is("intel") ? 4 : 3;
#elif defined(__APPLE__)
    return 4;
#else
    return 3;
#endif
}

namespace detail {

using Clock = std::chrono::steady_clock;

inline double nanosecondsBetween(Clock::time_point start, Clock::time_point end) {
    return std::chrono::duration<double, std::nano>(end - start).count();
}

// Keeps a value from being computed at compile time or thrown away.
template <class T>
inline void opaque(T& value) {
    asm volatile("" : "+m"(value)::"memory");
}

// Nanoseconds of one core cycle, now.
inline double nanosecondsPerCycle() {
    constexpr int kRounds = 500;
    constexpr int kUnrolled = 16;
    float factor = 1.0000001f;
    float value = 1.0f;
    opaque(factor);
    opaque(value);
    const auto start = Clock::now();
    for (int round = 0; round < kRounds; ++round) {
        for (int i = 0; i < kUnrolled; ++i)
            value *= factor;
    }
    opaque(value);
    const auto end = Clock::now();
    return nanosecondsBetween(start, end) / (kRounds * kUnrolled * multiplyLatencyCycles());
}

}  // namespace detail

// Core cycles of one call of `work`, at least a few microseconds long. A measurement that a change
// of clock or another process fell into is thrown away (the two chains around it disagree by more
// than 2 %); an interruption inside the work itself can only lengthen it, so the caller takes the
// least of many.
template <class Work>
double coreCyclesOnce(Work&& work) {
    constexpr double kClockTolerance = 0.02;
    // Both chains can be interrupted for the same time; then a cycle looks longer than any clock
    // would make it.
    constexpr double kSlowestClock = 2.0;
    static double shortest = std::numeric_limits<double>::infinity();
    const double before = detail::nanosecondsPerCycle();
    const auto start = detail::Clock::now();
    work();
    const auto end = detail::Clock::now();
    const double after = detail::nanosecondsPerCycle();
    shortest = std::min({shortest, before, after});
    const double longer = std::max(before, after);
    if (longer > (1.0 + kClockTolerance) * std::min(before, after) ||
        longer > kSlowestClock * shortest) {
        return std::numeric_limits<double>::infinity();
    }
    return detail::nanosecondsBetween(start, end) / (0.5 * (before + after));
}

// Many measurements of the same work.
class Measurements {
  public:
    template <class Work>
    void take(Work&& work) {
        const double cycles = coreCyclesOnce(work);
        if (std::isfinite(cycles)) cycles_.push_back(cycles);
    }
    // Infinite when every measurement was thrown away.
    double quantile(double share) const {
        if (cycles_.empty()) return std::numeric_limits<double>::infinity();
        std::vector<double> sorted = cycles_;
        const auto at = static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1));
        std::ranges::nth_element(sorted, sorted.begin() + static_cast<std::ptrdiff_t>(at));
        return sorted[at];
    }
    // What the work takes while nobody else needs the core: close to the least, but not at the
    // mercy of a single clock that was read wrongly.
    double undisturbed() const { return quantile(0.05); }

  private:
    std::vector<double> cycles_;
};

}  // namespace norava::bench
