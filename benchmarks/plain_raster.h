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

}  // namespace norava::bench
