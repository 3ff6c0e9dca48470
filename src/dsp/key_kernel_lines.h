#pragma once

// The strings' circular lines. Internal linkage, see key_kernel_impl.h.

#include <cstddef>
#include <cstdint>

#include "dsp/key_kernel_lanes.h"

namespace norava {
namespace {

NORAVA_INLINE int smaller(int a, int b) {
    return a < b ? a : b;
}

// Makes sure that what the next `steps` steps read is up to date: what was never written since the
// reset is silence. A line at its end goes back to its start, but not before a step is due: a note
// that starts meanwhile with longer lines goes on from there.
NORAVA_INLINE void prepareLines(KeyStrings& strings, int steps) {
    if (steps == 0) return;
    KeyLines& lines = strings.lines;
    bool allValid = true;
    for (int i = 0; i < kKeyLines; ++i) {
        if (lines.next[i] >= lines.end[i]) lines.next[i] = lines.start[i];
        const int read = smaller(lines.next[i] + steps * lines.stride[i], lines.end[i]);
        for (int at = lines.valid[i]; at < read; at += 4)
            storeLanes(strings.memory + at, 0.0f);
        if (read > lines.valid[i]) lines.valid[i] = read;
        allValid = allValid && lines.valid[i] >= lines.end[i];
    }
    strings.allValid = allValid;
}

// Where the next frame of each line lies, for one key or two. A step reads and overwrites the same
// place.
template <class L>
struct LineOffsets {
    using I = typename L::I;
    I next, end, length, stride;

    // Writes this step's offsets to `at` and moves on; a line at its end goes back to its start.
    NORAVA_INLINE void step(std::int32_t* at) {
        next -= length & (next >= end);
        storeLanes(at, next);
        next += stride;
    }
};

}  // namespace
}  // namespace norava
