#pragma once

#include <array>
#include <cstring>

namespace norava {

// Remembers the inputs of a formula, bit for bit, so that it is evaluated again only when one of
// them has changed. A new memo remembers nothing.
template <int N>
class InputMemo {
  public:
    // True when `now` differs from the inputs of the last call, or there was none.
    bool changed(const std::array<double, N>& now) {
        if (known_ && std::memcmp(now.data(), last_.data(), sizeof last_) == 0) return false;
        last_ = now;
        return known_ = true;
    }

  private:
    std::array<double, N> last_{};
    bool known_ = false;
};

}  // namespace norava
