#pragma once

#include <string>
#include <string_view>

#include "gui/graphic_buffer.h"

namespace norava {

// Paints inside a rectangle of a buffer: limits the clip to it and puts it back. What was set for
// drawing before does not matter.
class PaintScope {
  public:
    PaintScope(CGraphicBuffer* target, CRect rect);
    ~PaintScope();
    PaintScope(const PaintScope&) = delete;
    PaintScope& operator=(const PaintScope&) = delete;

    // False: there is no buffer, or nothing of the rectangle can be seen.
    [[nodiscard]] explicit operator bool() const { return visible; }

  private:
    CGraphicBuffer* buffer;
    CRect before;
    bool visible = false;
};

enum class TextAlign { left = 0, center = 1, right = 2 };

struct LabelStyle {
    CColor color;
    TextAlign align = TextAlign::left;
    bool bold = false;
};

// UTF-8 as the built-in fonts can show it: letters with accents lose them, any other character that
// the fonts lack becomes one '?'.
[[nodiscard]] std::string ToFontText(std::string_view utf8);

// One line of UTF-8 centred vertically in the rectangle and limited to it. Where it is too long it
// ends in dots.
void DrawLabel(CGraphicBuffer& buffer, std::string_view utf8, CRect rect, const LabelStyle& style);

// Width in pixels as DrawLabel sets it; 0 for a buffer without pixels.
[[nodiscard]] int MeasureLabel(CGraphicBuffer& buffer, std::string_view utf8, bool bold);

// The colour with its alpha scaled, 0 .. 1.
[[nodiscard]] CColor Faded(CColor color, double strength);
// Between two colours: 0 the first, 1 the second.
[[nodiscard]] CColor Mixed(CColor from, CColor to, double share);

}  // namespace norava
