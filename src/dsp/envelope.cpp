#include "dsp/envelope.h"

#include <cmath>

namespace norava {

namespace {

constexpr double kShortestSegmentSeconds = 0.001;

double segmentRate(double seconds, double frameRate) {
    const double raised = seconds > kShortestSegmentSeconds ? seconds : kShortestSegmentSeconds;
    return 1.0 / (frameRate * raised);
}

}  // namespace

void CEgADSR::start(double baseLevel, double attackTime, double decayTime, double sustainLevel,
                    double releaseTime, double attackCurve, double decayCurve, double releaseCurve,
                    double frameRate, double peakLevel) {
    peak_ = peakLevel;
    base_ = baseLevel * peak_;
    sustain_ = sustainLevel * peak_;
    decayRate_ = segmentRate(decayTime, frameRate);
    decayCurve_ = decayCurve;
    releaseRate_ = segmentRate(releaseTime, frameRate);
    releaseCurve_ = releaseCurve;
    const double from = finished_ ? base_ : output_;
    finished_ = false;
    enter(Stage::attack, {from, peak_, segmentRate(attackTime, frameRate), attackCurve});
}

void CEgADSR::enter(Stage stage, const Segment& segment) {
    stage_ = stage;
    segment_ = segment;
    position_ = 0.0;
}

void CEgADSR::endSegment() {
    output_ = segment_.to;
    if (stage_ == Stage::attack) {
        enter(Stage::decaySustain, {peak_, sustain_, decayRate_, decayCurve_});
        return;
    }
    position_ = 1.0;
    if (stage_ == Stage::release) {
        finished_ = true;
    } else if (sustain_ == 0.0 && base_ == 0.0) {
        // Nothing is left to hold, and nothing to release.
        enter(Stage::release, {output_, base_, releaseRate_, releaseCurve_});
        position_ = 1.0;
        finished_ = true;
    }
}

double CEgADSR::bend() const {
    return 1.0 - (1.0 - position_) * std::pow(10.0, position_ * segment_.curve);
}

void CEgADSR::release() {
    if (stage_ == Stage::release) return;
    enter(Stage::release, {output_, base_, releaseRate_, releaseCurve_});
}

}  // namespace norava
