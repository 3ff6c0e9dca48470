#include "gui/window_port.h"

#include <algorithm>

#include "gui/dispatch.h"
#include "gui/window_events.h"

namespace norava {

CWindowPort::CWindowPort(int scale)
    : dispatch(std::make_shared<DispatchState>(this)), buffer(scale), underOverlay(scale) {
    // What is put back under something faint is as fine as it was.
    buffer.SetHasDetail(true);
    underOverlay.SetHasDetail(true);
    CWindowPort::AttachControlGroup(std::make_unique<CControlGroup>());
}

CWindowPort::~CWindowPort() {
    CWindowPort::Close();
    dispatch->port = nullptr;
    // When one of our own handlers is running, it still stands in a control of ours; the state goes
    // with the last who holds it.
    for (auto& group : groups) {
        group->port = nullptr;
        dispatch->groups.push_back(std::move(group));
    }
}

bool CWindowPort::Open() {
    return Open(static_cast<void*>(nullptr));
}

bool CWindowPort::Open(CWindowPort* parent) {
    return parent && parent->IsOpen() && Open(parent->view->GetNativeHandle());
}

bool CWindowPort::Open(void* parent) {
    if (IsOpen() || !buffer.IsSafe()) return false;
    DrawToBuffer();
    const int scale = buffer.GetSclFactor();
    view = makeView ? makeView(dispatch->events, parent, size, scale)
                    : OpenNativeView(dispatch->events, parent, size, scale);
    if (!view) return false;
    keyboardWanted = false;
    UpdateScreen();
    return true;
}

void CWindowPort::Close() {
    if (!IsOpen()) return;
    const Dispatch scope(*dispatch);
    EndInteraction();
    if (!scope.IsPortAlive()) return;
    // The view may be in the middle of telling us something.
    if (view && dispatch->depth > 1) dispatch->views.push_back(std::move(view));
    view.reset();
    buttonsDown = 0;
}

void CWindowPort::EndInteraction() {
    const std::shared_ptr<const DispatchState> state = dispatch;
    if (CControlGroup* group = std::exchange(focusGroup, nullptr)) group->LoseFocus();
    if (!state->port) return;
    for (CControlGroup* group : ListGroups()) {
        if (Holds(group)) group->ReleaseAll();
        if (!state->port) return;
        if (Holds(group)) group->WindowCloses();
        if (!state->port) return;
    }
    FinishTracking();
    trackingGroup = nullptr;
}

void CWindowPort::CancelTracking() {
    CControl* control = trackingGroup ? trackingGroup->GetTrackingControl() : nullptr;
    if (control) trackingGroup->ReleaseControl(control);
}

void CWindowPort::RunEvents() {
    if (!IsOpen()) return;
    const Dispatch scope(*dispatch);
    view->RunEvents();
}

bool CWindowPort::PressKey(unsigned key, Modifiers keys) {
    return dispatch->events.KeyPressed(key, keys);
}

bool CWindowPort::ReleaseKey(unsigned key, Modifiers keys) {
    return dispatch->events.KeyReleased(key, keys);
}

void CWindowPort::SetSize(CSize newSize) {
    size = newSize;
    buffer.SetSize(newSize);
    GetRootControlGroup()->SetRect(CRect({0, 0}, newSize));
    if (!IsOpen()) return;
    view->Resize(newSize);
    DrawToBuffer();
    UpdateScreen();
}

void CWindowPort::SetSclFactor(int scale) {
    if (IsOpen()) return;
    buffer.SetSclFactor(scale);
    underOverlay.SetSclFactor(scale);
}

CGraphicBuffer* CWindowPort::GetGraphicBuffer() {
    return buffer.IsSafe() ? &buffer : nullptr;
}

bool CWindowPort::Holds(const CControlGroup* group) const {
    return std::any_of(groups.begin(), groups.end(),
                       [group](const auto& owned) { return owned.get() == group; });
}

std::vector<CControlGroup*> CWindowPort::ListGroups() const {
    std::vector<CControlGroup*> list;
    for (const auto& group : groups)
        list.push_back(group.get());
    return list;
}

CControlGroup* CWindowPort::AttachControlGroup(std::unique_ptr<CControlGroup> group) {
    if (!group) return nullptr;
    group->port = this;
    return groups.emplace_back(std::move(group)).get();
}

std::unique_ptr<CControlGroup> CWindowPort::DetachControlGroup(CControlGroup* group) {
    if (!Holds(group) || group == GetRootControlGroup()) return nullptr;
    const std::shared_ptr<const DispatchState> state = dispatch;
    ReleaseGroup(group);
    if (!state->port) return nullptr;
    const auto found = std::find_if(groups.begin(), groups.end(),
                                    [group](const auto& owned) { return owned.get() == group; });
    if (found == groups.end()) return nullptr;  // a handler has destroyed it
    std::unique_ptr<CControlGroup> detached = std::move(*found);
    groups.erase(found);
    detached->port = nullptr;
    return detached;
}

void CWindowPort::DestroyControlGroup(CControlGroup* group) {
    const std::shared_ptr<DispatchState> state = dispatch;
    if (auto detached = DetachControlGroup(group)) state->groups.push_back(std::move(detached));
}

void CWindowPort::ReleaseGroup(CControlGroup* group) {
    const std::shared_ptr<const DispatchState> state = dispatch;
    group->ReleaseAll();
    if (state->port && focusGroup == group) {
        focusGroup = nullptr;
        group->LoseFocus();
    }
    if (!state->port) return;
    if (trackingGroup == group) {
        trackingGroup = nullptr;
        FinishTracking();
    }
    superGroups.RemoveAll(group);
    std::erase_if(overlays,
                  [=](const Overlay& shown) { return shown.control->GetControlGroup() == group; });
}

CControlGroup* CWindowPort::GetControlGroupByID(int id) const {
    for (const auto& group : groups)
        if (group->GetID() == id) return group.get();
    return nullptr;
}

CControlGroup* CWindowPort::GetControlGroupByNum(int index) const {
    if (index < 0 || index >= static_cast<int>(groups.size())) return nullptr;
    return groups[static_cast<size_t>(index)].get();
}

void CWindowPort::DisableControlGroup(int id, bool on) {
    if (CControlGroup* group = GetControlGroupByID(id)) group->Disable(on);
}

CControl* CWindowPort::AttachControl(std::unique_ptr<CControl> control) {
    return GetRootControlGroup()->AttachControl(std::move(control));
}

void CWindowPort::DestroyControl(CControl* control) {
    const std::shared_ptr<const DispatchState> state = dispatch;
    for (CControlGroup* group : ListGroups())
        group->DestroyControl(control);
}

CControl* CWindowPort::GetControlByID(int id) const {
    for (const auto& group : groups)
        if (CControl* control = group->GetControlByID(id)) return control;
    return nullptr;
}

void CWindowPort::SetControlValue(int id, float value) {
    if (CControl* control = GetControlByID(id)) control->SetValue(value);
}

bool CWindowPort::SetControlValueAndRedraw(int id, float value) {
    CControl* control = GetControlByID(id);
    return control && control->SetValueAndRedraw(value);
}

bool CWindowPort::ControlClicked(CControl*) {
    return false;
}
bool CWindowPort::ControlReleased(CControl*) {
    return false;
}
bool CWindowPort::ControlValueChanged(CControl*, float) {
    return false;
}
bool CWindowPort::DropFile(const char*) {
    return false;
}
bool CWindowPort::DragEntered(const char*) {
    return false;
}
void CWindowPort::DragLeft(const char*) {}

bool CWindowPort::GetParamText(CControl*, char* text) {
    text[0] = '\0';
    return false;
}

}  // namespace norava
