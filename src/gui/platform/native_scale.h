#pragma once

#include <algorithm>
#include <cmath>

namespace norava {

// Stored pixels a logical pixel for a screen of that density and so many rows: whole, 1 .. 3, and
// the tallest window of the product must fit with the frames that hosts and desktops put round it.
inline int ChooseScale(double dotsPerInch, int screenRows) {
    constexpr double kUsualDensity = 96.0;
    constexpr int kMaxScale = 3;
    constexpr int kRowsNeeded = 640;
    const double wanted =
        std::clamp(std::round(dotsPerInch / kUsualDensity), 1.0, double{kMaxScale});
    return std::clamp(screenRows / kRowsNeeded, 1, static_cast<int>(wanted));
}

}  // namespace norava
