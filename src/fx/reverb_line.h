#pragma once

#include <algorithm>

namespace norava {

// One circular line of the reverb: the sample at the position is read, the new one written to the
// same place, and the position moves back by one. So what was written k frames ago lies k cells
// above the position.
//
// Because the position counts down, the cells that successive frames pass lie in memory with time
// running backwards. Pieces of several frames are therefore processed with their samples in
// reversed order, the last frame first: then cells and samples run side by side.
struct ReverbLine {
    float* data = nullptr;
    int length = 1;
    int capacity = 1;
    int position = 0;

    float read() const { return data[position]; }

    // The sample `offset` cells above the position, 0..length.
    float tap(int offset) const { return data[wrapped(position + offset)]; }

    void writeAndStep(float value) {
        data[position] = value;
        position = position == 0 ? length - 1 : position - 1;
    }

    // An index of -length..2 * length - 1 within the line.
    int wrapped(int index) const {
        if (index < 0) return index + length;
        return index >= length ? index - length : index;
    }

    // Calls f(cells, first, count) for the one or two runs of neighbouring cells that `frames`
    // frames pass, 1..length, starting `offset` cells above the position, -1..length: `cells`
    // belong to the samples from `first` in reversed order.
    template <class F>
    void forRuns(int offset, int frames, F&& f) const {
        const int top = wrapped(position + offset);
        const int low = std::min(frames, top + 1);
        f(data + top - low + 1, frames - low, low);
        if (low < frames) f(data + length - (frames - low), 0, frames - low);
    }

    // Moves on by 1..length frames.
    void advance(int frames) { position = wrapped(position - frames); }
};

}  // namespace norava
