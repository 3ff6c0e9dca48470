#include "framework/plugin_wrapper.h"

#include "framework/text_copy.h"

namespace norava {

void CPluginWrapper::ParameterChanged(int, float) {}
void CPluginWrapper::ProgramChanged() {}
void CPluginWrapper::BeginAutomation(int) {}
void CPluginWrapper::FinishAutomation(int) {}
void CPluginWrapper::TQ_RightClick(int) {}

int CPluginWrapper::TQ_GetNumOutputs() {
    return 0;
}

bool CPluginWrapper::TQ_GetOutputName(int, std::span<char> name) {
    CopyText(name, "");
    return false;
}

void CPluginWrapper::TQ_NoteNamesChanged() {}
void CPluginWrapper::TQ_UpdateKeymap() {}
void CPluginWrapper::TQ_PreviewNoteOff(int) {}
void CPluginWrapper::TQ_PreviewNoteOn(int, float) {}

bool CPluginWrapper::ResizeEditor(int, int) {
    return false;
}

}  // namespace norava
