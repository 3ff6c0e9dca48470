#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "parameters/parameter_index.h"

// One slot of the modulation matrix as a line says it: "velocity > hi-cut ctf 0.6", with a minus
// sign before the amount of an inverted slot.

namespace norava {

using MatrixSlot = std::span<float, kMatrixSlotSize>;             // source, amount, invert,
using ConstMatrixSlot = std::span<const float, kMatrixSlotSize>;  // destination

// Nothing for a slot with values that the panel's controls cannot show.
std::optional<std::string> FormatMatrixSlot(ConstMatrixSlot slot);

// Throws BadInput.
void ParseMatrixSlot(std::string_view text, MatrixSlot slot);

}  // namespace norava
