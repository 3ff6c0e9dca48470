#pragma once

#include <cstddef>
#include <cstdint>

#include "dsp/kernel_path.h"
#include "dsp/lanes.h"

namespace norava {

// What the loop over a group of four string lines reads and writes, a lane for each line. Plain
// data, so that the loop can be built for several instruction sets. What is named 0 belongs to the
// entry before the phase, 1 to the one at or behind it.
struct alignas(32) StringSteps {
    // The entries in memory, for code that may not share the functions of CTapeDelayBuffer.
    static constexpr std::size_t kStrideBytes = 24;
    static constexpr std::size_t kSampleOffset = 8;  // behind the stamp
    static constexpr float kTiny = 1e-9f;            // what is below becomes 0

    double phase[4];
    double rate[4];
    double stamp0[4];
    double stamp1[4];
    double sample0[4];
    const std::byte* read[4];  // entry 1 of the pass before
    std::byte* write[4];
    v128 state, feedback, damping;
    v128 written;  // last
    v128i sounds;  // all bits set in lanes that have a pass to play
};

// Advances by `frames` frames in which every line takes one entry of the pass before a frame, both
// passes at one and the same rate, and reaches no end of a pass but with the last frame. `inputs`
// and `outputs` may be the same array.
using RenderStringSteps = void (*)(StringSteps& lines, const v128* inputs, v128* outputs,
                                   int frames);
void renderStringStepsBaseline(StringSteps& lines, const v128* inputs, v128* outputs, int frames);
void renderStringStepsWide(StringSteps& lines, const v128* inputs, v128* outputs, int frames);

}  // namespace norava
