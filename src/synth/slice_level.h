#pragma once

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdint>

namespace norava {

// The largest magnitude in `samples`, as the bits of a float without its sign: these order like the
// magnitudes, with infinity and then the NaNs on top, and integers can be compared four at a time
// in any order.
inline std::int32_t LargestMagnitudeBits(const float* samples, int frames) {
    std::int32_t largest = 0;
    for (int i = 0; i < frames; ++i) {
        largest = std::max(largest, std::bit_cast<std::int32_t>(samples[i]) & 0x7fffffff);
    }
    return largest;
}

// The largest level since somebody looked: raised on the audio thread, read and cleared by the
// panel.
class PeakMeter {
  public:
    void Raise(float level) {
        if (level > level_.load(std::memory_order_relaxed)) {
            level_.store(level, std::memory_order_relaxed);
        }
    }
    float Get() const { return level_.load(std::memory_order_relaxed); }
    void Clear() { level_.store(0.0f, std::memory_order_relaxed); }

  private:
    std::atomic<float> level_ = 0.0f;
};

}  // namespace norava
