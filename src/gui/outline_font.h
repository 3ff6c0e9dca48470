#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "gui/bitmap_font.h"

namespace norava {

// The letters of a bitmap font drawn from outlines, for screens where a pixel of the font covers
// several stored ones. Each letter stays where the bitmap has it and about as wide, so that text
// takes the same place at every scale. Any thread may ask; letters are made when a scale is first
// used.
class OutlineFont {
  public:
    static constexpr int kMaxScale = 4;

    // Coverage of a letter, 0 .. 255, in stored pixels, the topmost row first.
    struct Glyph {
        int left = 0;  // of the cell, from where the letter stands; its top is the line's
        int width = 0;
        int height = 0;
        std::vector<uint8_t> coverage;
    };
    using Glyphs = std::array<Glyph, BitmapFont::kGlyphs>;

    // One outline a letter: M, L and C commands, thousandths of the em, y upwards. Both live as
    // long as this.
    OutlineFont(std::span<const char* const> letterOutlines, const BitmapFont& font)
        : outlines(letterOutlines), bitmap(font) {}

    // Scales from 2 to kMaxScale.
    [[nodiscard]] const Glyphs& GetGlyphs(int scale) const;

  private:
    struct Scaled {
        std::once_flag made;
        std::unique_ptr<Glyphs> glyphs;
    };

    [[nodiscard]] Glyph MakeGlyph(int index, int scale) const;

    std::span<const char* const> outlines;
    const BitmapFont& bitmap;
    mutable std::array<Scaled, kMaxScale + 1> scales;
};

}  // namespace norava
