#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

// What a packed picture's pixels are expected to be, from those before them: shared by what packs
// and what unpacks. A pixel is a word of four bytes; sums and differences wrap in each byte.

namespace norava::packed {

// How a row's pixels are predicted. Rows come in stored order, the lowest first; outside the
// picture everything is 0.
enum class RowMode : uint8_t {
    gradient,  // the middle one of left, below and left + below - (left below)
    frame,     // the same place one frame before
    average,   // of left and below
    left,
};
inline constexpr int kRowModes = 4;
inline constexpr int kRowModeBits = 2;

inline constexpr uint32_t AddBytes(uint32_t a, uint32_t b) {
    return ((a & 0x7F7F7F7Fu) + (b & 0x7F7F7F7Fu)) ^ ((a ^ b) & 0x80808080u);
}

inline constexpr uint32_t SubtractBytes(uint32_t a, uint32_t b) {
    return ((a | 0x80808080u) - (b & 0x7F7F7F7Fu)) ^ ((a ^ ~b) & 0x80808080u);
}

inline uint32_t PredictGradient(uint32_t left, uint32_t below, uint32_t corner) {
    // The median edge detector of LOCO-I (Weinberger, Seroussi, Sapiro, 1996).
    uint32_t predicted = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        const int a = left >> shift & 0xFF, b = below >> shift & 0xFF, c = corner >> shift & 0xFF;
        const int middle = std::clamp(a + b - c, std::min(a, b), std::max(a, b));
        predicted |= static_cast<uint32_t>(middle) << shift;
    }
    return predicted;
}

inline constexpr uint32_t PredictAverage(uint32_t left, uint32_t below) {
    return (left & below) + (((left ^ below) & 0xFEFEFEFEu) >> 1);
}

// The pixel at `x` of a row; `below` is the row before or null, `earlier` the row one frame before
// (only for RowMode::frame).
template <RowMode mode>
inline uint32_t Predict(const uint32_t* row, const uint32_t* below, const uint32_t* earlier,
                        size_t x) {
    if constexpr (mode == RowMode::frame) return earlier[x];
    const uint32_t left = x > 0 ? row[x - 1] : 0;
    if constexpr (mode == RowMode::left) return left;
    const uint32_t under = below ? below[x] : 0;
    if constexpr (mode == RowMode::average) return PredictAverage(left, under);
    return PredictGradient(left, under, below && x > 0 ? below[x - 1] : 0);
}

// Differences are coded as green, red - green, blue - green, alpha: greys differ in one byte only.
struct Difference {
    uint8_t green, red, blue, alpha;
};

inline constexpr Difference SplitDifference(uint32_t word) {
    const auto red = static_cast<uint8_t>(word), green = static_cast<uint8_t>(word >> 8);
    return {green, static_cast<uint8_t>(red - green), static_cast<uint8_t>((word >> 16) - green),
            static_cast<uint8_t>(word >> 24)};
}

inline constexpr uint32_t JoinDifference(Difference d) {
    const uint32_t red = static_cast<uint8_t>(d.red + d.green);
    const uint32_t blue = static_cast<uint8_t>(d.blue + d.green);
    return red | uint32_t{d.green} << 8 | blue << 16 | uint32_t{d.alpha} << 24;
}

// Codes of the green byte go on with 16 more: 256 + k stands for a run of 2^k to 2^(k + 1) - 1
// pixels that are as predicted, its low k bits following.
inline constexpr int kByteCodes = 256;
inline constexpr int kRunCodes = 16;
inline constexpr int kGreenCodes = kByteCodes + kRunCodes;
inline constexpr int kChannels = 4;  // green, red, blue, alpha
inline constexpr int kMaxCodeBits = 12;

constexpr int CodesOf(int channel) {
    return channel == 0 ? kGreenCodes : kByteCodes;
}
// Lengths of all codes, four bits each, behind the header.
inline constexpr size_t kLengthBytes =
    static_cast<size_t>(kGreenCodes + (kChannels - 1) * kByteCodes) / 2;

// Header, all little-endian: 'N', 'P', scale, 1 with alpha or 0, logical width, logical height,
// stored rows of a frame (16 bits each; 0: no frames), 0, 0.
inline constexpr size_t kHeaderBytes = 12;

}  // namespace norava::packed
