#include "gui/control_display.h"

#include <cstring>

namespace norava {

namespace {

constexpr int kFrameInset = 5;

}  // namespace

bool CControlDisplay::SetText(const char* newText) {
    if (!newText) return false;
    char cut[sizeof text] = "";
    CopyText(cut, sizeof cut, newText);
    const bool changed = std::strcmp(cut, text) != 0;
    std::memcpy(text, cut, sizeof text);
    return changed;
}

CRect CControlDisplay::GetTextArea() const {
    const CRect whole = TamedRect(GetRect());
    CPoint corner = whole.GetLeftTop();
    corner.Shift({textOffset.x, textOffset.y});
    if (textRect.IsEmpty() && selfDrawn) {
        corner.Shift({kFrameInset, 0});
        return {corner, CSize(whole.width - 2 * kFrameInset, whole.height)};
    }
    if (textRect.IsEmpty()) return {corner, whole.GetSize()};
    corner.Shift({textRect.left, textRect.top});
    return {corner, textRect.GetSize()};
}

void CControlDisplay::DrawBackground() {
    CControl::DrawBackground();
    const PaintScope scope(GetGraphicBuffer(), GetRect());
    if (!selfDrawn || !scope) return;
    CGraphicBuffer& buffer = *GetGraphicBuffer();
    buffer.SetFillColor(backgroundColor);
    buffer.FillRect(GetRect());
    buffer.DrawRect(GetRect());
}

void CControlDisplay::DrawToBuffer() {
    DrawBackground();
    const PaintScope scope(GetGraphicBuffer(), GetRect());
    if (!scope) return;
    GetGraphicBuffer()->DrawImage(image, GetRect(), {0, 0});
    DrawLabel(*GetGraphicBuffer(), text, GetTextArea(), GetLabelStyle());
}

bool CControlDisplay::MouseDown() {
    return BeginGesture(false);
}

bool CControlDisplay::MouseUp() {
    if (!IsInGesture()) return false;
    EndGesture();
    return true;
}

bool CControlDisplay::LostFocus() {
    EndGesture();
    return true;
}

}  // namespace norava
