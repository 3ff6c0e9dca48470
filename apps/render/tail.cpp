#include "render/tail.h"

#include <algorithm>
#include <cmath>

namespace norava {

namespace {

constexpr double kLongestTailSeconds = 60.0;
// Longer than the two seconds between the echoes of the longest delay.
constexpr double kSilenceSeconds = 2.5;
constexpr float kSilenceLevel = 3.2e-5f;  // -90 dBFS

}  // namespace

Tail::Tail(std::optional<double> seconds, double sampleRateHz)
    : untilSilence_(!seconds),
      framesLeft_(std::llround(seconds.value_or(kLongestTailSeconds) * sampleRateHz)),
      silentSamplesToEnd_(2 * std::size_t(kSilenceSeconds * sampleRateHz)) {}

bool Tail::Take(std::span<const float> interleaved, std::vector<float>& keep) {
    const auto frames = std::min(framesLeft_, std::int64_t(interleaved.size() / 2));
    const auto wanted = interleaved.first(2 * std::size_t(frames));
    framesLeft_ -= frames;
    if (untilSilence_) return TakeUntilSilence(wanted, keep);
    keep.insert(keep.end(), wanted.begin(), wanted.end());
    return framesLeft_ > 0;
}

bool Tail::TakeUntilSilence(std::span<const float> interleaved, std::vector<float>& keep) {
    const bool loud = std::ranges::any_of(
        interleaved, [](float sample) { return std::fabs(sample) > kSilenceLevel; });
    if (loud) {
        keep.insert(keep.end(), silence_.begin(), silence_.end());
        keep.insert(keep.end(), interleaved.begin(), interleaved.end());
        silence_.clear();
    } else {
        silence_.insert(silence_.end(), interleaved.begin(), interleaved.end());
    }
    if (silence_.size() >= silentSamplesToEnd_) return false;
    cutShort_ = framesLeft_ == 0 && loud;
    return framesLeft_ > 0;
}

}  // namespace norava
