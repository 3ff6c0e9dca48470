#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace norava::test {

using Bytes = std::vector<std::uint8_t>;

inline Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

inline Bytes Chunk(std::string_view letters, const Bytes& content) {
    const auto high = std::uint8_t(content.size() >> 8), low = std::uint8_t(content.size() & 0xFF);
    return Bytes(letters.begin(), letters.end()) + Bytes{0, 0, high, low} + content;
}

inline Bytes Header(std::uint8_t format, std::uint8_t tracks, std::uint8_t divisionHigh = 0,
                    std::uint8_t divisionLow = 96) {
    return Chunk("MThd", {0, format, 0, tracks, divisionHigh, divisionLow});
}

inline Bytes Track(const Bytes& events) {
    return Chunk("MTrk", events + Bytes{0, 0xFF, 0x2F, 0});
}

// One track of 96 ticks a quarter.
inline Bytes OneTrackFile(const Bytes& events) {
    return Header(0, 1) + Track(events);
}

// Half a second of rest, then half a second of each key in turn.
inline Bytes ScaleFile(const Bytes& keys, std::uint8_t velocity = 80) {
    Bytes events = {96, 0xB0, 1, 0};
    for (const std::uint8_t key : keys) {
        events = events + Bytes{0, 0x90, key, velocity, 96, 0x80, key, 0};
    }
    return OneTrackFile(events);
}

}  // namespace norava::test
