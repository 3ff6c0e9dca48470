#include "dsp/iir_filters.h"

#include <cmath>

namespace norava {

namespace {

// A coefficient that cannot be used (q and frequency both 0, or nonsense from outside) counts as
// none.
float usable(float coefficient) {
    return std::isfinite(coefficient) ? flushTiny(coefficient) : 0.0f;
}

struct Angle {
    float sine;
    float cosine;
};

Angle angleOf(const IirSettings& settings) {
    const auto w = static_cast<float>(static_cast<double>(settings.frequency) * (2.0 * kPi) /
                                      static_cast<double>(settings.sampleRate));
    return {static_cast<float>(std::sin(static_cast<double>(w))),
            static_cast<float>(std::cos(static_cast<double>(w)))};
}

// High- and low-pass differ in the input gain only: its numerator is 1 + c or 1 - c.
IirCoefficients passCoefficients(Angle angle, float q, float numerator) {
    const auto s = static_cast<double>(angle.sine);
    const auto c = static_cast<double>(angle.cosine);
    const auto qd = static_cast<double>(q);
    return {usable(numerator / (2.0f + angle.sine / q)),
            usable(static_cast<float>(-2.0 * qd * c / (qd + s))),
            usable((q - angle.sine) / (q + angle.sine))};
}

}  // namespace

void CFilterIIR_HP::Set(float frequency, float q, float sampleRate) {
    const IirSettings wanted{frequency, q, sampleRate};
    if (wanted == settings_) return;
    settings_ = wanted;
    const Angle angle = angleOf(settings_);
    coefficients_ = passCoefficients(angle, q, 1.0f + angle.cosine);
}

void CFilterIIR_LP::Set(float frequency, float q, float sampleRate) {
    const IirSettings wanted{frequency, q, sampleRate};
    if (wanted == settings_) return;
    settings_ = wanted;
    const Angle angle = angleOf(settings_);
    coefficients_ = passCoefficients(angle, q, 1.0f - angle.cosine);
}

void CFilterIIR_BP::Set(float frequency, float q, float sampleRate) {
    const IirSettings wanted{frequency, q, sampleRate};
    if (wanted == settings_) return;
    settings_ = wanted;
    const double w = static_cast<double>(frequency) * (2.0 * kPi) / static_cast<double>(sampleRate);
    const double s = std::sin(w);
    const double c = std::cos(w);
    const double a = s / (2.0 * static_cast<double>(q));
    coefficients_ = {usable(static_cast<float>(s / 2.0 / (1.0 + a))),
                     usable(static_cast<float>(2.0 * c / (1.0 + a))),
                     usable(static_cast<float>((1.0 - a) / (1.0 + a)))};
}

}  // namespace norava
