#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>

struct evp_md_ctx_st;

namespace norava {

// At lower rates the weighting's shelf would lie above half the rate, and what was measured would
// be nonsense.
inline constexpr int kLowestLoudnessRateHz = 4000;

// Loudness and peak of a stereo signal, taken while it passes.
class LevelMeter {
  public:
    explicit LevelMeter(int sampleRateHz);
    ~LevelMeter();
    void Take(std::span<const float> interleaved);

    double Peak() const { return peak_; }  // largest magnitude; 1 is full scale
    // Integrated loudness in LUFS after EBU R 128; minus infinity for silence, nothing below
    // kLowestLoudnessRateHz.
    std::optional<double> Loudness() const;

  private:
    class LoudnessState;
    std::unique_ptr<LoudnessState> loudness_;  // null: the rate is too low
    double peak_ = 0.0;
};

// SHA-256 of samples as 32-bit little-endian floats.
class SampleHash {
  public:
    SampleHash();
    void Take(std::span<const float> interleaved);
    std::string HexDigest();  // ends the hash

  private:
    struct Deleter {
        void operator()(evp_md_ctx_st* context) const;
    };
    std::unique_ptr<evp_md_ctx_st, Deleter> context_;
};

}  // namespace norava
