#pragma once

#include "dsp/lane_pairs.h"
#include "fx/tape_delay.h"

namespace norava {

// Two tape delays that run side by side, one a lane. Each gives the same bits as its own GetFrame
// would; their recurrences overlap, and a division serves both.
class TapePair {
  public:
    // Advances both delays, which have no filter on, by `frames` frames, replacing their input with
    // their output. Lane 0 of `samples` belongs to the first, lane 1 to the second, the others to
    // nobody. `first` and `second` may be one and the same, if its input stands in both lanes.
    static void process(CTapeDelay& first, CTapeDelay& second, v128* samples, int frames);
};

}  // namespace norava
