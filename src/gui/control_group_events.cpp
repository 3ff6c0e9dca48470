#include "gui/control_group.h"
#include "gui/window_port.h"

namespace norava {

bool CControlGroup::MayHandleEvents() const {
    if (!port || disabled) return false;
    const CControlGroup* modal = port->GetSuperControlGroup();
    return !modal || modal == this;
}

CControl* CControlGroup::FindMouseTarget() const {
    if (!MayHandleEvents()) return nullptr;
    const auto ifEnabled = [](CControl* control) {
        return control->IsDisabled() ? nullptr : control;
    };
    if (trackingControl) return ifEnabled(trackingControl);
    if (CControl* modal = GetSuperControl()) return ifEnabled(modal);
    const CPoint mouse = port->GetMousePos();
    for (const auto& control : controls)
        if (!control->IsDisabled() && control->GetRect().IsPointInside(mouse)) return control.get();
    return nullptr;
}

CControl* CControlGroup::FindKeyTarget() const {
    if (!MayHandleEvents()) return nullptr;
    CControl* target = GetSuperControl() ? GetSuperControl() : focusedControl;
    return target && !target->IsDisabled() ? target : nullptr;
}

bool CControlGroup::WantsKeys() const {
    const CControl* const target = FindKeyTarget();
    return target && target->WantsKeys();
}

bool CControlGroup::MouseDoubleClick() {
    CControl* target = FindMouseTarget();
    return target && target->MouseDoubleClick();
}

bool CControlGroup::MouseDown() {
    CControl* target = FindMouseTarget();
    return target && target->MouseDown();
}

bool CControlGroup::MouseUp() {
    CControl* target = FindMouseTarget();
    return target && target->MouseUp();
}

bool CControlGroup::MouseMove() {
    CControl* target = FindMouseTarget();
    return target && target->MouseMove();
}

bool CControlGroup::MouseWheel(float right, float up) {
    CControl* target = FindMouseTarget();
    return target && target->MouseWheel(right, up);
}

bool CControlGroup::KeyDown(int key) {
    CControl* target = FindKeyTarget();
    return target && target->KeyDown(key);
}

bool CControlGroup::KeyUp(int key) {
    CControl* target = FindKeyTarget();
    return target && target->KeyUp(key);
}

bool CControlGroup::TimerEvent() {
    if (!MayHandleEvents()) return false;
    bool used = false;
    for (CControl* control : ListControls()) {
        // A handler before may have destroyed or disabled this one.
        if (control->group == this && !control->IsDisabled()) used = control->TimerEvent() || used;
    }
    return used;
}

}  // namespace norava
