#pragma once

#include <array>
#include <cstdint>

// The modulation matrix of a key voice: eight slots, each leading one source to one destination.

namespace norava {

inline constexpr int kModulationSlots = 8;

enum class ModulationSource : int {
    none = 0,
    envelope = 1,
    lfo = 2,
    modWheel = 3,
    pitchWheel = 4,
    aftertouch = 5,
    velocity = 6,
    keyNumber = 7,
    release = 8,
};

enum class ModulationDestination : int {
    lfoAmplitude = 0,
    level = 1,
    pan = 2,
    pitch = 3,
    loCutCutoff = 4,
    hiCutCutoff = 5,
    hiCutAttack = 6,
    hiCutDecay = 7,
    string1Decay = 8,
    string2Decay = 9,
    bothStringsDecay = 10,
    string1Damp = 11,
    string2Damp = 12,
    bothStringsDamp = 13,
    noiseRate = 14,
};
inline constexpr int kModulationDestinations = 15;

// One slot of the matrix, as the voices use it. A source outside the menu adds 0 but still counts
// as a source; a destination outside the menu reaches nothing.
struct ModulationSlot {
    int source = 0;
    float amount = 0.0f;  // the knob squared, negated when the slot is inverted: -1..1
    int destination = 0;
};

using ModulationMatrix = std::array<ModulationSlot, kModulationSlots>;

// The matrix, decoded once per change of settings: which slots reach a destination, and which
// destinations are reached by a source that moves by itself between two control blocks.
struct ModulationPlan {
    // SoundSettings::revision that this was decoded from; 0 never occurs there.
    std::uint32_t revision = 0;
    // By destination; bit s: slot s has a source and leads here.
    std::array<std::uint8_t, kModulationDestinations> slots{};
    // Bit d: the envelope or the LFO leads to destination d.
    std::uint32_t moving = 0;

    void decode(const ModulationMatrix& matrix, std::uint32_t matrixRevision);
    bool moves(ModulationDestination d) const { return (moving >> static_cast<int>(d) & 1u) != 0; }
};

}  // namespace norava
