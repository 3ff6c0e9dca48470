#pragma once

#include <algorithm>
#include <array>
#include <cmath>

#include "dsp/sound_settings.h"
#include "framework/plugin_renderer.h"

namespace norava {

// Turns the key voices' fixed 48000 frames per second into the host's rate: renders chunks of at
// most 48 host frames' worth of them into its buffers and reads these at host positions with linear
// interpolation,
//
//   out = x[i] + f * (x[i + 1] - x[i]),  position = i + f,  position += 48000 / host rate.
//
// Element 0 holds the last frame of the chunk before, so the signal is one internal frame late and
// interpolates across the seam. The position stays relative to the chunk; below 0 it still points
// into the chunk before.
//
// Audio thread only. Silence costs next to nothing: while no key sounds and the buffers hold zeros,
// only the position moves on.
class RateConverter {
  public:
    // Host rates outside kMinSampleRate..kMaxSampleRate count as the nearer end.
    void SetHostRate(double hertz);

    // As new: buffers, position and count cleared.
    void Reset();

    // Makes what is left of the last chunk silent and moves nothing.
    void ClearSound();

    // Fills `frames` host frames. `render(left, right, count)` stores `count` internal frames and
    // returns true, or leaves both alone and returns false when it has nothing but silence.
    template <typename Render>
    void Process(float* left, float* right, int frames, Render render);

    int GetInternalCount() const { return count_; }

  private:
    static constexpr int kChunkFrames = 48;  // host frames
    // The last frame of the chunk before, a whole chunk at the lowest host rate, and one to read
    // past the end.
    static constexpr int kBufferSize =
        kChunkFrames * (kInternalRate / static_cast<int>(kMinSampleRate)) + 3;
    using Buffer = std::array<float, kBufferSize>;

    int TakeFromLastChunk(float* left, float* right, int frames);
    void TakeFromChunk(float* left, float* right, int frames);
    double Read(double position, float* left, float* right, int frames) const;
    bool IsSilent() const { return soundEnd_ == 0 && left_[0] == 0.0f && right_[0] == 0.0f; }

    template <typename Render>
    void RenderChunk(int hostFrames, Render& render);

    Buffer left_{};
    Buffer right_{};
    double step_ = 1.0;      // internal frames per host frame
    double position_ = 0.0;  // internal frames
    int count_ = 0;          // internal frames of the current chunk
    int soundEnd_ =
        0;  // no element behind this one, and none at 1 and above when it is 0, holds sound
};

template <typename Render>
void RateConverter::RenderChunk(int hostFrames, Render& render) {
    count_ = static_cast<int>(std::ceil(position_ + hostFrames * step_));
    if (render(left_.data() + 1, right_.data() + 1, count_)) {
        soundEnd_ = std::max(soundEnd_, count_);
    } else if (soundEnd_ > 0) {
        std::fill_n(left_.begin() + 1, soundEnd_, 0.0f);
        std::fill_n(right_.begin() + 1, soundEnd_, 0.0f);
        soundEnd_ = 0;
    }
    // A position that rounds up to the end reads one element more, times 0.
    const std::size_t past = static_cast<std::size_t>(count_) + 1;
    left_[past] = right_[past] = 0.0f;
}

template <typename Render>
void RateConverter::Process(float* left, float* right, int frames, Render render) {
    while (frames > 0) {
        const int chunk = std::min(kChunkFrames, frames);
        const int taken = TakeFromLastChunk(left, right, chunk);
        if (taken < chunk) {
            RenderChunk(chunk - taken, render);
            TakeFromChunk(left + taken, right + taken, chunk - taken);
        }
        left += chunk;
        right += chunk;
        frames -= chunk;
    }
}

}  // namespace norava
