#include "render/midi_chunks.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "render/bad_input.h"

namespace norava {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kChunkHeadBytes = 8;  // four letters and the length of what follows
constexpr std::size_t kHeaderBytes = 6;     // format, number of tracks, division
constexpr int kHighestFormat = 1;

std::size_t BigEndian(Bytes bytes) {
    std::size_t value = 0;
    for (const std::uint8_t byte : bytes)
        value = value << 8 | byte;
    return value;
}

bool HasLetters(Bytes chunk, std::string_view letters) {
    return std::equal(letters.begin(), letters.end(), chunk.begin(), chunk.begin() + 4,
                      [](char letter, std::uint8_t byte) { return letter == char(byte); });
}

// The chunk at the head of `rest`, its own head included.
Bytes FirstChunk(Bytes rest) {
    if (rest.size() < kChunkHeadBytes)
        throw BadInput("the file is truncated in the head of a chunk");
    const std::size_t length = kChunkHeadBytes + BigEndian(rest.subspan(4, 4));
    if (length > rest.size()) {
        throw BadInput("the file is truncated: a chunk lacks its last " +
                       std::to_string(length - rest.size()) + " bytes");
    }
    return rest.first(length);
}

// The division's two bytes are ticks per quarter, or, with the top bit set, the negated number of
// frames a second and the ticks of each frame.
TickLength ReadDivision(Bytes division) {
    TickLength result;
    if (division[0] < 0x80) {
        result.ticksPerQuarter = int(BigEndian(division));
        if (result.ticksPerQuarter == 0) throw BadInput("its time division is 0");
        return result;
    }
    const int framesPerSecond = 0x100 - division[0];
    constexpr std::array kFrameRates = {24, 25, 29, 30};
    if (std::find(kFrameRates.begin(), kFrameRates.end(), framesPerSecond) == kFrameRates.end() ||
        division[1] == 0) {
        throw BadInput("its time division counts impossible film frames");
    }
    // 29 stands for the 29.97 frames a second of colour television.
    const double rate = framesPerSecond == 29 ? 30000.0 / 1001.0 : double(framesPerSecond);
    result.secondsPerTick = 1.0 / (rate * division[1]);
    return result;
}

}  // namespace

MidiChunks SplitMidiChunks(Bytes file) {
    if (file.size() < 4 || !HasLetters(file, "MThd")) throw BadInput("this is not a MIDI file");
    const Bytes header = FirstChunk(file);
    if (header.size() < kChunkHeadBytes + kHeaderBytes) throw BadInput("its header is too short");

    const std::size_t format = BigEndian(header.subspan(8, 2));
    const std::size_t trackCount = BigEndian(header.subspan(10, 2));
    if (format > kHighestFormat) {
        throw BadInput("it has MIDI file format " + std::to_string(format) +
                       "; only formats 0 and 1 can be played");
    }
    MidiChunks result;
    result.tickLength = ReadDivision(header.subspan(12, 2));

    Bytes rest = file.subspan(header.size());
    while (result.tracks.size() < trackCount) {
        if (rest.empty()) {
            throw BadInput("the file is truncated: it has " + std::to_string(result.tracks.size()) +
                           " of " + std::to_string(trackCount) + " tracks");
        }
        const Bytes chunk = FirstChunk(rest);
        if (HasLetters(chunk, "MTrk")) result.tracks.push_back(chunk);
        rest = rest.subspan(chunk.size());
    }
    if (result.tracks.empty()) throw BadInput("it has no tracks");
    return result;
}

}  // namespace norava
