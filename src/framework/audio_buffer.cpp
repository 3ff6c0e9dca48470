#include "framework/audio_buffer.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <new>

namespace norava {

bool CAudioBuffer::Allocate(int channels, int frames) {
    const bool valid =
        channels >= 1 && frames >= 1 && frames <= std::numeric_limits<int>::max() - 8;
    if (valid && channels == numChannels && frames == allocatedFrames) return true;
    samples.reset();
    channelFlags.reset();
    numChannels = numFrames = allocatedFrames = stride = 0;
    if (!valid) return false;

    const int newStride = (frames + 3) / 4 * 4 + kGuardFrames;
    const auto numFloats = static_cast<std::size_t>(channels) * static_cast<std::size_t>(newStride);
    samples.reset(new (std::nothrow) float[numFloats]());
    channelFlags.reset(new (std::nothrow) unsigned char[static_cast<std::size_t>(channels)]());
    if (samples == nullptr || channelFlags == nullptr) {
        samples.reset();
        channelFlags.reset();
        return false;
    }
    numChannels = channels;
    numFrames = allocatedFrames = frames;
    stride = newStride;
    return true;
}

int CAudioBuffer::SetNumFrames(int frames) noexcept {
    numFrames = std::min(std::max(frames, 1), GetMaxNumFrames());
    return numFrames;
}

const float* CAudioBuffer::GetBuf(int channel) const noexcept {
    if (samples == nullptr || channel < 0 || channel >= numChannels) return nullptr;
    return samples.get() + static_cast<std::ptrdiff_t>(channel) * stride;
}

float* CAudioBuffer::GetBuf(int channel) noexcept {
    return const_cast<float*>(static_cast<const CAudioBuffer*>(this)->GetBuf(channel));
}

void CAudioBuffer::Clear(int channel) noexcept {
    if (float* const buf = GetBuf(channel)) std::fill_n(buf, numFrames, 0.0f);
}

void CAudioBuffer::Clear() noexcept {
    for (int channel = 0; channel < numChannels; ++channel)
        Clear(channel);
}

bool CAudioBuffer::IsInside(int channel, int frame) const noexcept {
    return frame >= 0 && frame < numFrames && channel >= 0 && channel < numChannels;
}

float CAudioBuffer::GetSampleFrame_Tri(int channel, int frame, float t) const noexcept {
    if (!IsInside(channel, frame)) return 0.0f;
    const float* const x = GetBuf(channel) + frame;
    return x[0] * (1.0f - t) + x[1] * t;
}

// Cubic through x[1] and x[2] with the slopes (x[2] - x[0]) / 2 and (x[3] - x[1]) / 2 there
// (Catmull-Rom).
float CAudioBuffer::GetSampleFrame_Spl(int channel, int frame, float t) const noexcept {
    if (!IsInside(channel, frame)) return 0.0f;
    const float* const x = GetBuf(channel) + frame;
    const float c1 = (x[2] - x[0]) * 0.5f;
    const float c3 = (x[1] - x[2]) * 1.5f + (x[3] - x[0]) * 0.5f;
    const float c2 = (x[0] - x[1]) + c1 - c3;
    return ((c3 * t + c2) * t + c1) * t + x[1];
}

}  // namespace norava
