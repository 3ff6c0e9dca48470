#include "fx/chorus.h"

#include <algorithm>

namespace norava {

namespace {

constexpr long kPieceFrames = 64;
constexpr double kBaseSeconds = 0.02;

// The lines differ in length, start and speed, so that the three copies never line up.
struct LineShape {
    double lengthRatio;
    double initialPosition;
    double speedRatio;
};
constexpr std::array<LineShape, 3> kShapes{{
    {1.1, 0.0, 0.896},
    {0.854, 0.467, 1.0},
    {1.0, 0.778, 0.689},
}};

int lineLength(const LineShape& shape, double sampleRate) {
    return static_cast<int>(sampleRate * kBaseSeconds * shape.lengthRatio);
}

}  // namespace

void CChorus::setSampleRate(double sampleRate) {
    sampleRate_ = sampleRate;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const LineShape& shape = kShapes[i];
        lines_[i].setLength(lineLength(shape, sampleRate), shape.initialPosition);
    }
    hasLines_ = true;
    setWet(wetSetting_);
    setRate(rateSetting_);
    setDelay(delaySetting_);
    reset();
}

void CChorus::setRate(float rate) {
    rateSetting_ = rate;
    if (!hasLines_) return;
    const double hz = 0.1 + 5.0 * static_cast<double>(rate);
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        lines_[i].setSpeed(kShapes[i].speedRatio * hz, sampleRate_);
    }
}

void CChorus::setDelay(float depth) {
    delaySetting_ = depth;
    if (!hasLines_) return;
    const auto d = static_cast<double>(depth);
    for (CTapeDelay& line : lines_)
        line.setDepth(d * d * d);
}

void CChorus::setWet(float gain) {
    wetSetting_ = -gain;
    if (!hasLines_) return;
    for (CTapeDelay& line : lines_)
        line.setWet(static_cast<double>(gain));
}

void CChorus::setEnable(float on) {
    enabled_ = on != 0.0f;
}

void CChorus::reset() {
    if (!hasLines_) return;
    for (CTapeDelay& line : lines_)
        line.reset();
}

void CChorus::process(float* left, float* right, long frames) {
    if (!enabled_ || !hasLines_) return;
    for (long done = 0; done < frames; done += kPieceFrames) {
        const int n = static_cast<int>(std::min(frames - done, kPieceFrames));
        processPiece(left + done, right + done, n);
    }
}

void CChorus::processPiece(float* left, float* right, int frames) {
    v128 outer[kPieceFrames];  // left and centre line
    v128 other[kPieceFrames];  // right line
    int filled = 0;            // a piece has a frame at least
    do
        outer[filled] = other[filled] = v128_Set(left[filled] + right[filled]);
    while (++filled < frames);
    leftAndCentre_.process(lines_[0], lines_[1], outer, outer, frames);
    right_.process(lines_[2], lines_[2], other, other, frames);
    for (int i = 0; i < frames; ++i) {
        left[i] = left[i] + outer[i][0] + outer[i][1];
        right[i] = right[i] + other[i][0] + outer[i][1];
    }
}

}  // namespace norava
