#pragma once

#include <span>

namespace norava {

// A parameter's value as the panel shows it beside a moving knob: decibels, cents, seconds, hertz,
// octaves. False, with `text` untouched, for parameters whose host text serves. `text` is cut and
// terminated; the decimal point is a '.' in every locale.
bool FormatPanelValue(int index, float value, std::span<char> text);

}  // namespace norava
