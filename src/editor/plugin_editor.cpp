#include "editor/plugin_editor.h"

#include <mutex>

#include "editor/host_keys.h"
#include "framework/plugin_instance.h"
#include "framework/plugin_renderer.h"
#include "framework/plugin_wrapper.h"
#include "gui/dialogs/file_dialog.h"
#include "gui/dialogs/message_box.h"

namespace norava {

CPluginEditor::CPluginEditor(int scale) : CWindowPort(scale) {}

CPluginEditor::~CPluginEditor() {
    Close();  // while gestures can still be reported
}

bool CPluginEditor::CanOpen() {
    return true;
}

void CPluginEditor::CreateControls() {}

bool CPluginEditor::IsParam(int id) const {
    const CPluginInstance* const definition = GetPluginInstance();
    return definition != nullptr && id >= 0 && id < definition->GetNumParams();
}

bool CPluginEditor::IsAutomable(int id) const {
    const CPluginInstance* const definition = GetPluginInstance();
    return definition != nullptr && id >= 0 && id < definition->GetNumParamsAutomable();
}

float CPluginEditor::GetParamValue(int index) {
    return renderer != nullptr && IsParam(index) ? renderer->GetParamValue(index) : 0.0f;
}

void CPluginEditor::UpdateAllValues() {
    if (renderer == nullptr) return;
    for (const auto& group : GetControlGroups())
        for (const auto& control : group->GetControls())
            if (IsParam(control->GetID())) control->SetValue(GetParamValue(control->GetID()));
}

// From the controls

bool CPluginEditor::ControlClicked(CControl* control) {
    if (control == nullptr) return false;
    if (wrapper != nullptr && IsAutomable(control->GetID()))
        wrapper->BeginAutomation(control->GetID());
    return true;
}

bool CPluginEditor::ControlReleased(CControl* control) {
    if (control == nullptr) return false;
    if (wrapper != nullptr && IsAutomable(control->GetID()))
        wrapper->FinishAutomation(control->GetID());
    return true;
}

bool CPluginEditor::ControlValueChanged(CControl* control, float value) {
    if (control == nullptr || wrapper == nullptr || renderer == nullptr) return false;
    const int id = control->GetID();
    renderer->SetParamValue(id, value);
    // The host sees what the renderer made of it.
    if (IsAutomable(id)) wrapper->ParameterChanged(id, renderer->GetParamValue(id));
    return true;
}

bool CPluginEditor::GetParamText(CControl* control, char* text) {
    text[0] = '\0';
    if (control == nullptr || renderer == nullptr || !IsParam(control->GetID())) return false;
    renderer->GetParamDisplay(control->GetID(), std::span<char>(text, kNameBufferBytes));
    return true;
}

bool CPluginEditor::ProcessMouseDown() {
    const CPluginInstance* const definition = GetPluginInstance();
    const bool asksHost = definition != nullptr && definition->IsTQ() && wrapper != nullptr &&
                          GetMouseButtonID() == kMouseRight && !IsTracking();
    if (asksHost) {
        for (const auto& group : GetControlGroups()) {
            for (const auto& control : group->GetControls()) {
                if (control->IsDisabled() || !IsAutomable(control->GetID())) continue;
                if (!control->GetRect().IsPointInside(GetMousePos())) continue;
                wrapper->TQ_RightClick(control->GetID());
                return true;
            }
        }
    }
    return CWindowPort::ProcessMouseDown();
}

// Polling

void CPluginEditor::FollowChanges() {
    if (renderer == nullptr) return;
    const std::uint32_t allChanged = renderer->GetAllChangedCount();
    if (allChanged != allChangedSeen) {
        allChangedSeen = allChanged;
        ProgramChanged();
        UpdateAllValues();
        Redraw();
    }
    for (int id = 0; id < renderer->GetNumParams(); ++id) {
        if (!renderer->TakeParamNeedUpdate(id)) continue;
        CControl* const control = GetControlByID(id);
        const float value = renderer->GetParamValue(id);
        // A NaN differs from everything, itself too.
        if (control != nullptr && control->GetValue() != value) control->SetValueAndRedraw(value);
    }
}

bool CPluginEditor::TimerEvent() {
    FollowChanges();
    return CWindowPort::TimerEvent();
}

// From the host adapter

void CPluginEditor::Connect(CPluginRenderer* newRenderer, CPluginWrapper* newWrapper) {
    renderer = newRenderer;
    wrapper = newWrapper;
}

// Pictures are chosen by the scale.
bool CPluginEditor::CanOpenEditor() {
    SetSclFactor(GetZoom());
    return CanOpen();
}

bool CPluginEditor::OpenEditor(void* parent) {
    if (IsOpen() || renderer == nullptr) return false;
    allChangedSeen = renderer->GetAllChangedCount();
    for (int id = 0; id < renderer->GetNumParams(); ++id)
        (void)renderer->TakeParamNeedUpdate(id);
    ProgramChanged();
    UpdateAllValues();
    openedIn = parent;
    return Open(parent);
}

EditorSize CPluginEditor::GetEditorSize() const {
    const int own = IsOpen() ? GetSclFactor() : GetZoom();
    const int scale = announcedScale > 0 ? announcedScale : own;
    return {GetSize().cx * scale, GetSize().cy * scale};
}

int CPluginEditor::GetZoom() const {
    static std::once_flag chosen;
    CPluginInstance* const definition = GetPluginInstance();
    if (definition == nullptr) return 1;
    std::call_once(chosen, [definition] { definition->SetUIScalingFactor(GetNativeScale()); });
    return definition->GetUIScalingFactor();
}

void CPluginEditor::SetZoom(int factor) {
    CPluginInstance* const definition = GetPluginInstance();
    if (definition == nullptr) return;
    // All panels share the factor; another one may have changed it, or this one's host refused it.
    if (factor == GetZoom() && (!IsOpen() || factor == GetSclFactor())) return;
    definition->SetUIScalingFactor(factor);
    if (!IsOpen() || factor == GetSclFactor()) return;
    // Hosts ask for the rectangle while they resize. One that does not resize keeps this window as
    // it is; the next opening has the new size.
    announcedScale = factor;
    const EditorSize wanted = GetEditorSize();
    const bool resized = wrapper != nullptr && wrapper->ResizeEditor(wanted.width, wanted.height);
    announcedScale = 0;
    if (!resized)
        return ShowMessage("Size", "This host keeps the window's size. The panel opens at " +
                                       std::to_string(100 * factor) + " % next time.");
    void* const parent = openedIn;
    Close();
    if (CanOpenEditor()) OpenEditor(parent);
}

bool CPluginEditor::EditorKeyDown(const EditorKey& key) {
    const unsigned pressed = KeyFromHost(key);
    return pressed != 0 && PressKey(pressed, ModifiersFromHost(key));
}

bool CPluginEditor::EditorKeyUp(const EditorKey& key) {
    const unsigned released = KeyFromHost(key);
    return released != 0 && ReleaseKey(released, ModifiersFromHost(key));
}

// Over the window

bool CPluginEditor::AskForFile(const FileRequest& request,
                               std::function<void(const std::string& path)> chosen) {
    FileDialogRequest wanted;
    wanted.title = request.title;
    wanted.folder = request.folder;
    wanted.suggestedName = request.suggestedName;
    wanted.typeName = request.typeName;
    wanted.extensions.assign(request.extensions.begin(), request.extensions.end());
    wanted.save = request.save;
    return CFileDialog::Ask(*this, wanted, std::move(chosen));
}

void CPluginEditor::ShowMessage(const std::string& title, const std::string& text) {
    CMessageBox::Tell(*this, title, text);
}

void CPluginEditor::Redraw() {
    DrawToBuffer();
    UpdateScreen();
}

}  // namespace norava
