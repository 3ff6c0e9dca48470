#include "gui/control_slider.h"

#include <algorithm>

#include "gui/unit_value.h"

namespace norava {

namespace {

constexpr int kHandleLength = 13;  // along the axis, without a picture
constexpr int kTrackWidth = 4;
constexpr CColor kGroove(14, 13, 12);
constexpr CColor kGrooveLight(106, 98, 89, 90);
constexpr CColor kFilled(246, 180, 92);
constexpr CColor kCapTop(255, 250, 240);
constexpr CColor kCapBottom(183, 164, 127);
constexpr CColor kCapEdge(22, 20, 18);
constexpr CColor kCapMark(92, 78, 54);

}  // namespace

CControlSlider::CControlSlider() {
    CControlSlider::SetTrackingOption(false);
    FitSpeed();
}

void CControlSlider::SetSliderHandleImage(CImage* picture, CRect part) {
    hasHandleImage = picture != nullptr;
    handleImage = picture;
    handlePart = part;
    if (picture && handlePart.width < 1) handlePart.width = picture->GetSize().cx;
    if (picture && handlePart.height < 1) handlePart.height = picture->GetSize().cy;
    FitSpeed();
}

void CControlSlider::SetRect(CRect newRect) {
    CControlKnob::SetRect(newRect);
    FitSpeed();
}

void CControlSlider::SetAxisX() {
    CControlKnob::SetAxisX();
    FitSpeed();
}

void CControlSlider::SetAxisY() {
    CControlKnob::SetAxisY();
    FitSpeed();
}

CSize CControlSlider::GetHandleSize() const {
    if (hasHandleImage) return handlePart.GetSize();
    return IsAxisX() ? CSize(kHandleLength, TamedRect(GetRect()).height)
                     : CSize(TamedRect(GetRect()).width, kHandleLength);
}

int CControlSlider::GetTravel() const {
    const CSize handle = GetHandleSize();
    return std::max(1, IsAxisX() ? TamedRect(GetRect()).width - handle.cx
                                 : TamedRect(GetRect()).height - handle.cy);
}

void CControlSlider::FitSpeed() {
    SetValueChangeSpeed(1.0f / static_cast<float>(GetTravel()));
}

CRect CControlSlider::GetHandleRect() const {
    const CRect whole = TamedRect(GetRect());
    const CSize handle = GetHandleSize();
    const auto travel = static_cast<float>(GetTravel());
    const float unit = ToUnit(GetValue());
    // Halves go the same way whatever the value lost on its way here.
    const float place = (IsAxisX() ? unit : 1.0f - unit) * travel + 0.001f;
    const int way = std::min(GetTravel(), static_cast<int>(place + 0.5f));
    if (IsAxisX())
        return {CPoint(whole.left + way, whole.top + (whole.height - handle.cy) / 2 + shift),
                handle};
    return {CPoint(whole.left + (whole.width - handle.cx) / 2 + shift, whole.top + way), handle};
}

void CControlSlider::Slider_DrawToBufferWithImages(CGraphicBuffer& buffer) const {
    buffer.DrawImage(handleImage, GetHandleRect(), handlePart.GetLeftTop());
}

void CControlSlider::DrawTrack(CGraphicBuffer& buffer) const {
    const CRect whole = TamedRect(GetRect());
    const CPoint handle = GetHandleRect().GetCenter();
    const int inset = kHandleLength / 2 - 1;
    CRect groove = whole;
    CRect filled;
    if (IsAxisX()) {
        groove = CRect(whole.left + inset, whole.GetCenter().y - kTrackWidth / 2,
                       whole.width - 2 * inset, kTrackWidth);
        filled = CRect(groove.left + 1, groove.top + 1, handle.x - groove.left, kTrackWidth - 2);
    } else {
        groove = CRect(whole.GetCenter().x - kTrackWidth / 2, whole.top + inset, kTrackWidth,
                       whole.height - 2 * inset);
        filled =
            CRect(groove.left + 1, handle.y, kTrackWidth - 2, groove.GetBottom() - 1 - handle.y);
    }
    CColor light = kGrooveLight;
    buffer.FillRect(CRect(groove.left + 1, groove.GetBottom(), groove.width - 2, 1), &light);
    buffer.SetFillColor(kGroove);
    buffer.DrawRectWithRoundCorner(groove, true, 2, 2);
    CColor fill = kFilled;
    buffer.FillRect(filled, &fill);
}

void CControlSlider::DrawHandle(CGraphicBuffer& buffer) const {
    const CRect cap = GetHandleRect();
    buffer.SetFillColor(kCapEdge);
    buffer.DrawRectWithRoundCorner(cap, true, 2.5f, 2.5f);
    const CRect face(cap.left + 1, cap.top + 1, cap.width - 2, cap.height - 2);
    buffer.SetFillColor(kCapBottom);
    buffer.DrawRectWithRoundCorner(face, true, 1.5f, 1.5f);
    buffer.FillRectGradVert(CRect(face.left + 1, face.top, face.width - 2, face.height - 1),
                            kCapTop, kCapBottom);
    CColor mark = kCapMark;
    const CPoint middle = cap.GetCenter();
    IsAxisX() ? buffer.FillRect(CRect(middle.x, face.top + 1, 1, face.height - 2), &mark)
              : buffer.FillRect(CRect(face.left + 1, middle.y, face.width - 2, 1), &mark);
}

void CControlSlider::DrawToBuffer() {
    DrawBackground();
    const PaintScope scope(GetGraphicBuffer(), GetRect());
    if (!scope) return;
    if (hasHandleImage) return Slider_DrawToBufferWithImages(*GetGraphicBuffer());
    DrawTrack(*GetGraphicBuffer());
    DrawHandle(*GetGraphicBuffer());
}

}  // namespace norava
