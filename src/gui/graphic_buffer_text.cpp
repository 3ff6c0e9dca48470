#include "gui/bitmap_font.h"
#include "gui/graphic_buffer.h"
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
    // One column more than the width: bold letters stand that far to the right in their advance.
    const bool visible = x < clip.GetRight() && x + extent.cx >= clip.left &&
                         y < clip.GetBottom() && y + extent.cy > clip.top;
    if (visible) DrawGlyphs(font, text, x, y);
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

}  // namespace norava
