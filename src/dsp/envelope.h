#pragma once

#include <cstdint>

namespace norava {

// Attack, decay/sustain and release in three segments, evaluated at control rate: each call of
// GetFrame advances by a number of frames and gives one value for all of them. A segment goes from
// one level to the next in a straight line, or bent by a curve amount:
//     level(t) = from + (to - from) * (1 - (1 - t) * 10^(t * curve)),  t = 0..1
// Audio thread only.
class CEgADSR {
  public:
    // Times in seconds (at least 1 ms each), levels relative to `peakLevel`, `frameRate` in frames
    // per second (> 0), curves 0 for a straight line, below 0 for a change that mostly happens
    // early. An envelope that still sounds rises from where it stands.
    void start(double baseLevel, double attackTime, double decayTime, double sustainLevel,
               double releaseTime, double attackCurve, double decayCurve, double releaseCurve,
               double frameRate, double peakLevel);

    // Advances by `frames` and returns the new value. What is left of a segment that ends within
    // these frames is dropped: the attack reaches exactly its peak at the end of a block, and the
    // decay starts with the next.
    float GetFrame(long frames) {
        position_ += segment_.rate * static_cast<double>(frames);
        if (position_ >= 1.0) [[unlikely]]
            endSegment();
        else
            output_ = level();
        if (output_ < 0.0) output_ = 0.0;
        return static_cast<float>(output_);
    }

    // Enters the release from the current value; does nothing in the release itself.
    void release();

    bool isFinished() const { return finished_; }
    // An envelope that has ended stands at its base: what starts twice in one block, or is let go
    // in the block in which it starts, goes on from there and not from a former note's level.
    void setFinished() {
        finished_ = true;
        output_ = base_;
    }

  private:
    enum class Stage : std::uint8_t { attack, decaySustain, release };

    struct Segment {
        double from = 0.0;
        double to = 0.0;
        double rate = 0.0;  // positions per frame
        double curve = 0.0;
    };

    void enter(Stage stage, const Segment& segment);
    void endSegment();
    double bend() const;
    // At the position within the segment.
    double level() const {
        const double t = segment_.curve == 0.0 ? position_ : bend();
        return segment_.from + (segment_.to - segment_.from) * t;
    }

    // What every control block needs stands side by side.
    Segment segment_;
    double position_ = 0.0;  // within the segment, 0..1
    double output_ = 0.0;
    Stage stage_ = Stage::attack;
    bool finished_ = true;

    double peak_ = 0.0;
    double base_ = 0.0;
    double sustain_ = 0.0;
    double decayRate_ = 0.0;
    double decayCurve_ = 0.0;
    double releaseRate_ = 0.0;
    double releaseCurve_ = 0.0;
};

}  // namespace norava
