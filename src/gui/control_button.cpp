#include "gui/control_button.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "gui/smooth_shapes.h"

namespace norava {

namespace {

constexpr float kLampStep = 0.2f;
constexpr float kCorner = 3.0f;
constexpr double kHoverLight = 1.18;
constexpr CColor kOnText(255, 224, 154);
constexpr CColor kLampOn(255, 196, 92);
constexpr CColor kLampOff(67, 48, 26);
constexpr CColor kLampGlow(255, 182, 72, 70);
constexpr CColor kLampLight(255, 251, 233);

}  // namespace

CControlButton::CControlButton() {
    SetTextColor(CColor(200));
}

void CControlButton::SetButtonImage(CImage* newPicture, CSize frameSize, CPoint frameOrigin) {
    picture = newPicture;
    frame = frameSize;
    origin = frameOrigin;
    if (!picture || (frame.cx > 0 && frame.cy > 0)) return;
    frame = CSize(picture->GetSize().cx, picture->GetSize().cy / 2);
}

void CControlButton::SetButtonColors(CColor faceTop, CColor faceBottom, CColor edgeColor) {
    top = faceTop;
    bottom = faceBottom;
    edge = edgeColor;
}

bool CControlButton::IsPressed() const {
    return held && GetRect().IsPointInside(GetMousePos());
}

bool CControlButton::MouseDown() {
    if (held) return true;
    if (GetMouseBtn() != kMouseLeft) return false;
    const float toggled = IsOn() ? 0.0f : 1.0f;
    if (kind == Kind::switched || kind == Kind::led) {
        ChangeValueAtOnce(toggled);
        return true;
    }
    if (!BeginGesture(false)) return false;
    held = true;
    valueAtRest = kind == Kind::click ? 0.0f : GetValue();
    if (!ChangeValue(kind == Kind::click ? 1.0f : toggled)) Redraw();
    return true;
}

// A press ends once, however it ends. The release is told last: the owner may act on it.
void CControlButton::Release() {
    if (!std::exchange(held, false)) return;
    FinishTracking();
    if (GetValue() != valueAtRest) ChangeValue(valueAtRest);
    EndGesture();
    Redraw();
}

bool CControlButton::MouseUp() {
    if (!held || GetMouseBtn() != kMouseLeft) return false;
    Release();
    return true;
}

bool CControlButton::LostFocus() {
    Release();
    return true;
}

bool CControlButton::MouseMove() {
    if (UpdateHover()) Redraw();
    return held;
}

bool CControlButton::UpdateHover() {
    const bool before = std::exchange(hovered, IsMouseOver());
    return hovered != before;
}

bool CControlButton::FadeLamp() {
    if (kind != Kind::led || !std::isfinite(GetValue()) || lampLevel == GetValue()) return false;
    lampLevel = GetValue() > lampLevel ? std::min(GetValue(), lampLevel + kLampStep)
                                       : std::max(GetValue(), lampLevel - kLampStep);
    return true;
}

bool CControlButton::TimerEvent() {
    const bool fades = FadeLamp();
    // Nobody tells when the mouse leaves.
    const bool moves = UpdateHover();
    if (fades || moves) Redraw();
    return fades || moves;
}

void CControlButton::DrawFrame(CGraphicBuffer& buffer, int number, float opacity) const {
    const CRect whole = TamedRect(GetRect());
    const CSize size(std::min(frame.cx, whole.width), std::min(frame.cy, whole.height));
    buffer.DrawImage(picture, CRect(whole.GetLeftTop(), size),
                     {origin.x, SaturatedInt(origin.y + int64_t{number} * frame.cy)}, opacity);
}

void CControlButton::DrawPicture(CGraphicBuffer& buffer) const {
    const int frames =
        frame.cy > 0 ? std::max(1, (picture->GetSize().cy - origin.y) / frame.cy) : 1;
    const int hover = hovered && frames > 2 ? 2 : 0;
    if (kind == Kind::led) {
        DrawFrame(buffer, hover, 1.0f);
        DrawFrame(buffer, std::min(hover + 1, frames - 1), std::clamp(lampLevel, 0.0f, 1.0f));
        return;
    }
    const bool lit = IsOn() && (kind != Kind::click || IsPressed() || !held);
    DrawFrame(buffer, std::clamp(hover + (lit || IsPressed() ? 1 : 0), 0, frames - 1), 1.0f);
}

void CControlButton::DrawFace(CGraphicBuffer& buffer) const {
    const CRect whole = TamedRect(GetRect());
    const bool sunk = IsPressed() || (IsOn() && kind != Kind::click);
    CColor upper = sunk ? bottom : top;
    CColor lower = sunk ? Mixed(bottom, top, 0.5) : bottom;
    if (hovered && !IsPressed()) {
        upper.Brighten(kHoverLight);
        lower.Brighten(kHoverLight);
    }
    buffer.SetFillColor(edge);
    buffer.DrawRectWithRoundCorner(whole, true, kCorner, kCorner);
    const CRect face(whole.left + 1, whole.top + 1, whole.width - 2, whole.height - 2);
    // Rounded ends of one colour each, the gradient between them.
    constexpr int kEnds = 2;
    buffer.SetFillColor(upper);
    buffer.DrawRectWithRoundCorner(face, true, kCorner - 1, kCorner - 1);
    {
        const PaintScope lowerEnd(&buffer,
                                  CRect(face.left, face.GetBottom() - kEnds, face.width, kEnds));
        if (lowerEnd) {
            buffer.SetFillColor(lower);
            buffer.DrawRectWithRoundCorner(face, true, kCorner - 1, kCorner - 1);
        }
    }
    buffer.FillRectGradVert(CRect(face.left, face.top + kEnds, face.width, face.height - 2 * kEnds),
                            upper, lower);
    CColor light = sunk ? CColor(0, 70) : CColor(255, 235, 205, 30);
    buffer.FillRect(CRect(face.left + kEnds, face.top, face.width - 2 * kEnds, 1), &light);

    CRect label = GetTextArea();
    if (IsPressed()) label.top += 1;
    LabelStyle style = GetLabelStyle();
    if (IsOn() && kind != Kind::click) style.color = kOnText;
    DrawLabel(buffer, GetText(), label, style);
}

void CControlButton::DrawLamp(CGraphicBuffer& buffer) const {
    const CRect whole = TamedRect(GetRect());
    const float diameter = static_cast<float>(std::min(whole.width, whole.height));
    const CPointF center(static_cast<float>(whole.left) + diameter / 2,
                         static_cast<float>(whole.top) + static_cast<float>(whole.height) / 2);
    const float radius = diameter / 2;
    const double level = std::clamp(lampLevel, 0.0f, 1.0f);
    using smooth_shapes::FillDisc;
    FillDisc(buffer, center, radius, Faded(kLampGlow, level));
    FillDisc(buffer, center, radius * 0.78f, CColor(12, 11, 10));
    FillDisc(buffer, center, radius * 0.66f, hovered ? CColor(120, 110, 96) : CColor(84, 78, 70));
    FillDisc(buffer, center, radius * 0.56f, Mixed(kLampOff, kLampOn, level));
    const CPointF light(center.x - radius * 0.14f, center.y - radius * 0.18f);
    FillDisc(buffer, light, radius * 0.24f, Faded(kLampLight, 0.12 + 0.75 * level));
    const int used = static_cast<int>(diameter);
    CRect label = GetTextArea();
    label = CRect(label.left + used + 2, label.top, label.width - used - 2, label.height);
    LabelStyle style = GetLabelStyle();
    style.align = TextAlign::left;
    DrawLabel(buffer, GetText(), label, style);
}

void CControlButton::DrawToBuffer() {
    DrawBackground();
    const PaintScope scope(GetGraphicBuffer(), GetRect());
    if (!scope) return;
    CGraphicBuffer& buffer = *GetGraphicBuffer();
    if (picture) {
        DrawPicture(buffer);
        DrawLabel(buffer, GetText(), GetTextArea(), GetLabelStyle());
    } else if (kind == Kind::led) {
        DrawLamp(buffer);
    } else {
        DrawFace(buffer);
    }
}

}  // namespace norava
