#pragma once

#include <cstdint>

#include "gui/graphic_buffer.h"

namespace norava::test {

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
