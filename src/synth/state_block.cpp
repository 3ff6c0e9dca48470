#include "synth/state_block.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <span>

#include "framework/text_copy.h"

namespace norava {

static_assert(std::endian::native == std::endian::little && sizeof(float) == kStateValueSize);

namespace {

constexpr char kMagic[kStateMagicSize] = {'1', 'q', 'z', 'W'};
constexpr int kNameOffset = kStateMagicSize + kNumParameters * kStateValueSize;
constexpr int kShortestValue = 3;  // bytes; what is left of a value that is still taken as one

}  // namespace

void NameState(InstrumentState& state, std::string_view name) {
    state.hasName = true;
    CopyText(std::span(state.name).first(kStateNameSize), name);
}

void WriteStateBlock(const InstrumentState& state, char* block) {
    std::memset(block, 0, kStateSize);
    std::memcpy(block, kMagic, kStateMagicSize);
    std::memcpy(block + kStateMagicSize, state.values.data(), sizeof(state.values));
    // One byte of the field stays for the NUL.
    const auto end = std::find(state.name.begin(), state.name.begin() + kStateNameSize - 1, '\0');
    std::copy(state.name.begin(), end, block + kNameOffset);
}

bool ReadStateBlock(const char* data, int size, InstrumentState& state) {
    if (data == nullptr || size < kStateMagicSize) return false;
    if (std::memcmp(data, kMagic, kStateMagicSize) != 0) return false;

    state = {};
    const char* next = data + kStateMagicSize;
    int left = size - kStateMagicSize;
    while (state.numValues < kNumParameters && left >= kShortestValue) {
        const int bytes = std::min(left, kStateValueSize);
        float& value = state.values[static_cast<std::size_t>(state.numValues++)];
        std::memcpy(&value, next, static_cast<std::size_t>(bytes));
        next += bytes;
        left -= bytes;
    }
    state.hasName = state.numValues == kNumParameters && left >= kStateNameSize;
    if (state.hasName) std::memcpy(state.name.data(), next, kStateNameSize);
    return true;
}

}  // namespace norava
