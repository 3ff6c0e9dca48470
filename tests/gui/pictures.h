#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "gui/graphic_buffer.h"

namespace norava::test {

// Fails the test unless the buffer equals the picture of that name in tests/gui/reference/, pixel
// by pixel. What was drawn is left in the build folder: look at it, and copy it over the reference
// when it is better.
void ExpectLooksLike(const CGraphicBuffer& buffer, const std::string& name);
// The same for a PNG file that `write` writes where it is told to.
void ExpectLooksLike(const std::function<bool(const std::string& path)>& write,
                     const std::string& name);

// Fails unless both hold the same words.
void ExpectSamePixels(const CGraphicBuffer& a, const CGraphicBuffer& b);

// A buffer full of noise that the seed decides.
inline void FillWithNoise(CGraphicBuffer& buffer, uint32_t seed) {
    uint32_t state = seed * 2654435761u + 1u;
    for (int y = 0; y < buffer.GetSize().cy; ++y) {
        for (int x = 0; x < buffer.GetSize().cx; ++x) {
            state ^= state << 13;
            state ^= state >> 17;
            state ^= state << 5;
            // Every third pixel opaque or empty: the cases that are treated apart.
            const uint32_t alpha = state % 6 == 0 ? 0xFFu : state % 6 == 3 ? 0u : state >> 24;
            buffer.SetPixelAt(buffer.GetDataAt(x, y), (state & 0x00FFFFFFu) | alpha << 24);
        }
    }
}

}  // namespace norava::test
