#pragma once

#include <array>

#include "dsp/lane_pairs.h"
#include "dsp/string_delay.h"

namespace norava {

// Up to four string lines that run side by side, one a lane. Each gives the same bits as its own
// GetFrame would; the lanes' recurrences overlap, and a division serves two lines.
class StringGroup {
  public:
    static constexpr int kLanes = 4;

    // Advances `count` lines, 1..4, all different and at most kLongestLine frames long, by `frames`
    // frames. `inputs` and `outputs` hold one lane a line; inputs below 1e-9 must be 0 already.
    // They may be one and the same array.
    static void process(CStringDelay* const* lines, int count, const v128* inputs, v128* outputs,
                        int frames);

    // Beyond this, two neighbouring stamps can be the same number in single precision.
    static constexpr long kLongestLine = 1L << 20;
};

}  // namespace norava
