#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace norava {

// How long a tick of a MIDI file lasts: a part of a quarter note, whose length follows the tempo,
// or a fixed time where the file counts film frames.
struct TickLength {
    int ticksPerQuarter = 0;      // 0 when the file counts frames
    double secondsPerTick = 0.0;  // 0 when the file counts quarters
};

// The outer structure of a Standard MIDI File. The spans point into the bytes that were taken
// apart and include the track's own eight-byte head.
struct MidiChunks {
    TickLength tickLength;
    std::vector<std::span<const std::uint8_t>> tracks;
};

// Takes a file of format 0 or 1 apart; chunks of unknown kinds are passed over, and so is
// whatever follows the last track. Throws BadInput for every other file and for one that ends
// before its chunks do.
MidiChunks SplitMidiChunks(std::span<const std::uint8_t> file);

}  // namespace norava
