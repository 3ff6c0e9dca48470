#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <span>

#include "framework/text_copy.h"
#include "parameters/parameter_table.h"
#include "synth/norava_synth.h"
#include "synth/state_block.h"
#include "target.h"

// What targets that load states compare with.

namespace norava::fuzz {

using StateBytes = std::array<char, kStateSize>;
inline constexpr std::size_t kValuesEnd = kStateSize - kStateNameSize;

// Every parameter at its default, the program called "base".
inline StateBytes BaseState() {
    InstrumentState state;
    for (const Parameter& parameter : kParameters)
        state.values[static_cast<std::size_t>(parameter.index)] = parameter.defaultValue;
    NameState(state, "base");
    StateBytes bytes;
    WriteStateBlock(state, bytes.data());
    return bytes;
}

// Whether an instrument takes this as a state.
inline bool IsStateBlock(std::span<const char> block) {
    constexpr char kMagic[] = {'1', 'q', 'z', 'W'};
    return block.size() >= sizeof kMagic && std::equal(kMagic, kMagic + 4, block.begin());
}

// What an instrument with the state `before` saves after it has loaded `block`: the values that are
// there, three bytes being enough for the last one, and the name when all of it is there.
inline StateBytes StateAfter(StateBytes before, std::span<const char> block) {
    if (!IsStateBlock(block)) return before;
    std::size_t end = std::min(block.size(), kValuesEnd);
    if (end % 4 == 3)
        before[end] = 0;
    else
        end -= end % 4;
    std::copy_n(block.begin(), end, before.begin());
    if (block.size() < kStateSize) return before;
    const std::span<char> name = std::span(before).subspan(kValuesEnd);
    std::ranges::fill(name, '\0');
    CopyText(name, {block.data() + kValuesEnd, kStateNameSize});
    return before;
}

// An instrument that holds the base state before each load.
class BaseInstrument {
  public:
    BaseInstrument() {
        synth.Reset(48000.0);
        Restore();
    }
    void Restore() { Require(synth.LoadState(base.data(), kStateSize), "the base is taken"); }
    StateBytes Save() {
        StateBytes saved;
        Require(synth.SaveState(saved.data()) == kStateSize, "a state has one size");
        return saved;
    }

    CNoravaSynth synth;
    const StateBytes base = BaseState();
};

// For what is done with one input in so many: chosen by its content, so that it happens again.
inline bool IsOneOf(unsigned count, std::span<const char> input) {
    std::uint64_t hash = input.size();
    for (std::size_t i = 0; i < input.size(); i += sizeof hash) {
        std::uint64_t word = 0;
        std::memcpy(&word, input.data() + i, std::min(sizeof word, input.size() - i));
        hash = (hash ^ word) * 0x9E3779B97F4A7C15u;
        hash ^= hash >> 29;
    }
    return hash % count == 0;
}

}  // namespace norava::fuzz
