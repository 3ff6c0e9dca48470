#pragma once

#include <span>

namespace norava {

// Writes the text that stands for a value of parameter `index`, whatever the value; cut to the
// buffer and terminated, the decimal point a '.' in every locale. An index outside the table reads
// as a percentage. Any thread.
void FormatParameterValue(int index, float value, std::span<char> text);

// Writes the parameter's unit, "%" for an index outside the table.
void FormatParameterUnit(int index, std::span<char> text);

}  // namespace norava
