#include "synth/parameter_text.h"

#include <algorithm>
#include <cmath>

#include "framework/text_copy.h"
#include "parameters/parameter_table.h"
#include "synth/parameter_conversion.h"

namespace norava {

namespace {

// value * 6 without its fraction, in the same precision as the voices take it.
int ShownPosition(float value) {
    constexpr float kLargest = 1.0e9f;
    const float shown = std::isnan(value) ? GetParameter(param::kOctave).defaultValue : value;
    return static_cast<int>(std::clamp(shown * 6.0f, -kLargest, kLargest));
}

}  // namespace

void FormatParameterValue(int index, float value, std::span<char> text) {
    const TextForm form = IsParameter(index) ? GetParameter(index).text : TextForm::percentTenths;
    const double v = static_cast<double>(value);
    switch (form) {
        case TextForm::percentTenths:
            CopyNumber(text, v * 100.0, 1);
            break;
        case TextForm::wholePercent:
            CopyNumber(text, v * 100.0, 0);
            break;
        case TextForm::offOn:
            CopyText(text, IsOn(value) ? "On" : "Off");
            break;
        case TextForm::chorusHertz:
            CopyNumber(text, 0.1 + v * 5.0, 0);
            break;
        case TextForm::position:
            CopyNumber(text, ShownPosition(value));
            break;
    }
}

void FormatParameterUnit(int index, std::span<char> text) {
    const bool hertz = IsParameter(index) && GetParameter(index).unit == Unit::hertz;
    CopyText(text, hertz ? "Hz" : "%");
}

}  // namespace norava
