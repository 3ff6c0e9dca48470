#include "fx/chorus.h"

namespace norava {

namespace {

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

void CChorus::setSampleRate(double sampleRate, double reserveRate) {
    sampleRate_ = sampleRate;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const LineShape& shape = kShapes[i];
        lines_[i].setLength(lineLength(shape, sampleRate), shape.initialPosition,
                            lineLength(shape, reserveRate));
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
    for (long i = 0; i < frames; ++i) {
        const float mono = left[i] + right[i];
        const float a = lines_[0].GetFrame(mono);
        const float c = lines_[2].GetFrame(mono);
        const float b = lines_[1].GetFrame(mono);
        left[i] = left[i] + a + b;
        right[i] = right[i] + c + b;
    }
}

}  // namespace norava
