#pragma once

#include <algorithm>
#include <chrono>

namespace norava {

// Says when a tick is due: 30 a second as far as the owner asks often enough, and never several at
// once to make up for a pause.
class TickClock {
  public:
    using Clock = std::chrono::steady_clock;
    static constexpr auto kPeriod = std::chrono::nanoseconds(1'000'000'000 / 30);

    bool TakeDue(Clock::time_point now = Clock::now()) {
        if (now < next) return false;
        next = std::max(next + kPeriod, now);
        return true;
    }
    [[nodiscard]] std::chrono::milliseconds TimeLeft(Clock::time_point now = Clock::now()) const {
        return std::chrono::ceil<std::chrono::milliseconds>(std::max(next - now, {}));
    }

  private:
    Clock::time_point next = Clock::now() + kPeriod;
};

}  // namespace norava
