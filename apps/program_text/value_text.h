#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "parameters/parameter.h"

// Values of parameters as people write them: "0.25", "on", an item of the parameter's menu.

namespace norava {

// 1, or the last item of a menu.
float HighestValue(const Parameter& parameter);

// The shortest text that gives back the same bits. A value that the parameter's control cannot
// take (beyond its range, not a number) is written as "raw 0x7fc00000", its bits.
std::string FormatValue(const Parameter& parameter, float value);

// The item of a menu that the text names, in any case.
std::optional<float> FindItem(const Parameter& parameter, std::string_view text);
std::string ItemsOf(const Parameter& parameter);  // with commas between them

// Throws BadInput for what is no value of this parameter.
float ParseValue(const Parameter& parameter, std::string_view text);

}  // namespace norava
