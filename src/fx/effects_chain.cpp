#include "fx/effects_chain.h"

#include <algorithm>
#include <cmath>

#include "dsp/numbers.h"

namespace norava {

namespace {

// Memory for this rate is taken from the start, so that a host which opens at 44.1 kHz and goes on
// to 48 kHz does not make us take it twice.
constexpr double kReserveRate = 48000.0;

constexpr long kPieceFrames = 64;
constexpr double kDelaySeconds = 2.0;
constexpr float kRumbleHz = 32.0f;

struct DelayLineShape {
    double lengthRatio;
    double initialPosition;
};
constexpr std::array<DelayLineShape, 6> kDelayShapes{{
    {1.0, 0.0},
    {0.63, 0.27},
    {0.41, 0.4},
    {1.0, 0.3},
    {0.76, 0.62},
    {0.54, 0.87},
}};

int delayLineLength(const DelayLineShape& shape, double sampleRate) {
    const double longest = static_cast<double>(static_cast<int>(kDelaySeconds * sampleRate));
    return static_cast<int>(longest * shape.lengthRatio);
}

// Beats-per-minute times seconds of each entry of the tempo menu, "1/16" to "16/4"; 0 stands for
// free time.
constexpr std::array<double, 10> kTempoMenu{0.0,   15.0,  30.0,  45.0,  60.0,
                                            120.0, 180.0, 240.0, 480.0, 960.0};

double tempoDivisor(float selector) {
    if (!(selector >= 0.0f && selector < static_cast<float>(kTempoMenu.size()))) return 0.0;
    return kTempoMenu[static_cast<std::size_t>(selector)];
}

}  // namespace

CNoravaFX::CNoravaFX() = default;

void CNoravaFX::setSampleRate(double sampleRate) {
    sampleRate_ = clampOr(sampleRate, kLowestSampleRate, kHighestSampleRate, kReserveRate);
    reserveLines();
    chorus_.setSampleRate(sampleRate_);
    reverb_.setSampleRate(static_cast<float>(sampleRate_));
    reverb_.setParameter(fxReverb::kHighDamping, 1.0f);
    reverb_.setParameter(fxReverb::kDiffusion, 1.0f);
    resonator_.setSampleRate(sampleRate_);
    for (std::size_t i = 0; i < delayLines_.size(); ++i) {
        const DelayLineShape& shape = kDelayShapes[i];
        delayLines_[i].setLength(delayLineLength(shape, sampleRate_), shape.initialPosition);
    }
    appliedTempo_ = 0.0;
    highPass_.Set(kRumbleHz, 1.0f, static_cast<float>(sampleRate_));
    reset();
}

// All long lines lie in one piece of memory, taken anew only for a higher rate than any before.
void CNoravaFX::reserveLines() {
    if (sampleRate_ <= reservedRate_) return;
    reservedRate_ = std::max(sampleRate_, kReserveRate);
    const auto reverbRate = static_cast<float>(reservedRate_);
    std::size_t bytes = CResonator::bytesFor(reservedRate_) + fxReverb::bytesFor(reverbRate);
    for (const DelayLineShape& shape : kDelayShapes) {
        bytes += CTapeDelay::bytesFor(delayLineLength(shape, reservedRate_));
    }
    LineMemory memory(bytes);
    resonator_.reserve(reservedRate_, memory);
    reverb_.reserve(reverbRate, memory);
    for (std::size_t i = 0; i < delayLines_.size(); ++i) {
        delayLines_[i].reserve(delayLineLength(kDelayShapes[i], reservedRate_), memory);
    }
}

void CNoravaFX::resetDelayLines() {
    for (CTapeDelay& line : delayLines_)
        line.reset();
}

void CNoravaFX::reset() {
    highPass_.Reset();
    chorus_.reset();
    reverb_.suspend();
    resonator_.reset();
    resetDelayLines();
}

void CNoravaFX::setTempo(double bpm) {
    if (std::isfinite(bpm) && bpm > 0.0) tempo_ = bpm;
}

void CNoravaFX::process(float* inL, float* inR, float* outL, float* outR, long frames) {
    if (sampleRate_ > 0.0) {
        highPass_.process(inL, inR, frames);
        if (reverbResetRequested_) reverb_.suspend();
        if (delayResetRequested_) resetDelayLines();
        reverbResetRequested_ = false;
        delayResetRequested_ = false;

        resonator_.process(inL, inR, frames);
        chorus_.process(inL, inR, frames);
        if (reverbOn_) {
            float* buffers[2] = {inL, inR};
            reverb_.processReplacing(buffers, buffers, static_cast<int>(frames));
        }
        if (delayOn_) {
            updateDelayLines();
            processDelay(inL, inR, frames);
        }
    }
    if (outL != inL) std::copy_n(inL, frames, outL);
    if (outR != inR) std::copy_n(inR, frames, outR);
}

// Sets the lines up again only if a setting has changed.
void CNoravaFX::updateDelayLines() {
    if (delay == appliedDelay_ && tempo_ == appliedTempo_) return;
    applyDelaySettings();
    appliedDelay_ = delay;
    appliedTempo_ = tempo_;
}

void CNoravaFX::applyDelaySettings() {
    const auto square = [](double x) { return x * x; };
    const auto cleaned = [](float knob) {
        return static_cast<double>(clampOr(knob, 0.0f, 1.0f, 0.0f));
    };
    const double speedHz = 20.0 * square(cleaned(delay.modSpeed));
    const double depth = square(square(cleaned(delay.modDepth)));
    const double feedback = -0.99 * square(cleaned(delay.feedback));
    const double blur = cleaned(delay.blur);
    const double wet = square(cleaned(delay.wet));
    const std::array<double, kDelaySeries> wets{wet, wet * blur, wet * square(blur)};

    // A line of two seconds is 1 / 0.5 of a second long, so with a tempo the first lines delay by
    // divisor / tempo.
    const double divisor = tempoDivisor(delay.tempoSelector);
    const double fraction =
        divisor != 0.0 ? 0.5 * divisor / tempo_ : 0.01 + square(cleaned(delay.time));

    for (std::size_t i = 0; i < delayLines_.size(); ++i) {
        CTapeDelay& line = delayLines_[i];
        line.setSpeed(i % 2 == 1 ? 1.1 * speedHz : speedHz, sampleRate_);
        line.setDelay(fraction);
        line.setFdbk(feedback);
        line.setDepth(depth);
        line.setWet(wets[i % kDelaySeries]);
    }
}

// Each channel runs through its three lines in series, each adding to what goes on; left and right
// side by side.
void CNoravaFX::processDelay(float* left, float* right, long frames) {
    v128 mix[kPieceFrames];
    v128 echo[kPieceFrames];
    for (long done = 0; done < frames; done += kPieceFrames) {
        const int n = static_cast<int>(std::min(frames - done, kPieceFrames));
        for (int i = 0; i < n; ++i)
            mix[i] = v128{left[done + i], right[done + i]};
        for (std::size_t line = 0; line < kDelaySeries; ++line) {
            delayPairs_[line].process(delayLines_[line], delayLines_[line + kDelaySeries], mix,
                                      echo, n);
            for (int i = 0; i < n; ++i)
                mix[i] = mix[i] + echo[i];
        }
        for (int i = 0; i < n; ++i) {
            left[done + i] = mix[i][0];
            right[done + i] = mix[i][1];
        }
    }
}

}  // namespace norava
