#pragma once

#include <array>
#include <string_view>

#include "parameters/parameter_index.h"

// The whole sound of the instrument as a flat block of bytes: host chunk and content of program
// files. Numbers are little-endian.
//
//   offset 0    4 bytes    "1qzW"
//   offset 4    456 bytes  114 values, 32-bit floats as they are stored
//   offset 460  128 bytes  program name, NUL-terminated

namespace norava {

inline constexpr int kStateMagicSize = 4;
inline constexpr int kStateValueSize = 4;
inline constexpr int kStateNameSize = 128;
inline constexpr int kStateSize =
    kStateMagicSize + kNumParameters * kStateValueSize + kStateNameSize;
static_assert(kStateSize == 588);

struct InstrumentState {
    std::array<float, kNumParameters> values{};
    int numValues = 0;  // the leading values that are there
    bool hasName = false;
    std::array<char, kStateNameSize + 1> name{};  // always terminated
};

// Gives the state a name, cut to what its field holds.
void NameState(InstrumentState& state, std::string_view name);

// Writes kStateSize bytes, the same ones for the same state.
void WriteStateBlock(const InstrumentState& state, char* block);

// Reads a block of `size` bytes, never beyond them; false when it is no block of this instrument. A
// shorter block (an older or a truncated one) gives the values that it holds, a last one of 3 bytes
// with a zero as its fourth, and no name unless all of it is there.
[[nodiscard]] bool ReadStateBlock(const char* data, int size, InstrumentState& state);

}  // namespace norava
