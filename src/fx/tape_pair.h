#pragma once

#include <array>
#include <cstddef>

#include "dsp/lane_pairs.h"
#include "fx/tape_delay.h"

namespace norava {

// Two tape delays that run side by side, one a lane. Each gives the same bits as its own GetFrame
// would; their recurrences overlap, and a division serves both.
//
// The lanes keep what they know of their lines from one call to the next, because to find it anew
// takes longer than a few frames do. A line that is called itself takes its state back first.
class TapePair {
  public:
    TapePair() = default;
    ~TapePair() { release(); }
    TapePair(const TapePair&) = delete;
    TapePair& operator=(const TapePair&) = delete;

    // Advances both delays, which have no filter on, by `frames` frames. Lane 0 of inputs and
    // outputs belongs to the first, lane 1 to the second, the others to nobody. `first` and
    // `second` may be one and the same, if its input stands in both lanes; so may the arrays.
    void process(CTapeDelay& first, CTapeDelay& second, const v128* inputs, v128* outputs,
                 int frames);

    // Gives the lines back what the lanes know of them.
    void release();

  private:
    struct Lanes {
        // What was set.
        v128d increment, depth, lowest, targetRate;
        v128 targetWet, feedback;
        // For the frame to come; what is named 0 belongs to the entry before the position.
        v128d position, rate, lfo, stamp0, sample0;
        v128 wet, written;
        v128i sounds;                          // all bits set in lanes that have a pass to play
        std::array<const std::byte*, 2> read;  // the entry behind the position
        std::array<std::byte*, 2> write;
    };

    void take(CTapeDelay& first, CTapeDelay& second);
    void seek();
    void settle();
    bool hasArrived() const;
    template <bool kArrived>
    int run(const v128* inputs, v128* outputs, int frames);

    static std::size_t at(int lane) { return static_cast<std::size_t>(lane); }

    Lanes lanes_{};
    std::array<CTapeDelay*, 2> lines_{};
    int count_ = 0;       // 1 if both lanes are the same line
    int unsettled_ = 0;   // frames that the lines have not been told of
    bool ready_ = false;  // the lanes know their place
    bool arrived_ = false;
};

}  // namespace norava
