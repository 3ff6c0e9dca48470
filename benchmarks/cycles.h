#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numeric>
#include <vector>

// Core cycles as the unit of every figure in this folder. Wall-clock time says little on a machine
// whose clock wanders and whose cores are shared; a chain of dependent multiplications takes a
// number of cycles that the processor's design fixes, so timing such chains before and after every
// piece of the work gives the length of a cycle meanwhile. The multiplications are those of
// integers: a float's takes 4 cycles on one processor and 3 on its successor.

namespace norava::bench {

namespace detail {

using Clock = std::chrono::steady_clock;

inline double nanosecondsBetween(Clock::time_point start, Clock::time_point end) {
    return std::chrono::duration<double, std::nano>(end - start).count();
}

// Nanoseconds of one step in a chain of steps that each wait for the one before.
template <class Step>
double nanosecondsPerStep(Step&& step) {
    constexpr int kRounds = 600;
    constexpr int kUnrolled = 16;
    std::uint32_t operand = 3;
    std::uint32_t value = 1;
    // Both unknown to the compiler, and the value after every step, so that it merges no two steps.
    asm volatile("" : "+r"(operand), "+r"(value));
    const auto start = Clock::now();
    for (int round = 0; round < kRounds; ++round) {
#pragma GCC unroll 16
        for (int i = 0; i < kUnrolled; ++i) {
            step(value, operand);
            asm volatile("" : "+r"(value));
        }
    }
    return nanosecondsBetween(start, Clock::now()) / (kRounds * kUnrolled);
}

inline double nanosecondsPerMultiplication() {
    return nanosecondsPerStep([](std::uint32_t& value, std::uint32_t by) { value *= by; });
}

// Cycles from one dependent multiplication to the next, by comparison with an addition, which takes
// one cycle on every processor.
inline double multiplicationCycles() {
    constexpr int kTries = 50;
    double addition = std::numeric_limits<double>::infinity();
    double multiplication = addition;
    for (int i = 0; i < kTries; ++i) {
        addition = std::min(addition, nanosecondsPerStep([](std::uint32_t& value,
                                                            std::uint32_t by) { value += by; }));
        multiplication = std::min(multiplication, nanosecondsPerMultiplication());
    }
    return std::round(multiplication / addition);
}

// Nanoseconds of one core cycle, now.
inline double nanosecondsPerCycle() {
    static const double cycles = multiplicationCycles();
    return nanosecondsPerMultiplication() / cycles;
}

template <class Work>
double nanosecondsOf(Work&& work) {
    const auto start = Clock::now();
    work();
    return nanosecondsBetween(start, Clock::now());
}

inline double quantile(std::vector<double> sorted, double share) {
    const auto at = static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1));
    std::ranges::nth_element(sorted, sorted.begin() + static_cast<std::ptrdiff_t>(at));
    return sorted[at];
}

}  // namespace detail

// Many measurements of the same work, each at least a few microseconds long.
class Measurements {
  public:
    template <class Work>
    void take(Work&& work) {
        cycle_.push_back(detail::nanosecondsPerCycle());
        work_.push_back(detail::nanosecondsOf(work));
        cycle_.push_back(detail::nanosecondsPerCycle());
    }
    // Core cycles. A clock may jump to and fro within a microsecond, so one chain says little of
    // the work next to it; the mean of them all, without those that something interrupted, does.
    double quantile(double share) const {
        std::vector<double> sorted = cycle_;
        std::ranges::sort(sorted);
        const auto quarter = static_cast<std::ptrdiff_t>(sorted.size() / 4);
        const auto first = sorted.begin() + quarter;
        const auto last = sorted.end() - quarter;
        const double cycle = std::accumulate(first, last, 0.0) / static_cast<double>(last - first);
        return detail::quantile(work_, share) / cycle;
    }
    // What the work takes while nobody else needs the core: close to the least, but not at the
    // mercy of a single clock that was read wrongly.
    double undisturbed() const { return quantile(kUndisturbed); }
    // How many times longer than `other`, which was measured in turn with this and so under the
    // same clock.
    double timesLongerThan(const Measurements& other) const {
        return detail::quantile(work_, kUndisturbed) / detail::quantile(other.work_, kUndisturbed);
    }

  private:
    static constexpr double kUndisturbed = 0.05;

    std::vector<double> cycle_;  // nanoseconds
    std::vector<double> work_;   // nanoseconds
};

}  // namespace norava::bench
