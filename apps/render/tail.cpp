#include "render/tail.h"

#include <algorithm>
#include <cmath>

namespace norava {

namespace {

constexpr double kLongestTailSeconds = 60.0;
// Longer than the two seconds between the echoes of the longest delay.
constexpr double kSilenceSeconds = 2.5;
constexpr double kSoundingSeconds = 0.1;  // a sound that was there so shortly ago goes on
constexpr float kSilenceLevel = 3.2e-5f;  // -90 dBFS

}  // namespace

Tail::Tail(std::optional<double> seconds, double sampleRateHz)
    : untilSilence_(!seconds),
      framesLeft_(std::llround(seconds.value_or(kLongestTailSeconds) * sampleRateHz)),
      silentSamplesToEnd_(2 * std::size_t(kSilenceSeconds * sampleRateHz)),
      soundingSamples_(2 * std::size_t(kSoundingSeconds * sampleRateHz)) {}

bool Tail::Take(std::span<const float> interleaved, std::vector<float>& keep) {
    const auto frames = std::min(framesLeft_, std::int64_t(interleaved.size() / 2));
    const auto wanted = interleaved.first(2 * std::size_t(frames));
    framesLeft_ -= frames;
    if (untilSilence_) return TakeUntilSilence(wanted, keep);
    keep.insert(keep.end(), wanted.begin(), wanted.end());
    return framesLeft_ > 0;
}

// Frame by frame: where the sound ends must not depend on the blocks.
bool Tail::TakeUntilSilence(std::span<const float> interleaved, std::vector<float>& keep) {
    for (; !interleaved.empty(); interleaved = interleaved.subspan(2)) {
        const auto frame = interleaved.first(2);
        silence_.insert(silence_.end(), frame.begin(), frame.end());
        if (std::max(std::fabs(frame[0]), std::fabs(frame[1])) > kSilenceLevel) {
            keep.insert(keep.end(), silence_.begin(), silence_.end());
            silence_.clear();
        }
        if (silence_.size() >= silentSamplesToEnd_) return false;
    }
    cutShort_ = framesLeft_ == 0 && silence_.size() < soundingSamples_;
    return framesLeft_ > 0;
}

}  // namespace norava
