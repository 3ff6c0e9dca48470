#pragma once

#include <cstdint>

#include "gui/geometry.h"

namespace norava {

// Where a finished raster goes: a window of the system, or memory.
class PixelTarget {
  public:
    virtual ~PixelTarget() = default;

    // Shows the part `clip` (in stored pixels, y downwards, inside `size`) at its own place.
    // `words` holds size.cx * size.cy pixels, the lowest row first; the alpha bytes mean nothing
    // here.
    virtual void ShowPixels(const uint32_t* words, CSize size, CRect clip) = 0;
};

}  // namespace norava
