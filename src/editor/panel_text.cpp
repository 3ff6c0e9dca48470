#include "editor/panel_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "framework/text_copy.h"
#include "parameters/parameter_index.h"
#include "parameters/parameter_table.h"

namespace norava {

namespace {

constexpr double kDelayLineSeconds = 2.0;      // the longest line of the tape delay
constexpr double kResonatorLineSeconds = 0.1;  // a string of a resonator band
constexpr double kLongestFraction = 0.99;      // of a line that a delay can take
// A resonator string is never shorter than five samples; at this rate:
constexpr double kHighestResonatorHertz = 48000.0 / 5.0;

std::string Fixed(double number, int decimals) {
    std::array<char, 64> text{};
    CopyNumber(text, number, decimals);
    return text.data();
}

// Three digits are what an ear can use.
int DecimalsFor(double number) {
    if (number < 10.0) return 2;
    return number < 100.0 ? 1 : 0;
}

std::string Seconds(double seconds) {
    if (seconds < 1.0) return Fixed(seconds * 1000.0, seconds < 0.1 ? 1 : 0) + " ms";
    return Fixed(seconds, DecimalsFor(seconds)) + " s";
}

std::string Hertz(double hertz) {
    if (hertz < 1000.0) return Fixed(hertz, DecimalsFor(hertz)) + " Hz";
    return Fixed(hertz / 1000.0, DecimalsFor(hertz / 1000.0)) + " kHz";
}

std::string Signed(int number, const char* unit) {
    std::string text = number > 0 ? "+" : "";
    text += std::to_string(number);
    return text += unit;
}

// For the parameters whose row tells the quantity itself.
double TakeCurve(int index, double v) {
    const Curve& curve = GetParameter(index).curve;
    return curve.offset + curve.scale * std::pow(v, curve.exponent);
}

double ResonatorHertz(double v) {
    const double fraction = std::min(1.0 - std::pow(v, 0.1), kLongestFraction);
    const double seconds = fraction * kResonatorLineSeconds;
    return seconds * kHighestResonatorHertz < 1.0 ? kHighestResonatorHertz : 1.0 / seconds;
}

std::string PanelValue(int index, double v) {
    if (index >= param::kResonatorFrequency && index < param::kResonatorFeedback)
        return Hertz(ResonatorHertz(v));
    switch (index) {
        case param::kMasterLevel:
            return Fixed(96.0 * v - 36.0, 1) + " dB";
        case param::kTune:
            return Signed(static_cast<int>(v * 198.0 - 99.0), " ct");
        case param::kOctave:
            return Signed(static_cast<int>(static_cast<float>(v) * 6.0f) - 3, " oct");
        case param::kAmpAttack:
        case param::kAmpDecay:
        case param::kAmpRelease:
        case param::kEgAttack:
        case param::kEgDecay:
        case param::kEgRelease:
            return Seconds(TakeCurve(index, v));
        case param::kHiCutAttack:
            return Seconds(0.5 * v * v);
        case param::kHiCutDecay:
            return Seconds(0.001 + 3.0 * std::pow(v, 3));
        case param::kDelayTime:
            return Seconds(kDelayLineSeconds * std::min(0.01 + v * v, kLongestFraction));
        case param::kLoCutCutoff:
            return Hertz(std::exp2(9.3 * v + 5.0));
        case param::kLfoRate:
            return Hertz(TakeCurve(index, v));
        case param::kDelayModSpeed:
            return Hertz(20.0 * v * v);
        case param::kChorusRate:
            return Hertz(0.1 + 5.0 * v);
        default:
            return {};
    }
}

}  // namespace

bool FormatPanelValue(int index, float value, std::span<char> text) {
    const float known =
        std::isnan(value) && IsParameter(index) ? GetParameter(index).defaultValue : value;
    const std::string shown = PanelValue(index, std::clamp(static_cast<double>(known), 0.0, 1.0));
    if (shown.empty()) return false;
    CopyText(text, shown);
    return true;
}

}  // namespace norava
