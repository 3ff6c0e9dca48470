#include "dsp/string_delay.h"

#include <algorithm>
#include <limits>

#include "dsp/numbers.h"
#include "dsp/string_group.h"

namespace norava {

namespace {

constexpr long kShortestLength = 4;
constexpr double kHighestRate = 0.2;  // no delay under 5 frames, unless the line itself is shorter
constexpr double kLongestFraction = 0.99;

int storeLength(long length) {
    constexpr long kMost = std::numeric_limits<int>::max() - CTapeDelayBuffer::kSpareSlots;
    return static_cast<int>(std::clamp(length, kShortestLength, kMost));
}

}  // namespace

CStringDelay::CStringDelay(long length) {
    setLength(length);
}

void CStringDelay::takeBack() {
    if (group_ != nullptr) group_->release();
}

std::size_t CStringDelay::bytesFor(long length) {
    return LineMemory::sizeOf(CTapeDelayBuffer::bytesFor(storeLength(length)));
}

void CStringDelay::reserve(long length, LineMemory& memory) {
    takeBack();
    CTapeDelayBuffer::reserve(stores_, storeLength(length), memory);
}

void CStringDelay::setLength(long length) {
    takeBack();
    length_ = storeLength(length);
    CTapeDelayBuffer::allocate(stores_, storeLength(length));
    minimumRate_ = 1.0 / static_cast<double>(length_);
    write_ = &stores_[0];
    read_ = &stores_[1];
    damping = 1.0f;
    setDelay(0.5);
    setFdbk(0.0);
    reset();
}

void CStringDelay::setDelay(double fraction) {
    takeBack();
    const double d = clampOr(fraction, 0.0, kLongestFraction, 0.5);
    const auto length = static_cast<double>(length_);
    const double m = 2.0 / length;
    const double rate = 1.0 / (((1.0 - m) * d + m) * length);
    const double limited = std::max(std::min(rate, kHighestRate), minimumRate_);
    if (limited != rate_)
        write_->rate = 0.0;  // the pass goes on at another rate than it began with
    rate_ = limited;
}

void CStringDelay::setFdbk(double gain) {
    takeBack();
    feedback_ = static_cast<float>(finiteOr(gain, 0.0));
}

float CStringDelay::GetFrame(float input) {
    takeBack();
    float delayed = 0.0f;
    if (read_->seek(phase_)) {
        const CTapeDelayBuffer::Entry next = read_->entry(read_->readIndex);
        const CTapeDelayBuffer::Entry previous = read_->entry(read_->readIndex - 1);
        // The stamps take part in single precision, the phase in double.
        const auto p0 = static_cast<float>(previous.stamp);
        const auto p1 = static_cast<float>(next.stamp);
        const double t =
            p1 > p0 ? (phase_ - static_cast<double>(p0)) / static_cast<double>(p1 - p0) : 0.0;
        const auto s0 = static_cast<double>(previous.sample);
        delayed = static_cast<float>(s0 + (static_cast<double>(next.sample) - s0) * t);
    }
    delayed = flushTiny(delayed);
    state_ = state_ + (delayed - state_) * damping;
    const float written = flushTiny(input) + feedback_ * state_;

    phase_ += rate_;
    if (phase_ >= 1.0) endPass(written);
    write_->append(phase_, written);
    return delayed;
}

// What was written becomes what is read.
void CStringDelay::endPass(float value) {
    write_->endPass(*read_, phase_, value);
    phase_ -= 1.0;
    std::swap(write_, read_);
    write_->count = 0;
    write_->rate = rate_;
}

void CStringDelay::reset() {
    takeBack();
    state_ = 0.0f;
    phase_ = 0.0;
    for (CTapeDelayBuffer& store : stores_)
        store.reset();
}

}  // namespace norava
