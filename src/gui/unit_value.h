#pragma once

namespace norava {

// A value from outside as something that can be drawn: 0 .. 1, not a number gives 0.
[[nodiscard]] constexpr float ToUnit(float value) {
    if (!(value > 0.0f)) return 0.0f;
    return value < 1.0f ? value : 1.0f;
}

}  // namespace norava
