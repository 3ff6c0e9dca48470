#pragma once

#include <array>

#include "dsp/lane_pairs.h"
#include "dsp/string_delay.h"
#include "dsp/string_steps.h"

namespace norava {

// Up to four string lines that run side by side, one a lane. Each gives the same bits as its own
// GetFrame would; the lanes' recurrences overlap, and a division serves several lines.
//
// The lanes keep what they know of their lines from one call to the next, because to find it anew
// takes longer than a few frames do. A line that is called itself takes its state back first.
class StringGroup {
  public:
    static constexpr int kLanes = 4;

    explicit StringGroup(KernelPath path = fastestKernelPath());
    ~StringGroup() { release(); }
    StringGroup(const StringGroup&) = delete;
    StringGroup& operator=(const StringGroup&) = delete;

    // Advances `count` lines, 1..4, all different and at most kLongestLine frames long, by `frames`
    // frames. `inputs` and `outputs` hold one lane a line; inputs below 1e-9 must be 0 already.
    // They may be one and the same array.
    void process(CStringDelay* const* lines, int count, const v128* inputs, v128* outputs,
                 int frames);

    // Gives the lines back what the lanes know of them.
    void release();

    // Beyond this, two neighbouring stamps can be the same number in single precision.
    static constexpr long kLongestLine = 1L << 20;

  private:
    CStringDelay& line(int lane) const { return *lines_[static_cast<std::size_t>(lane)]; }
    bool holds(CStringDelay* const* lines, int count) const;
    void take(CStringDelay* const* lines, int count);
    void settle();
    void seek();
    int steadyFrames() const;
    void endPass(CStringDelay& line, float written) const;

    const RenderStringSteps renderSteps_;
    StringSteps steps_;
    std::array<CStringDelay*, kLanes> lines_{};
    int count_ = 0;
    int steadyLeft_ = 0;  // frames that renderSteps_ may still take
    int unsettled_ = 0;   // frames that the lines have not been told of
};

}  // namespace norava
