#include "gui/label.h"

#include <algorithm>
#include <cstdint>

#include "files/natural_order.h"
#include "gui/utf8.h"

namespace norava {

namespace {

char ToFontCharacter(uint32_t character) {
    const char32_t plain = WithoutAccent(character);
    if (plain < 0x80) return static_cast<char>(plain);
    switch (character) {
        case 0xA0:
            return ' ';
        case 0x2018:
        case 0x2019:
            return '\'';
        case 0x201C:
        case 0x201D:
            return '"';
        case 0x2013:
        case 0x2014:
            return '-';
        default:
            return '?';
    }
}

void SetFont(CGraphicBuffer& buffer, bool bold) {
    bold ? buffer.SetFontBold() : buffer.SetFontNormal();
}

int Measure(CGraphicBuffer& buffer, const std::string& text) {
    return buffer.DrawText(text.c_str(), CRect(), true).cx;
}

// The longest beginning that fits together with the dots.
std::string Shorten(CGraphicBuffer& buffer, const std::string& text, int width) {
    if (Measure(buffer, text) <= width) return text;
    size_t fits = 0;
    size_t tooLong = text.size();
    while (fits + 1 < tooLong) {
        const size_t tried = (fits + tooLong) / 2;
        const bool isShort = Measure(buffer, text.substr(0, tried) + "...") <= width;
        (isShort ? fits : tooLong) = tried;
    }
    const std::string shortened = text.substr(0, fits);
    return shortened.substr(0, shortened.find_last_not_of(' ') + 1) + "...";
}

}  // namespace

PaintScope::PaintScope(CGraphicBuffer* target, CRect rect) : buffer(target) {
    if (!buffer || !buffer->IsSafe()) return;
    before = buffer->GetClipRect();
    const CRect inside = rect.GetIntersection(before);
    visible = !inside.IsEmpty();
    if (!visible) return;
    buffer->SetClipRect(inside);
    buffer->ResetDrawingProperties();
}

PaintScope::~PaintScope() {
    if (visible) buffer->SetClipRect(before);
}

std::string ToFontText(std::string_view utf8) {
    std::string text;
    for (size_t at = 0; at < utf8.size(); at += utf8::LengthAt(utf8, at))
        text += ToFontCharacter(utf8::CharacterAt(utf8, at));
    return text;
}

void DrawLabel(CGraphicBuffer& buffer, std::string_view utf8, CRect rect, const LabelStyle& style) {
    const PaintScope scope(&buffer, rect);
    if (!scope || utf8.empty()) return;
    SetFont(buffer, style.bold);
    buffer.SetTextColor(style.color);
    const std::string text = Shorten(buffer, ToFontText(utf8), rect.width);
    if (style.align == TextAlign::center) buffer.SetTextAlignCenter();
    if (style.align == TextAlign::right) buffer.SetTextAlignRight();
    buffer.DrawText(text.c_str(), rect, false);
}

int MeasureLabel(CGraphicBuffer& buffer, std::string_view utf8, bool bold) {
    SetFont(buffer, bold);
    return Measure(buffer, ToFontText(utf8));
}

CColor Faded(CColor color, double strength) {
    color.SetAlphaF(color.GetAlphaF() * strength);
    return color;
}

CColor Mixed(CColor from, CColor to, double share) {
    const auto between = [share](int a, int b) {
        return static_cast<int>(a + (b - a) * std::clamp(share, 0.0, 1.0) + 0.5);
    };
    return {between(from.red, to.red), between(from.green, to.green), between(from.blue, to.blue),
            between(from.alpha, to.alpha)};
}

}  // namespace norava
