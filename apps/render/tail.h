#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace norava {

// Decides how much of the sound after a song's last event is kept: a fixed time, or until it has
// died away. Blocks go in one after the other; what is to be written comes out.
class Tail {
  public:
    // Without `seconds` the sound's end is looked for.
    Tail(std::optional<double> seconds, double sampleRateHz);

    // Frames of the next block; true while more is wanted. `keep` gets what is to be written
    // now, interleaved.
    bool Take(std::span<const float> interleaved, std::vector<float>& keep);

    // The sound had not died away when the longest tail was reached.
    bool IsCutShort() const { return cutShort_; }

  private:
    bool TakeUntilSilence(std::span<const float> interleaved, std::vector<float>& keep);

    bool untilSilence_;
    std::int64_t framesLeft_;
    std::size_t silentSamplesToEnd_;
    std::size_t soundingSamples_;
    std::vector<float> silence_;  // quiet, but perhaps only the gap before an echo
    bool cutShort_ = false;
};

}  // namespace norava
