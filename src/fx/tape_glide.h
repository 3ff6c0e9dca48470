#pragma once

#include "dsp/lane_pairs.h"
#include "dsp/numbers.h"

// How a tape delay's speed and wet gain approach what was set, one frame at a time; for one line
// and for lanes of them.

namespace norava {

inline constexpr double kHighestTapeStep = 0.2;  // passes per frame

inline double glideRate(double rate, double target) {
    return rate + (target - rate) * 0.005;
}
inline v128d glideRate(v128d rate, v128d target) {
    return rate + (target - rate) * v128d{0.005, 0.005};
}

inline float glideWet(float wet, float target) {
    return flushTiny(wet + (target - wet) * 0.01f);
}
inline v128 glideWet(v128 wet, v128 target) {
    return flushTiny(wet + (target - wet) * v128_Set(0.01f));
}

}  // namespace norava
