#include "gui/pixel_rows.h"

#include <algorithm>
#include <cstring>

namespace norava::pixel_rows {

namespace {

constexpr uint32_t kAlphaMask = 0xFF000000u;
constexpr size_t kBytesPerWord = 4;

// Words blended at a time: their spread alphas stay in the fastest cache.
constexpr size_t kChunkWords = 64;

// 32 bytes a step suit every vector width in use.
constexpr size_t kLanes = 32;

uint32_t ScaledAlpha(uint32_t word, uint8_t opacity) {
    const uint32_t alpha = word >> 24;
    return opacity < 255 ? (alpha * opacity) >> 8 : alpha;
}

// The same byte in all four places.
constexpr uint32_t Spread(uint32_t byte) {
    const uint32_t pair = byte | byte << 8;
    return pair | pair << 16;
}

// All four bytes blended, each source byte with the alpha byte at its place.
void BlendBytes(uint8_t* __restrict result, const uint8_t* __restrict destination,
                const uint8_t* __restrict source, const uint8_t* __restrict alphas, size_t bytes) {
    for (size_t i = 0; i < bytes; ++i) {
        const auto fresh = static_cast<uint16_t>(source[i] * alphas[i]);
        const auto kept = static_cast<uint16_t>(destination[i] * (255 - alphas[i]));
        result[i] = static_cast<uint8_t>(static_cast<uint16_t>(fresh + kept) >> 8);
    }
}

void BlendChunk(uint32_t* blended, const uint32_t* destination, const uint32_t* source,
                const uint32_t* alphas, size_t count) {
    BlendBytes(reinterpret_cast<uint8_t*>(blended), reinterpret_cast<const uint8_t*>(destination),
               reinterpret_cast<const uint8_t*>(source), reinterpret_cast<const uint8_t*>(alphas),
               count * kBytesPerWord);
}

uint32_t WithAlphaOf(uint32_t kept, uint32_t color) {
    return (kept & kAlphaMask) | (color & ~kAlphaMask);
}

}  // namespace

void Fill(uint32_t* destination, uint32_t word, size_t count) {
    std::fill_n(destination, count, word);
}

void BlendColor(uint32_t* destination, CColor color, size_t count) {
    // For the alpha byte the pair is (256, 0): it stays as it is.
    const int alpha = color.alpha;
    const int kept[kBytesPerWord] = {255 - alpha, 255 - alpha, 255 - alpha, 256};
    const int added[kBytesPerWord] = {color.red * alpha, color.green * alpha, color.blue * alpha,
                                      0};
    uint16_t keptLanes[kLanes];
    uint16_t addedLanes[kLanes];
    for (size_t i = 0; i < kLanes; ++i) {
        keptLanes[i] = static_cast<uint16_t>(kept[i % kBytesPerWord]);
        addedLanes[i] = static_cast<uint16_t>(added[i % kBytesPerWord]);
    }

    auto* bytes = reinterpret_cast<uint8_t*>(destination);
    const auto blendLanes = [&](uint8_t* lanes, size_t lanesCount) {
        for (size_t i = 0; i < lanesCount; ++i) {
            const auto product = static_cast<uint16_t>(lanes[i] * keptLanes[i]);
            lanes[i] = static_cast<uint8_t>(static_cast<uint16_t>(product + addedLanes[i]) >> 8);
        }
    };
    size_t left = count * kBytesPerWord;
    for (; left >= kLanes; left -= kLanes, bytes += kLanes)
        blendLanes(bytes, kLanes);
    blendLanes(bytes, left);
}

void Blend(uint32_t* destination, const uint32_t* source, size_t count) {
    uint32_t alphas[kChunkWords];
    uint32_t blended[kChunkWords];
    while (count > 0) {
        const size_t chunk = std::min(count, kChunkWords);
        for (size_t i = 0; i < chunk; ++i)
            alphas[i] = Spread(source[i] >> 24);
        BlendChunk(blended, destination, source, alphas, chunk);
        for (size_t i = 0; i < chunk; ++i)
            destination[i] = WithAlphaOf(destination[i], blended[i]);
        destination += chunk;
        source += chunk;
        count -= chunk;
    }
}

void Compose(uint32_t* destination, const uint32_t* source, size_t count, uint8_t opacity) {
    uint32_t alphas[kChunkWords];
    uint32_t blended[kChunkWords];
    while (count > 0) {
        const size_t chunk = std::min(count, kChunkWords);
        for (size_t i = 0; i < chunk; ++i)
            alphas[i] = Spread(ScaledAlpha(source[i], opacity));
        BlendChunk(blended, destination, source, alphas, chunk);
        for (size_t i = 0; i < chunk; ++i) {
            const uint32_t mixed = WithAlphaOf(destination[i], blended[i]);
            destination[i] = alphas[i] == 0xFFFFFFFFu ? source[i] : mixed;
        }
        destination += chunk;
        source += chunk;
        count -= chunk;
    }
}

uint32_t BlendedWord(uint32_t destination, uint32_t source) {
    const uint32_t alpha = source >> 24;
    const uint32_t kept = 255 - alpha;
    // Red and blue side by side, each in 16 bits of its own; then green.
    constexpr uint32_t kPair = 0x00FF00FFu;
    const uint32_t pair = ((source & kPair) * alpha + (destination & kPair) * kept) >> 8 & kPair;
    const uint32_t green =
        ((source >> 8 & 0xFF) * alpha + (destination >> 8 & 0xFF) * kept) & 0xFF00u;
    return WithAlphaOf(destination, pair | green);
}

}  // namespace norava::pixel_rows
