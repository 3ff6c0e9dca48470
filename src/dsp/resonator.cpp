#include "dsp/resonator.h"

#include <cmath>

#include "dsp/numbers.h"

namespace norava {

namespace {

constexpr double kLinesPerSecond = 10.0;  // a line is a tenth of a second long
constexpr double kSecondLineRatio = 1.05;
constexpr float kDamping = 0.5f;
constexpr double kHighestFeedback = 0.9999;
constexpr float kRumbleHz = 32.0f;
constexpr float kNearGain = 1.25f;
constexpr float kFarGain = 0.75f;

long lineLength(double sampleRate) {
    return static_cast<long>(sampleRate / kLinesPerSecond);
}

bool isBand(long band) {
    return band >= 0 && band < CResonator::kBands;
}

}  // namespace

CResonator::CResonator() {
    for (long band = 0; band < kBands; ++band) {
        setBandFreq(band, 0.0f);
        setBandFdbk(band, 0.0f);
    }
}

void CResonator::setSampleRate(double sampleRate, double reserveRate) {
    for (Band& band : bands_) {
        band.first.setLength(lineLength(sampleRate), lineLength(reserveRate));
        band.second.setLength(lineLength(sampleRate), lineLength(reserveRate));
    }
    hasLines_ = true;
    leftHighPass_.Set(kRumbleHz, 1.0f, static_cast<float>(sampleRate));
    rightHighPass_.Set(kRumbleHz, 1.0f, static_cast<float>(sampleRate));
}

void CResonator::reset() {
    for (Band& band : bands_) {
        band.first.reset();
        band.second.reset();
    }
    leftHighPass_.Reset();
    rightHighPass_.Reset();
}

void CResonator::setBandFreq(long band, float value) {
    if (!isBand(band)) return;
    const auto v = static_cast<double>(clampOr(value, 0.0f, 1.0f, 0.0f));
    // The exponent is a single-precision 0.1.
    const double power = std::pow(v, static_cast<double>(0.1f));
    bands_[static_cast<std::size_t>(band)].delay = static_cast<float>(1.0 - power);
}

void CResonator::setBandFdbk(long band, float value) {
    if (!isBand(band)) return;
    const auto v = static_cast<double>(clampOr(value, 0.0f, 1.0f, 0.0f));
    bands_[static_cast<std::size_t>(band)].feedback =
        static_cast<float>(std::sqrt(v) * kHighestFeedback);
}

void CResonator::setBandOn(long band, float value) {
    if (!isBand(band)) return;
    Band& b = bands_[static_cast<std::size_t>(band)];
    b.on = value != 0.0f;
    if (b.on && hasLines_) {
        b.first.reset();
        b.second.reset();
    }
}

void CResonator::process(float* left, float* right, long frames) {
    if (!hasLines_) return;
    for (long i = 0; i < frames; ++i) {
        const float in = left[i] + right[i];
        float outLeft = 0.0f;
        float outRight = 0.0f;
        for (int k = 0; k < kBands; ++k) {
            Band& band = bands_[static_cast<std::size_t>(k)];
            if (!band.on) continue;
            const auto delay = static_cast<double>(band.delay);
            band.first.setDelay(delay);
            band.second.setDelay(delay * kSecondLineRatio);
            for (CStringDelay* line : {&band.first, &band.second}) {
                line->setFdbk(static_cast<double>(band.feedback));
                line->damping = kDamping;
            }
            const float y = band.second.GetFrame(-band.first.GetFrame(in));
            const bool leansRight = k % 2 == 0;
            outLeft += (leansRight ? kFarGain : kNearGain) * y;
            outRight += (leansRight ? kNearGain : kFarGain) * y;
        }
        left[i] += leftHighPass_.GetFrame(outLeft);
        right[i] += rightHighPass_.GetFrame(outRight);
    }
}

}  // namespace norava
