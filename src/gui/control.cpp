#include "gui/control.h"

#include <utility>

#include "gui/control_group.h"
#include "gui/graphic_buffer.h"
#include "gui/window_port.h"

namespace norava {

bool CControl::SetValueAndRedraw(float newValue) {
    if (newValue == GetValue()) return false;
    SetValue(newValue);
    if (group) group->RedrawControl(this, true);
    return true;
}

void CControl::ShiftPosition(int x, int y) {
    CPoint position = GetPosition();
    position.Shift({x, y});
    SetPosition(position);
}

CWindowPort* CControl::GetWindowPort() const {
    return group ? group->GetWindowPort() : nullptr;
}

CGraphicBuffer* CControl::GetGraphicBuffer() const {
    return group ? group->GetGraphicBuffer() : nullptr;
}

void CControl::GrabFocus() {
    if (group) group->FocusControl(this);
}

bool CControl::IsFocused() const {
    return group && group->GetFocusedControl() == this;
}

void CControl::SetSuper(bool on) {
    if (group) group->SetSuperControl(this, on);
}

bool CControl::IsSuper() const {
    return group && group->GetSuperControl() == this;
}

void CControl::Disable(bool on) {
    const auto alive = group ? group->KeepAlive() : nullptr;
    if (on && group) group->ReleaseControl(this);
    disabled = on;
}

void CControl::UpdateScreen(CRect part) {
    if (CWindowPort* port = GetWindowPort()) port->UpdateScreen(part);
}

void CControl::DrawBackground(CRect part) {
    CWindowPort* port = GetWindowPort();
    CGraphicBuffer* buffer = GetGraphicBuffer();
    if (!port || !buffer || !buffer->SetClipRect(part)) return;
    port->DrawBackground(part);
    buffer->SetClipRect();
    group->DrawBackground(part);
}

bool CControl::SendClicked() {
    if (!group || clicked) return false;
    CControlGroup* const asked = group;
    const auto alive = asked->KeepAlive();
    if (!asked->ControlClicked(this)) return false;
    if (group == asked && !disabled && !asked->IsDisabled()) {
        clicked = true;
        return true;
    }
    asked->ControlReleased(this);
    return false;
}

bool CControl::SendReleased() {
    return group && std::exchange(clicked, false) && group->ControlReleased(this);
}

bool CControl::SendValueChanged(float newValue) {
    return group && group->ControlValueChanged(this, newValue);
}

bool CControl::BeginGesture(bool hidePointer) {
    if (!SendClicked()) return false;
    GrabFocus();
    // Who lost the focus may have disabled or destroyed this one.
    if (clicked) StartTracking(hidePointer);
    if (clicked && IsTracking()) return true;
    SendReleased();
    return false;
}

void CControl::EndGesture() {
    FinishTracking();
    SendReleased();
}

bool CControl::ChangeValue(float newValue) {
    if (!SendValueChanged(newValue)) return false;
    SetValue(newValue);
    Redraw();
    return true;
}

bool CControl::ChangeValueAtOnce(float newValue) {
    if (!SendClicked()) return false;
    const bool accepted = ChangeValue(newValue);
    SendReleased();
    return accepted;
}

void CControl::Redraw() {
    if (group) group->RedrawControl(this, true);
}

bool CControl::IsMouseOver() const {
    const CWindowPort* port = GetWindowPort();
    if (!port || disabled || !GetRect().IsPointInside(port->GetMousePos())) return false;
    const CControlGroup* modalGroup = port->GetSuperControlGroup();
    const CControl* modal = group->GetSuperControl();
    return (!modalGroup || modalGroup == group) && (!modal || modal == this);
}

void CControl::StartTracking(bool hidePointer) {
    if (group) group->StartTracking(this, hidePointer);
}

void CControl::FinishTracking() {
    if (group && group->GetTrackingControl() == this) group->FinishTracking();
}

bool CControl::IsTracking() const {
    return group && group->IsTracking(this);
}

bool CControl::GetParamText(char* text) {
    if (text == nullptr) return false;
    text[0] = '\0';
    return group && group->GetParamText(this, text);
}

CPoint CControl::GetMousePos() const {
    const CWindowPort* port = GetWindowPort();
    return port ? port->GetMousePos() : CPoint(-1, -1);
}

int CControl::GetMouseBtn() const {
    const CWindowPort* port = GetWindowPort();
    return port ? port->GetMouseButtonID() : -1;
}

CSize CControl::GetMouseDelta() const {
    const CWindowPort* port = GetWindowPort();
    return port ? port->GetMouseDelta() : CSize();
}

bool CControl::IsCTRL() const {
    const CWindowPort* port = GetWindowPort();
    return port && port->GetModifiers().control;
}

bool CControl::IsALT() const {
    const CWindowPort* port = GetWindowPort();
    return port && port->GetModifiers().alt;
}

bool CControl::IsSHIFT() const {
    const CWindowPort* port = GetWindowPort();
    return port && port->GetModifiers().shift;
}

}  // namespace norava
