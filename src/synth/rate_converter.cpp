#include "synth/rate_converter.h"

namespace norava {

namespace {

// Reads at whole positions, four lanes at a time where the compiler can. The product with 0 stays:
// it makes what is not finite a NaN, exactly as reading between two elements does.
void ReadWhole(const float* from, float* out, int frames) {
    for (int k = 0; k < frames; ++k)
        out[k] = from[k] + 0.0f * (from[k + 1] - from[k]);
}

}  // namespace

void RateConverter::SetHostRate(double hertz) {
    step_ = kInternalRate / std::clamp(hertz, kMinSampleRate, kMaxSampleRate);
}

void RateConverter::Reset() {
    left_.fill(0.0f);
    right_.fill(0.0f);
    soundEnd_ = 0;
    position_ = 0.0;
    count_ = 0;
}

void RateConverter::ClearSound() {
    std::fill_n(left_.begin(), soundEnd_ + 1, 0.0f);
    std::fill_n(right_.begin(), soundEnd_ + 1, 0.0f);
    soundEnd_ = 0;
}

int RateConverter::TakeFromLastChunk(float* left, float* right, int frames) {
    int taken = 0;
    while (position_ < 0.0 && taken < frames) {
        Read(position_ + count_, left + taken, right + taken, 1);
        position_ += step_;
        ++taken;
    }
    return taken;
}

void RateConverter::TakeFromChunk(float* left, float* right, int frames) {
    position_ = Read(position_, left, right, frames) - count_;
    const auto last = static_cast<std::size_t>(count_);
    left_[0] = left_[last];
    right_[0] = right_[last];
}

double RateConverter::Read(double position, float* left, float* right, int frames) const {
    if (IsSilent()) {
        std::fill_n(left, frames, 0.0f);
        std::fill_n(right, frames, 0.0f);
        if (step_ == 1.0) return position + frames;
        for (int k = 0; k < frames; ++k)
            position += step_;
        return position;
    }
    if (step_ == 1.0) {
        // The position is a whole number from the start and stays one.
        const int first = static_cast<int>(position);
        ReadWhole(left_.data() + first, left, frames);
        ReadWhole(right_.data() + first, right, frames);
        return position + frames;
    }
    for (int k = 0; k < frames; ++k) {
        const int i = static_cast<int>(position);
        const float f = static_cast<float>(position - i);
        const float* const l = left_.data() + i;
        const float* const r = right_.data() + i;
        left[k] = l[0] + f * (l[1] - l[0]);
        right[k] = r[0] + f * (r[1] - r[0]);
        position += step_;
    }
    return position;
}

}  // namespace norava
