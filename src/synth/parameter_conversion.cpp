#include "synth/parameter_conversion.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

namespace norava {

namespace {

constexpr int kMostCents = 99;
constexpr float kPositionSteps = 6.0f;
constexpr double kMiddlePosition = 0.5;

double WholePower(double value, int exponent) {
    double power = 1.0;
    for (int i = 0; i < exponent; ++i)
        power *= value;
    return power;
}

// The position of a menu item, or kNoItem.
int MenuItem(const Parameter& parameter, double value) {
    const bool inside = value > -1.0 && value < static_cast<double>(parameter.items.size());
    return inside ? static_cast<int>(value) : kNoItem;
}

// The product is taken in single precision: so k / 6, which no float holds exactly, still reaches
// position k.
double OctaveKnob(float value) {
    const float position = value * kPositionSteps;
    const bool inside = position > -1.0f && position < kPositionSteps + 1.0f;
    return inside ? std::clamp(static_cast<double>(value), 0.0, 1.0) : kMiddlePosition;
}

}  // namespace

bool IsOn(float value) {
    return (std::bit_cast<std::uint32_t>(value) & 0x7fffffffu) != 0;
}

int paramToInt(float value, int low, int high) {
    const double scaled = static_cast<double>(value) * (high - low) + low;
    // The comparison is false for a NaN, which no conversion to an integer may see.
    return scaled > low ? static_cast<int>(std::min(scaled, static_cast<double>(high))) : low;
}

double EngineValue(const Parameter& parameter, float raw) {
    const Curve& curve = parameter.curve;
    const float value = std::isnan(raw) ? parameter.defaultValue : raw;
    const double v = std::clamp(static_cast<double>(value), 0.0, 1.0);
    switch (curve.shape) {
        case CurveShape::power:
            return curve.offset + curve.scale * WholePower(v, curve.exponent);
        case CurveShape::squareRoot:
            return std::sqrt(v);
        case CurveShape::decibels:
            return std::pow(10.0, (curve.offset + curve.scale * v) / 10.0);
        case CurveShape::steps:
            return paramToInt(static_cast<float>(v), -kMostCents, kMostCents) * curve.scale;
        case CurveShape::onOff:
            return IsOn(raw) ? 1.0 : 0.0;
        case CurveShape::menu: {
            const int item = MenuItem(parameter, static_cast<double>(value));
            return item == kNoItem ? static_cast<double>(parameter.defaultValue) : item;
        }
        case CurveShape::routing:
            return MenuItem(parameter, static_cast<double>(value));
        case CurveShape::positions:
            return OctaveKnob(value);
        case CurveShape::unused:
            break;
    }
    return 0.0;
}

}  // namespace norava
