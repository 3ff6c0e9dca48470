#include "render/meters.h"

#include <ebur128.h>
#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <new>
#include <stdexcept>

namespace norava {

static_assert(std::endian::native == std::endian::little, "samples are hashed as they lie");

class LevelMeter::LoudnessState {
  public:
    explicit LoudnessState(int sampleRateHz)
        : state_(ebur128_init(2, static_cast<unsigned long>(sampleRateHz), EBUR128_MODE_I)) {
        if (state_ == nullptr) throw std::bad_alloc();
    }
    ~LoudnessState() { ebur128_destroy(&state_); }
    LoudnessState(const LoudnessState&) = delete;
    LoudnessState& operator=(const LoudnessState&) = delete;

    ebur128_state* Get() { return state_; }

  private:
    ebur128_state* state_;
};

LevelMeter::LevelMeter(int sampleRateHz) {
    if (sampleRateHz >= kLowestLoudnessRateHz)
        loudness_ = std::make_unique<LoudnessState>(sampleRateHz);
}

LevelMeter::~LevelMeter() = default;

void LevelMeter::Take(std::span<const float> interleaved) {
    for (const float sample : interleaved)
        peak_ = std::max(peak_, std::fabs(double(sample)));
    if (loudness_ && ebur128_add_frames_float(loudness_->Get(), interleaved.data(),
                                              interleaved.size() / 2) != EBUR128_SUCCESS) {
        throw std::bad_alloc();
    }
}

std::optional<double> LevelMeter::Loudness() const {
    if (!loudness_) return std::nullopt;
    double loudness = 0.0;
    if (ebur128_loudness_global(loudness_->Get(), &loudness) != EBUR128_SUCCESS) {
        return -std::numeric_limits<double>::infinity();
    }
    return loudness;
}

SampleHash::SampleHash() : context_(EVP_MD_CTX_new()) {
    if (!context_ || EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) != 1) {
        throw std::runtime_error("SHA-256 is not available");
    }
}

void SampleHash::Deleter::operator()(evp_md_ctx_st* context) const {
    EVP_MD_CTX_free(context);
}

void SampleHash::Take(std::span<const float> interleaved) {
    EVP_DigestUpdate(context_.get(), interleaved.data(), interleaved.size_bytes());
}

std::string SampleHash::HexDigest() {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    EVP_DigestFinal_ex(context_.get(), digest.data(), &length);
    std::string text;
    for (unsigned int i = 0; i < length; ++i) {
        constexpr char kDigits[] = "0123456789abcdef";
        text += kDigits[digest[i] >> 4];
        text += kDigits[digest[i] & 0xF];
    }
    return text;
}

}  // namespace norava
