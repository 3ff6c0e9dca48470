#pragma once

#include <cstdint>

#include "gui/graphic_buffer.h"

// The raster's formulas once more, pixel by pixel and with nothing clever, to take the fast code's
// ratio to.
namespace norava::bench {

inline uint8_t PlainBlend(int destination, int source, int alpha) {
    return static_cast<uint8_t>((source * alpha + destination * (255 - alpha)) >> 8);
}

inline CColor PlainBlend(CColor under, CColor over) {
    return {PlainBlend(under.red, over.red, over.alpha),
            PlainBlend(under.green, over.green, over.alpha),
            PlainBlend(under.blue, over.blue, over.alpha), under.alpha};
}

inline CColor PlainCompose(CColor under, CColor over, int opacity) {
    if (opacity < 255) over.SetAlpha((over.alpha * opacity) >> 8);
    return over.alpha == 255 ? over : PlainBlend(under, over);
}

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

}  // namespace norava::bench
