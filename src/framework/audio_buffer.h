#pragma once

#include <memory>

namespace norava {

// De-interleaved 32-bit float audio: every channel has room for GetMaxNumFrames() frames and four
// guard samples behind them, which the cubic read may look into. Channel starts are 16-byte
// aligned. Belongs to one thread at a time; only Allocate takes memory.
class CAudioBuffer {
  public:
    static constexpr int kGuardFrames = 4;

    // Makes room for `channels` of at least `frames` frames (rounded up to a multiple of 4), all
    // zero, and sets the current frame count to `frames`. When the same was allocated last,
    // nothing changes, the frame count included. False for arguments below 1 or without memory; the
    // buffer is empty then.
    bool Allocate(int channels, int frames);

    int GetMaxNumFrames() const noexcept { return stride > 0 ? stride - kGuardFrames : 0; }
    int SetNumFrames(
        int frames) noexcept;  // kept within 1..GetMaxNumFrames(); returns what was stored
    int GetNumFrames() const noexcept { return numFrames; }
    int GetNumChannels() const noexcept { return numChannels; }

    float* GetBuf(int channel) noexcept;  // null for a channel that does not exist
    const float* GetBuf(int channel) const noexcept;

    void Clear(int channel) noexcept;  // the current frames of one channel, or of all
    void Clear() noexcept;

    // Interpolated reads at `t` (0..1); 0 outside the current frames and channels. The linear read
    // lies between `frame` and `frame + 1`, the cubic one between `frame + 1` and `frame + 2`.
    float GetSampleFrame_Tri(int channel, int frame, float t) const noexcept;
    float GetSampleFrame_Spl(int channel, int frame, float t) const noexcept;

    // Fill up to the current frame count of one channel from interleaved samples: one sample every
    // `step` samples of the source's width. Nothing happens for a step below 1, a missing source or
    // a missing channel.
    void ConvertFrom_8bit(int channel, const void* source, int frames, short step) noexcept;
    void ConvertFrom_16bit_LSB(int channel, const void* source, int frames, short step) noexcept;
    void ConvertFrom_24bit_LSB(int channel, const void* source, int frames, short step) noexcept;
    void ConvertFrom_32bit_LSB(int channel, const void* source, int frames, short step) noexcept;
    void ConvertFrom_16bit_MSB(int channel, const void* source, int frames, short step) noexcept;
    void ConvertFrom_24bit_MSB(int channel, const void* source, int frames, short step) noexcept;
    void ConvertFrom_32bit_MSB(int channel, const void* source, int frames, short step) noexcept;
    void ConvertFrom_Float_MSB(int channel, const void* source, int frames, short step) noexcept;

  private:
    template <int kSampleBytes, typename Decode>
    void Convert(int channel, const void* source, int frames, short step, Decode decode) noexcept;
    bool IsInside(int channel, int frame) const noexcept;

    std::unique_ptr<float[]> samples;  // channel after channel, `stride` floats each
    int numChannels = 0;
    int numFrames = 0;
    int allocatedFrames = 0;  // as they were asked for
    int stride = 0;
    std::unique_ptr<unsigned char[]> channelFlags;  // one a channel, zero, free for owners
};

}  // namespace norava
