#pragma once

// The strings' circular lines, opened as straight memory for one piece. Internal linkage, see
// key_kernel_impl.h.

#include <cstddef>
#include <cstdint>

#include "dsp/key_kernel_lanes.h"

namespace norava {
namespace {

// Where a line's steps read and write: step s at read + s * stride and write + s * stride. A line
// that does not reach its end during the piece is used where it lies. One that does is copied into
// a window in which it has no end: what a step writes lies as far behind what it reads as the line
// is long, so that a line shorter than the piece hears itself again.
struct OpenLine {
    const unsigned char* read;
    unsigned char* write;
};

struct LineWindow {
    alignas(16) unsigned char bytes[2 * kPieceSteps * 8 + 16];
};

NORAVA_INLINE int smaller(int a, int b) {
    return a < b ? a : b;
}

// Copies a multiple of four bytes; inline because most windows are short.
NORAVA_INLINE void copyFrames(unsigned char* to, const unsigned char* from, int bytes) {
    int i = 0;
    for (; i + 16 <= bytes; i += 16)
        storeLanes(to + i, loadLanes<v128>(from + i));
    for (; i < bytes; i += 4)
        storeLanes(to + i, loadLanes<std::uint32_t>(from + i));
}

// What was never written since the reset is silence: makes true what the next `steps` steps read.
NORAVA_INLINE void validate(KeyLine& line, unsigned char* memory, int steps) {
    const int end = smaller(line.position + steps, line.length);
    if (end <= line.valid) return;
    unsigned char* stale = memory + line.start + line.valid * line.stride;
    for (int i = 0; i < (end - line.valid) * line.stride; i += 4)
        storeLanes(stale + i, 0.0f);
    line.valid = end;
}

NORAVA_INLINE OpenLine openLine(KeyLine& line, unsigned char* memory, int steps,
                                LineWindow& window) {
    if (line.position >= line.length) line.position = 0;
    if (line.valid < line.length) [[unlikely]]
        validate(line, memory, steps);
    unsigned char* start = memory + line.start;
    unsigned char* here = start + line.position * line.stride;
    if (line.position + steps <= line.length) return {here, here};
    const int depth = smaller(line.length, steps);
    const int straight = line.length - line.position;
    copyFrames(window.bytes, here, smaller(straight, depth) * line.stride);
    if (depth > straight)
        copyFrames(window.bytes + straight * line.stride, start, (depth - straight) * line.stride);
    return {window.bytes, window.bytes + depth * line.stride};
}

NORAVA_INLINE void closeLine(KeyLine& line, unsigned char* memory, int steps,
                             const LineWindow& window) {
    const int end = line.position + steps;
    if (end <= line.length) {
        line.position = end;
        return;
    }
    // The last `depth` frames written are the line's newest; the very last one lies before the
    // next position, which stays at the end of the line until the next step.
    const int depth = smaller(line.length, steps);
    const int next = (end - 1) % line.length + 1;
    const int wrapped = smaller(next, depth);
    const unsigned char* newest = window.bytes + steps * line.stride;
    unsigned char* start = memory + line.start;
    copyFrames(start + (line.length - (depth - wrapped)) * line.stride, newest,
               (depth - wrapped) * line.stride);
    copyFrames(start + (next - wrapped) * line.stride, newest + (depth - wrapped) * line.stride,
               wrapped * line.stride);
    line.position = next;
}

}  // namespace
}  // namespace norava
