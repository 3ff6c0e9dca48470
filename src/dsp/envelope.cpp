#include "dsp/envelope.h"

#include <cmath>

namespace norava {

namespace {

constexpr double kShortestSegmentSeconds = 0.001;

double segmentRate(double seconds, double frameRate) {
    const double raised = seconds > kShortestSegmentSeconds ? seconds : kShortestSegmentSeconds;
    return 1.0 / (frameRate * raised);
}

double getLine(double t, double from, double to, double curve) {
    if (curve == 0.0) return from + (to - from) * t;
    return from + (to - from) * (1.0 - (1.0 - t) * std::pow(10.0, t * curve));
}

}  // namespace

void CEgADSR::start(double baseLevel, double attackTime, double decayTime, double sustainLevel,
                    double releaseTime, double attackCurve, double decayCurve, double releaseCurve,
                    double frameRate, double peakLevel) {
    peak_ = peakLevel;
    base_ = baseLevel * peak_;
    attackStart_ = finished_ ? base_ : output_;
    finished_ = false;
    sustain_ = sustainLevel * peak_;
    attackCurve_ = attackCurve;
    decayCurve_ = decayCurve;
    releaseCurve_ = releaseCurve;
    attackRate_ = segmentRate(attackTime, frameRate);
    decayRate_ = segmentRate(decayTime, frameRate);
    releaseRate_ = segmentRate(releaseTime, frameRate);
    stage_ = Stage::attack;
    position_ = 0.0;
}

float CEgADSR::GetFrame(long frames) {
    const double count = static_cast<double>(frames);
    switch (stage_) {
        case Stage::attack:
            position_ += attackRate_ * count;
            if (position_ >= 1.0) {
                stage_ = Stage::decaySustain;
                position_ = 0.0;
                output_ = peak_;
            } else {
                output_ = getLine(position_, attackStart_, peak_, attackCurve_);
            }
            break;
        case Stage::decaySustain:
            position_ += decayRate_ * count;
            if (position_ >= 1.0) {
                // Nothing is left to hold, and nothing to release.
                if (sustain_ == 0.0 && base_ == 0.0) {
                    stage_ = Stage::release;
                    finished_ = true;
                }
                position_ = 1.0;
                output_ = sustain_;
            } else {
                output_ = getLine(position_, peak_, sustain_, decayCurve_);
            }
            break;
        case Stage::release:
            position_ += releaseRate_ * count;
            if (position_ >= 1.0) {
                finished_ = true;
                position_ = 1.0;
                output_ = base_;
            } else {
                output_ = getLine(position_, releaseStart_, base_, releaseCurve_);
            }
            break;
    }
    if (output_ < 0.0) output_ = 0.0;
    return static_cast<float>(output_);
}

void CEgADSR::release() {
    if (stage_ == Stage::release) return;
    releaseStart_ = output_;
    stage_ = Stage::release;
    position_ = 0.0;
}

}  // namespace norava
