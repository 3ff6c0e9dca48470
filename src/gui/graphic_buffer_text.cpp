#include <algorithm>

#include "gui/bitmap_font.h"
#include "gui/graphic_buffer.h"
#include "gui/pixel_rows.h"
#include "gui/system_fonts.h"

namespace norava {

CSize CGraphicBuffer::DrawText(const char* text, CRect rect, bool measureOnly) {
    if (!IsSafe() || text == nullptr || *text == '\0') return {};
    const BitmapFont& font = bold ? fonts->bold : fonts->regular;
    const CSize extent(font.MeasureWidth(text, kMaxTextCharacters), font.GetLineHeight());
    if (measureOnly || extent.cx < 1) return extent;

    const int64_t room = int64_t{rect.width} - extent.cx;
    int64_t x = rect.left;
    switch (alignment) {
        case Alignment::left:
            x += font.GetLeftShift();
            break;
        case Alignment::center:
            x += room / 2;
            break;
        case Alignment::right:
            x += room;
            break;
    }
    const int64_t y = rect.top + (int64_t{rect.height} - extent.cy) / 2;
    // More than the width: bold letters stand further to the right in their advance, and outlines
    // may lean out a little.
    constexpr int kOverhang = 2;
    const bool visible = x - kOverhang < clip.GetRight() && x + extent.cx + kOverhang > clip.left &&
                         y < clip.GetBottom() && y + extent.cy + kOverhang > clip.top;
    if (visible && scaleFactor > 1) {
        const OutlineFont& outlines = bold ? fonts->boldOutlines : fonts->regularOutlines;
        DrawOutlines(outlines.GetGlyphs(scaleFactor), font, text, x, y);
    } else if (visible) {
        DrawGlyphs(font, text, x, y);
    }
    return extent;
}

void CGraphicBuffer::DrawGlyphs(const BitmapFont& font, const char* text, int64_t x, int64_t y) {
    for (int i = 0; i < kMaxTextCharacters && text[i] != '\0'; ++i) {
        const int index = BitmapFont::GlyphIndex(text[i]);
        if (index == BitmapFont::kSpace) {
            x += font.GetSpaceAdvance();
            continue;
        }
        const BitmapFont::Glyph glyph = font.GetGlyph(index);
        if (glyph.pixels.empty()) return;
        if (x + BitmapFont::kMaxGlyphSide > clip.left && x < clip.GetRight()) {
            for (size_t p = 0; p < glyph.pixels.size(); p += 2) {
                const int position = glyph.pixels[p];
                const int ink = 255 - glyph.pixels[p + 1];
                BlendInsideClip(x + (position & 0x0F), y + (position >> 4), textColor,
                                static_cast<uint32_t>((ink * textColor.alpha) >> 8));
            }
        }
        x += glyph.advance + font.GetSpacing();
    }
}

// The same text with the letters that belong to this scale.
void CGraphicBuffer::DrawOutlines(const OutlineFont::Glyphs& glyphs, const BitmapFont& font,
                                  const char* text, int64_t x, int64_t y) {
    for (int i = 0; i < kMaxTextCharacters && text[i] != '\0'; ++i) {
        const int index = BitmapFont::GlyphIndex(text[i]);
        if (index == BitmapFont::kSpace) {
            x += font.GetSpaceAdvance();
            continue;
        }
        if (x + 2 * BitmapFont::kMaxGlyphSide > clip.left && x - 2 < clip.GetRight())
            DrawOutline(glyphs[static_cast<size_t>(index)], x * scaleFactor, y * scaleFactor);
        x += font.GetGlyph(index).advance + font.GetSpacing();
    }
}

// Place in stored pixels, y downwards.
void CGraphicBuffer::DrawOutline(const OutlineFont::Glyph& glyph, int64_t x, int64_t y) {
    x += glyph.left;
    const int64_t k = scaleFactor;
    const int64_t left = std::max(x, clip.left * k);
    const int64_t right = std::min(x + glyph.width, clip.GetRight() * k);
    const int64_t top = std::max(y, clip.top * k);
    const int64_t bottom = std::min(y + glyph.height, clip.GetBottom() * k);
    for (int64_t row = top; row < bottom; ++row) {
        const size_t fromBottom = StoredRows() - 1 - static_cast<size_t>(row);
        uint32_t* const words = store.get() + fromBottom * StrideWords();
        const uint8_t* const coverage =
            glyph.coverage.data() + static_cast<size_t>((row - y) * glyph.width);
        for (int64_t column = left; column < right; ++column) {
            const uint32_t alpha =
                static_cast<uint32_t>(coverage[column - x] * textColor.alpha) >> 8;
            if (alpha == 0) continue;
            uint32_t& word = words[column];
            word = pixel_rows::BlendedWord(word, (textColor.GetWord() & 0x00FFFFFFu) | alpha << 24);
        }
    }
}

}  // namespace norava
