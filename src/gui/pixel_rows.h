#pragma once

#include <cstddef>
#include <cstdint>

#include "gui/color.h"

// The loops over pixels that everything else in the raster is made of, written so that compilers
// turn them into vector code. A word is one stored pixel (red, green, blue, alpha from the lowest
// byte up).
//
// Blending is dst = (src * a + dst * (255 - a)) >> 8 for red, green and blue, and the alpha byte of
// the destination stays. Dividing by 256 in place of 255 darkens by up to one level, also where a
// is 0 or 255.
namespace norava::pixel_rows {

void Fill(uint32_t* destination, uint32_t word, size_t count);

// Blends one colour over a row with its own alpha.
void BlendColor(uint32_t* destination, CColor color, size_t count);

// Blends each source word over the destination with its own alpha. The rows must not overlap.
void Blend(uint32_t* destination, const uint32_t* source, size_t count);

// As Blend, with each alpha first turned into (alpha * opacity) >> 8 when the opacity is below 255.
// A word whose alpha is 255 after that replaces the destination whole.
void Compose(uint32_t* destination, const uint32_t* source, size_t count, uint8_t opacity);

// Blend for a single word.
uint32_t BlendedWord(uint32_t destination, uint32_t source);

}  // namespace norava::pixel_rows
