#pragma once

#include <cstdint>
#include <vector>

#include "tune/score.h"

namespace norava {

// The score as a Standard MIDI File of format 0. A key that is struck while it sounds is let go
// first, whichever voice held it.
std::vector<std::uint8_t> WriteMidiFile(const Score& score);

}  // namespace norava
