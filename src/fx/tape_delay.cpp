#include "fx/tape_delay.h"

#include <algorithm>
#include <cmath>

#include "dsp/numbers.h"
#include "fx/tape_glide.h"
#include "fx/tape_pair.h"

namespace norava {

namespace {

constexpr int kShortestLength = 4;
constexpr double kLastPosition = 0.999;
constexpr double kLongestFraction = 0.99;
constexpr double kDefaultRate = 44100.0;
constexpr float kLowestCutoffHz = 10.0f;

float usableCutoff(float frequency, double sampleRate) {
    const auto highest = static_cast<float>(sampleRate / 2.1);
    return std::min(clampOr(frequency, kLowestCutoffHz, highest, kLowestCutoffHz), highest);
}

float usableQ(float q) {
    return std::isfinite(q) ? std::max(q, 0.0f) : 0.0f;
}

}  // namespace

CTapeDelay::CTapeDelay(int length, double initialPosition) {
    setLength(length, initialPosition);
}

void CTapeDelay::takeBack() {
    if (pair_ != nullptr) pair_->release();
}

std::size_t CTapeDelay::bytesFor(int length) {
    return LineMemory::sizeOf(CTapeDelayBuffer::bytesFor(std::max(length, kShortestLength)));
}

void CTapeDelay::reserve(int length, LineMemory& memory) {
    takeBack();
    CTapeDelayBuffer::reserve(stores_, std::max(length, kShortestLength), memory);
}

void CTapeDelay::setLength(int length, double initialPosition) {
    takeBack();
    length_ = std::max(length, kShortestLength);
    CTapeDelayBuffer::allocate(stores_, length_);
    write_ = &stores_[0];
    read_ = &stores_[1];
    minimumRate_ = 1.0 / static_cast<double>(length_);
    initialPosition_ = clampOr(initialPosition, 0.0, kLastPosition, 0.0);
    setDelay(0.5);
    setWet(1.0);
    setFdbk(0.0);
    setSpeed(0.0, kDefaultRate);
    setLowPass(1000.0f, 1.0f, kDefaultRate);
    setHighPass(1000.0f, 1.0f, kDefaultRate);
    lowPassOn_ = false;
    highPassOn_ = false;
    setDepth(0.0);
    reset();
}

void CTapeDelay::setDelay(double fraction) {
    takeBack();
    const double t = clampOr(fraction, 0.0, kLongestFraction, 0.5);
    const auto length = static_cast<double>(length_);
    const double m = 2.0 / length;
    targetRate_ = 1.0 / (((1.0 - m) * t + m) * length);
}

void CTapeDelay::setSpeed(double hz, double sampleRate) {
    takeBack();
    lfoIncrement_ = finiteOr(std::max(hz, 0.0) / sampleRate, 0.0);
}

void CTapeDelay::setDepth(double depth) {
    takeBack();
    depth_ = static_cast<float>(clampOr(depth, 0.0, 1.0, 0.0));
}

void CTapeDelay::setWet(double gain) {
    takeBack();
    targetWet_ = static_cast<float>(finiteOr(gain, 0.0));
}

void CTapeDelay::setFdbk(double gain) {
    takeBack();
    feedback_ = static_cast<float>(finiteOr(gain, 0.0));
}

void CTapeDelay::setLowPass(float frequency, float q, double sampleRate) {
    lowPass_.Set(usableCutoff(frequency, sampleRate), usableQ(q), static_cast<float>(sampleRate));
}

void CTapeDelay::setHighPass(float frequency, float q, double sampleRate) {
    highPass_.Set(usableCutoff(frequency, sampleRate), usableQ(q), static_cast<float>(sampleRate));
}

void CTapeDelay::setLowEnable(bool on) {
    if (on == lowPassOn_) return;
    lowPassOn_ = on;
    lowPass_.Reset();
}

void CTapeDelay::setHiEnable(bool on) {
    if (on == highPassOn_) return;
    highPassOn_ = on;
    highPass_.Reset();
}

void CTapeDelay::reset() {
    takeBack();
    currentWet_ = 0.0f;
    position_ = initialPosition_;
    currentRate_ = targetRate_;
    lfoPhase_ = 0.0;
    for (CTapeDelayBuffer& store : stores_)
        store.reset();
    lowPass_.Reset();
    highPass_.Reset();
}

// Returns the speed factor of this frame, at least 1.
double CTapeDelay::advanceWow() {
    const double p = lfoPhase_;
    const double triangle = p < 0.5 ? 2.0 * p : 1.0 - 2.0 * (p - 0.5);
    const double smooth = triangle * triangle * (3.0 - 2.0 * triangle);
    const double wow = 1.0 + smooth * static_cast<double>(depth_);
    lfoPhase_ += lfoIncrement_;
    if (lfoPhase_ >= 1.0) lfoPhase_ -= std::floor(lfoPhase_);
    return std::max(wow, 1.0);
}

// What the pass before holds at the tape position.
float CTapeDelay::play() {
    if (!read_->seek(position_)) return 0.0f;
    const CTapeDelayBuffer::Entry next = read_->entry(read_->readIndex);
    const CTapeDelayBuffer::Entry previous = read_->entry(read_->readIndex - 1);
    const double fraction = next.stamp > previous.stamp
                                ? (position_ - previous.stamp) / (next.stamp - previous.stamp)
                                : 0.0;
    const auto s0 = static_cast<double>(previous.sample);
    return static_cast<float>(s0 + (static_cast<double>(next.sample) - s0) * fraction);
}

void CTapeDelay::record(float value, double wow) {
    position_ += std::max(std::min(currentRate_ * wow, kHighestTapeStep), minimumRate_);
    if (position_ >= 1.0) {
        endPass(value);
    }
    write_->append(position_, value);
}

// What was written becomes what is read.
void CTapeDelay::endPass(float value) {
    write_->endPass(*read_, position_, value);
    position_ -= 1.0;
    std::swap(write_, read_);
    write_->count = 0;
}

float CTapeDelay::GetFrame(float input) {
    takeBack();
    const double wow = advanceWow();
    float played = flushTiny(play());
    if (lowPassOn_) played = lowPass_.GetFrame(played);
    if (highPassOn_) played = highPass_.GetFrame(played);
    const float output = played * currentWet_;
    record(flushTiny(input) + feedback_ * played, wow);
    currentWet_ = glideWet(currentWet_, targetWet_);
    currentRate_ = glideRate(currentRate_, targetRate_);
    return output;
}

}  // namespace norava
