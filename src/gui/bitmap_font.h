#pragma once

#include <cstdint>
#include <span>

namespace norava {

// Reads a font block: byte 0 is the line height in pixels; then 94 little-endian 16-bit offsets
// from the block's start to the glyphs of '!' .. '~'. A glyph is its advance width, a count n, and
// n pairs of bytes: position (low nibble x, high nibble y from the glyph's top left) and ink (0
// full, 255 none). Whatever the block holds, nothing outside it is read.
class BitmapFont {
  public:
    static constexpr int kGlyphs = 94;
    static constexpr int kMaxGlyphSide = 16;
    static constexpr int kTableStart = 1;
    static constexpr int kFirstGlyph = kTableStart + 2 * kGlyphs;
    static constexpr int kSpace = -1;  // glyph index of the space

    // How the glyphs of a block are set, in pixels.
    struct Metrics {
        int spacing;       // between two glyphs, not after a space
        int spaceAdvance;  // the width of a space
        int leftShift;     // of text that is aligned left
    };

    struct Glyph {
        int advance = 0;
        std::span<const uint8_t>
            pixels;  // position and ink by turns; empty when the record is damaged
    };

    BitmapFont(std::span<const uint8_t> fontBlock, Metrics fontMetrics)
        : block(fontBlock), metrics(fontMetrics) {}

    // 0 .. 93, or kSpace. What the font does not have is shown as '?'.
    [[nodiscard]] static int GlyphIndex(char character);

    [[nodiscard]] int GetLineHeight() const { return block.empty() ? 0 : block[0]; }
    [[nodiscard]] int GetSpacing() const { return metrics.spacing; }
    [[nodiscard]] int GetSpaceAdvance() const { return metrics.spaceAdvance; }
    [[nodiscard]] int GetLeftShift() const { return metrics.leftShift; }
    [[nodiscard]] Glyph GetGlyph(int index) const;
    // Advances and spacings of at most `maxCharacters`, less the one pixel after the last.
    [[nodiscard]] int MeasureWidth(const char* text, int maxCharacters) const;

  private:
    std::span<const uint8_t> block;
    Metrics metrics;
};

}  // namespace norava
