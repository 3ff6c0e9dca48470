#include "gui/bitmap_font.h"

#include <cstddef>

namespace norava {

int BitmapFont::GlyphIndex(char character) {
    constexpr int kQuestionMark = '?' - '!';
    const int index = static_cast<signed char>(character) - '!';
    return index < kSpace || index >= kGlyphs ? kQuestionMark : index;
}

BitmapFont::Glyph BitmapFont::GetGlyph(int index) const {
    if (index < 0 || index >= kGlyphs || block.size() < kFirstGlyph) return {};
    const auto entry = static_cast<size_t>(kTableStart + 2 * index);
    const size_t start = block[entry] | static_cast<size_t>(block[entry + 1]) << 8;
    if (start + 2 > block.size()) return {};

    Glyph glyph{block[start], {}};
    const size_t pixels = block[start + 1];
    const bool damaged = static_cast<int>(pixels) > glyph.advance * GetLineHeight();
    if (!damaged && start + 2 + 2 * pixels <= block.size())
        glyph.pixels = block.subspan(start + 2, 2 * pixels);
    return glyph;
}

int BitmapFont::MeasureWidth(const char* text, int maxCharacters) const {
    int width = -1;
    for (int i = 0; i < maxCharacters && text[i] != '\0'; ++i) {
        const int index = GlyphIndex(text[i]);
        width += index == kSpace ? GetSpaceAdvance() : GetGlyph(index).advance + GetSpacing();
    }
    return width;
}

}  // namespace norava
