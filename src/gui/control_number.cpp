#include "gui/control_number.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "gui/unit_value.h"
#include "gui/window_port.h"

namespace norava {

namespace {

constexpr int kNotchPixels = 100;
constexpr float kCatchPixels = 3.0f;
// A hand that clicks twice shakes by this much; what moves more is a stroke.
constexpr int kShakePixels = 2;

}  // namespace

CControlNumber::CControlNumber() {
    CControl::SetRect(CRect(0, 0, 20, 100));
    CControlNumber::SetResettingWithRightButton();
    CControlNumber::SetResettingWithALT();
}

bool CControlNumber::IsResetClick() const {
    if (GetMouseBtn() == kMouseRight)
        return resetsWithRightButton && fineTrigger != FineTrigger::rightButton;
    return GetMouseBtn() == kMouseLeft && IsALT() && resetsWithAlt &&
           fineTrigger != FineTrigger::alt;
}

bool CControlNumber::IsFine() const {
    switch (fineTrigger) {
        case FineTrigger::none:
            return false;
        case FineTrigger::rightButton:
            return GetWindowPort() && GetWindowPort()->IsMouseButtonDown(kMouseRight);
        case FineTrigger::control:
            return IsCTRL();
        case FineTrigger::alt:
            return IsALT();
        case FineTrigger::shift:
            return IsSHIFT();
    }
    return false;
}

bool CControlNumber::MouseDown() {
    if (IsDragged()) return true;
    if (IsResetClick()) {
        ChangeValueAtOnce(valueOnReset);
        return true;
    }
    const int button = GetMouseBtn();
    const bool drags =
        button == kMouseLeft || (button == kMouseRight && fineTrigger == FineTrigger::rightButton);
    if (!drags || !BeginGesture(trackingOption)) return false;
    pressedButton = button;
    strokePixels = 0;
    notchHold = 0;
    dragged = ToUnit(GetValue());
    Redraw();
    return true;
}

// The pointer begins every stroke where the last one began, so that two quick ones come as a double
// click: the second goes on as a drag then.
bool CControlNumber::MouseDoubleClick() {
    if (GetMouseBtn() != kMouseLeft || IsDragged() || strokePixels > kShakePixels) return false;
    ChangeValueAtOnce(valueOnReset);
    return true;
}

float CControlNumber::ToShownValue(float position) const {
    const float unit = ToUnit(position);
    // Fine mode is for the values next to it, too.
    const bool caught = hasNotch && !trackingOption && !IsFine() &&
                        std::fabs(unit - GetNotch()) < kCatchPixels * std::fabs(speed);
    return caught ? GetNotch() : Quantize(unit);
}

// Counts down what the detent holds; the value stays meanwhile.
bool CControlNumber::HoldsNotch(int pixels) {
    if (notchHold <= 0) return false;
    const int64_t left = int64_t{notchHold} - pixels;
    notchHold = left < 0 || left > 2 * kNotchPixels ? 0 : static_cast<int>(left);
    return true;
}

void CControlNumber::DragBy(int pixels) {
    // A move to the side must not be what a notch near by catches.
    if (pixels == 0 || HoldsNotch(pixels)) return;
    // When somebody else has set the value meanwhile the drag goes on from there.
    if (ToShownValue(dragged) != GetValue()) dragged = ToUnit(GetValue());
    const float before = dragged;
    float position = before + static_cast<float>(pixels) * speed * (IsFine() ? zoom : 1.0f);
    if (trackingOption) position = ToUnit(position);
    const float notch = GetNotch();
    const bool crosses =
        (before < notch && notch <= position) || (before > notch && notch >= position);
    if (hasNotch && trackingOption && crosses) {
        position = notch;
        notchHold = kNotchPixels;
    }
    const float shown = ToShownValue(position);
    if (shown == GetValue() || ChangeValue(shown)) dragged = position;
}

bool CControlNumber::MouseMove() {
    if (!IsDragged() || !IsTracking()) return false;
    const CSize moved = GetMouseDelta();
    strokePixels =
        SaturatedInt(strokePixels + std::abs(int64_t{moved.cx}) + std::abs(int64_t{moved.cy}));
    DragBy(horizontal ? moved.cx : SaturatedInt(-int64_t{moved.cy}));
    return true;
}

bool CControlNumber::MouseUp() {
    if (!IsDragged() || GetMouseBtn() != pressedButton) return false;
    LostFocus();
    return true;
}

bool CControlNumber::LostFocus() {
    if (!IsDragged()) return false;
    pressedButton = kNoButton;
    EndGesture();
    Redraw();
    return true;
}

std::string CControlNumber::GetValueText() {
    char shown[kNameBufferBytes] = "";
    GetParamText(shown);
    if (shown[0] == '\0')
        std::snprintf(shown, sizeof shown, "%.2f", static_cast<double>(ToUnit(GetValue())));
    return shown;
}

void CControlNumber::DrawToBuffer() {
    DrawBackground();
    const PaintScope scope(GetGraphicBuffer(), GetRect());
    if (scope) DrawLabel(*GetGraphicBuffer(), GetValueText(), GetTextArea(), GetLabelStyle());
}

}  // namespace norava
