#include "gui/dispatch.h"
#include "gui/window_port.h"

namespace norava {

Dispatch::~Dispatch() {
    if (state->depth == 1 && state->port) state->port->FinishEvent();
    if (--state->depth > 0) return;
    state->DeleteWaiting();
    if (state->port) state->port->DeleteDestroyedControls();
}

void CWindowPort::DeleteDestroyedControls() {
    for (const auto& group : groups)
        group->DeleteDestroyed();
}

// What follows from an event as a whole.
void CWindowPort::FinishEvent() {
    if (redrawMissed && !IsSuper()) {
        redrawMissed = false;
        DrawToBuffer();
        UpdateScreen();
    }
    const CControlGroup* modal = GetSuperControlGroup();
    const CControlGroup* group = modal ? modal : focusGroup;
    const bool wanted = group && group->WantsKeys();
    if (!view || wanted == keyboardWanted) return;
    keyboardWanted = wanted;
    view->WantKeyboard(wanted);
}

CControlGroup* CWindowPort::GetSuperControlGroup() const {
    CControlGroup* latest = nullptr;
    for (CControlGroup* group : superGroups.GetMembers())
        if (!group->IsDisabled()) latest = group;
    return latest;
}

CControl* CWindowPort::GetSuperControl() const {
    const CControlGroup* group = GetSuperControlGroup();
    return group ? group->GetSuperControl() : nullptr;
}

void CWindowPort::SetSuperControlGroup(CControlGroup* group, bool on) {
    if (on) {
        superGroups.Push(group);
    } else if (superGroups.Remove(group) && dispatch->depth == 0) {
        FinishEvent();
    }
}

void CWindowPort::FocusControlGroup(CControlGroup* group) {
    if (focusGroup == group) return;
    const std::shared_ptr<const DispatchState> state = dispatch;
    if (CControlGroup* before = std::exchange(focusGroup, nullptr)) before->LoseFocus();
    // That handler may have deleted the window, destroyed the group or given the focus to a third.
    if (!state->port || focusGroup || !Holds(group)) return;
    focusGroup = group;
    group->TookFocus();
}

void CWindowPort::SetTrackingControlGroup(CControlGroup* group) {
    if (group && trackingGroup && trackingGroup != group)
        trackingGroup->SetTrackingControl(nullptr);
    trackingGroup = group;
}

void CWindowPort::StartTracking(bool hidePointer) {
    if (!IsOpen() || tracking) return;
    tracking = true;
    trackingOption = hidePointer;
    view->TrackMouse(true, hidePointer);
}

void CWindowPort::FinishTracking() {
    if (!tracking) return;
    tracking = false;
    if (view) view->TrackMouse(false, false);
}

template <typename Handler>
bool CWindowPort::RouteMouse(const Handler& handler) {
    const Dispatch scope(*dispatch);
    if (CControlGroup* modal = GetSuperControlGroup()) return handler(*modal);
    if (trackingGroup) return handler(*trackingGroup);
    for (CControlGroup* group : ListGroups()) {
        if (Holds(group) && !group->IsDisabled() && handler(*group)) return true;
        if (!scope.IsPortAlive()) return true;
    }
    return false;
}

template <typename Handler>
bool CWindowPort::RouteToAll(const Handler& handler) {
    const Dispatch scope(*dispatch);
    if (CControlGroup* modal = GetSuperControlGroup()) return handler(*modal);
    bool used = false;
    for (CControlGroup* group : ListGroups()) {
        if (Holds(group) && !group->IsDisabled()) used = handler(*group) || used;
        if (!scope.IsPortAlive()) return true;
    }
    return used;
}

bool CWindowPort::ProcessMouseDoubleClick() {
    return RouteMouse([](CControlGroup& group) { return group.MouseDoubleClick(); });
}

bool CWindowPort::ProcessMouseDown() {
    return RouteMouse([](CControlGroup& group) { return group.MouseDown(); });
}

bool CWindowPort::ProcessMouseUp() {
    return RouteMouse([](CControlGroup& group) { return group.MouseUp(); });
}

bool CWindowPort::ProcessMouseMove() {
    return RouteMouse([](CControlGroup& group) { return group.MouseMove(); });
}

bool CWindowPort::ProcessMouseWheel(float right, float up) {
    return RouteMouse([=](CControlGroup& group) { return group.MouseWheel(right, up); });
}

bool CWindowPort::ProcessKeyDown(unsigned key) {
    return RouteToAll([key](CControlGroup& group) { return group.KeyDown(static_cast<int>(key)); });
}

bool CWindowPort::ProcessKeyUp(unsigned key) {
    return RouteToAll([key](CControlGroup& group) { return group.KeyUp(static_cast<int>(key)); });
}

bool CWindowPort::TimerEvent() {
    if (view && !tracking)
        if (const std::optional<CPoint> location = view->GetMouseLocation())
            mousePosition = *location;
    return RouteToAll([](CControlGroup& group) { return group.TimerEvent(); });
}

}  // namespace norava
