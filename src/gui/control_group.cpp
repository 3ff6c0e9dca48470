#include "gui/control_group.h"

#include <algorithm>

#include "gui/dispatch.h"
#include "gui/graphic_buffer.h"
#include "gui/window_port.h"

namespace norava {

CControlGroup::~CControlGroup() = default;

std::shared_ptr<const void> CControlGroup::KeepAlive() const {
    return port ? port->dispatch : nullptr;
}

CGraphicBuffer* CControlGroup::GetGraphicBuffer() const {
    return port ? port->GetGraphicBuffer() : nullptr;
}

std::vector<CControl*> CControlGroup::ListControls() const {
    std::vector<CControl*> list;
    for (const auto& control : controls)
        list.push_back(control.get());
    return list;
}

void CControlGroup::DrawToBuffer() {
    if (disabled || !port || !GetGraphicBuffer()) return;
    DrawBackground(rect);
    for (CControl* control : ListControls())
        if (!control->IsDisabled() && !superControls.Holds(control)) control->DrawToBuffer();
    const std::vector<CControl*> modal = superControls.GetMembers();
    for (CControl* control : modal)
        if (!control->IsDisabled()) control->DrawToBuffer();
}

void CControlGroup::DrawControls(CRect part) {
    for (CControl* control : ListControls())
        if (!control->IsDisabled() && control->GetRect().Intersects(part)) control->DrawToBuffer();
}

void CControlGroup::Disable(bool on) {
    const auto alive = KeepAlive();
    if (on) ReleaseAll();
    disabled = on;
}

void CControlGroup::DrawBackground(CRect part) {
    CGraphicBuffer* buffer = GetGraphicBuffer();
    if (disabled || !background || !buffer || port->GetRootControlGroup() == this) return;
    if (!buffer->SetClipRect(part)) return;
    buffer->DrawImage(background, rect, {0, 0});
    buffer->SetClipRect();
}

CControl* CControlGroup::AttachControl(std::unique_ptr<CControl> control) {
    if (!control) return nullptr;
    control->group = this;
    return controls.emplace_back(std::move(control)).get();
}

void CControlGroup::DestroyControl(CControl* control) {
    const auto isIt = [control](const auto& owned) { return owned.get() == control; };
    if (std::none_of(controls.begin(), controls.end(), isIt)) return;
    const auto alive = KeepAlive();
    ReleaseControl(control);
    // Releasing runs the control's handlers, which may have destroyed it or others: look again.
    const auto found = std::find_if(controls.begin(), controls.end(), isIt);
    if (found == controls.end()) return;
    if (port) port->HideOverlay(control);
    control->group = nullptr;
    destroyed.push_back(std::move(*found));
    controls.erase(found);
}

void CControlGroup::DestroyAllControls() {
    const auto alive = KeepAlive();
    while (!controls.empty())
        DestroyControl(controls.back().get());
}

CControl* CControlGroup::GetRootControl() const {
    return controls.empty() ? nullptr : controls.front().get();
}

CControl* CControlGroup::GetControlByID(int controlId) const {
    for (const auto& control : controls)
        if (control->GetID() == controlId) return control.get();
    return nullptr;
}

void CControlGroup::RedrawControl(CControl* control, bool toScreen) {
    if (!disabled && port) port->RedrawControl(control, toScreen);
}

void CControlGroup::RedrawControl(int controlId, bool toScreen) {
    RedrawControl(GetControlByID(controlId), toScreen);
}

bool CControlGroup::ControlClicked(CControl* control) {
    return port && port->ControlClicked(control);
}

bool CControlGroup::ControlReleased(CControl* control) {
    return port && port->ControlReleased(control);
}

bool CControlGroup::ControlValueChanged(CControl* control, float value) {
    return port && port->ControlValueChanged(control, value);
}

bool CControlGroup::GetParamText(CControl* control, char* text) {
    return port && port->GetParamText(control, text);
}

void CControlGroup::SetSuper(bool on) {
    if (port) port->SetSuperControlGroup(this, on);
}

bool CControlGroup::IsSuper() const {
    return port && port->GetSuperControlGroup() == this;
}

void CControlGroup::SetSuperControl(CControl* control, bool on) {
    if (on) {
        superControls.Push(control);
        SetSuper(true);
    } else if (superControls.Remove(control)) {
        SetSuper(false);
    }
}

void CControlGroup::GrabFocus() {
    if (port) port->FocusControlGroup(this);
}

bool CControlGroup::IsFocused() const {
    return port && port->GetFocusControlGroup() == this;
}

void CControlGroup::FocusControl(CControl* control) {
    if (focusedControl == control) return;
    const auto alive = KeepAlive();
    GrabFocus();
    if (CControl* before = std::exchange(focusedControl, nullptr)) TakeFocusFrom(before);
    // That handler may have destroyed the one that asks, or given the focus to a third.
    if (control->group != this || focusedControl) return;
    focusedControl = control;
    control->TookFocus();
}

// A held button acts when it is let go with the mouse inside; here nobody has let it go.
void CControlGroup::TakeFocusFrom(CControl* control) {
    if (port && trackingControl == control) port->mousePosition = {-1, -1};
    control->LostFocus();
}

void CControlGroup::LoseFocus() {
    const auto alive = KeepAlive();
    if (CControl* control = std::exchange(focusedControl, nullptr)) TakeFocusFrom(control);
    LostFocus();
}

void CControlGroup::ReleaseControl(CControl* control) {
    const bool focused = focusedControl == control;
    const bool holdsSomething =
        focused || control->clicked || trackingControl == control || superControls.Holds(control);
    // A control may disable itself when it loses the focus: that must not release it once more.
    if (!holdsSomething || releasing == control) return;
    const auto alive = KeepAlive();
    CControl* const before = std::exchange(releasing, control);
    if (focused) focusedControl = nullptr;
    TakeFocusFrom(control);
    if (trackingControl == control) FinishTracking();
    while (superControls.Holds(control))
        SetSuperControl(control, false);
    control->SendReleased();
    releasing = before;
}

void CControlGroup::ReleaseAll() {
    const auto alive = KeepAlive();
    if (focusedControl) ReleaseControl(focusedControl);
    if (trackingControl) ReleaseControl(trackingControl);
    const std::vector<CControl*> modal = superControls.GetMembers();
    for (CControl* control : modal)
        ReleaseControl(control);
    for (CControl* control : ListControls())
        if (control->group == this && control->clicked) ReleaseControl(control);
}

void CControlGroup::StartTracking(CControl* control, bool hidePointer) {
    // In a closed window no release would ever end it.
    if (!port || !port->IsOpen()) return;
    port->SetTrackingControlGroup(this);
    SetTrackingControl(control);
    port->StartTracking(hidePointer);
}

void CControlGroup::FinishTracking() {
    SetTrackingControl(nullptr);
    if (!port || port->GetTrackingControlGroup() != this) return;
    port->SetTrackingControlGroup(nullptr);
    port->FinishTracking();
}

bool CControlGroup::IsTracking(const CControl* control) const {
    return control && trackingControl == control && port && port->IsTracking();
}

}  // namespace norava
