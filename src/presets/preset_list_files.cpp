#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "files/file_manager.h"
#include "files/file_system.h"
#include "framework/plugin_editor_interface.h"
#include "framework/plugin_instance.h"
#include "framework/plugin_renderer.h"
#include "framework/plugin_wrapper.h"
#include "presets/preset_list.h"

// Loading and saving of single programs.

namespace norava {

namespace {

constexpr const char* kHomelessCategory = "User";

int NumReportedParams(CPluginRenderer& renderer) {
    const CPluginInstance* const definition = GetPluginInstance();
    const int automable = definition != nullptr ? definition->GetNumParamsAutomable() : 0;
    return std::clamp(automable, 0, renderer.GetNumParams());
}

std::vector<float> ReportedValues(CPluginRenderer& renderer) {
    std::vector<float> values(static_cast<std::size_t>(NumReportedParams(renderer)));
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = renderer.GetParamValue(static_cast<int>(i));
    return values;
}

// A NaN differs from everything, itself too.
void ReportDifferences(CPluginRenderer& renderer, const std::vector<float>& before) {
    CPluginWrapper* const wrapper = renderer.GetWrapper();
    if (wrapper == nullptr) return;
    for (std::size_t i = 0; i < before.size(); ++i) {
        const int index = static_cast<int>(i);
        const float value = renderer.GetParamValue(index);
        if (value != before[i]) wrapper->ParameterChanged(index, value);
    }
}

std::string FolderOf(const std::string& path) {
    return path.substr(0, path.rfind('/'));
}

// The folder, or the nearest one round it that exists.
std::string ExistingFolder(std::string folder) {
    while (folder.find('/', 1) != folder.npos &&
           file_system::KindOf(folder.c_str()) != file_system::EntryKind::folder)
        folder = FolderOf(folder);
    return folder;
}

}  // namespace

bool CPresetList::AskForFile(bool save) {
    CPluginEditorInterface* const editor = renderer->GetEditor();
    if (editor == nullptr) return false;
    const CPluginInstance* const definition = GetPluginInstance();
    const std::string wanted = save ? SavingFolder() : GetCatFolder();
    const std::string folder = ExistingFolder(wanted);
    // A category that is made by the saving, when the user does not cancel it.
    const bool makesCategory = save && folder != wanted && folder == rootPath;
    const std::string newCategory = makesCategory ? wanted : std::string();
    const std::string name = GetProgramName();
    const std::string type =
        std::string(definition != nullptr ? definition->GetPluginName() : "") + " Program";
    const std::array<const char*, 2> extensions = {extension.c_str(), "fxp"};
    FileRequest request;
    request.title = save ? "Save Program" : "Load Program";
    request.folder = folder.c_str();
    request.suggestedName = name.c_str();
    request.typeName = type.c_str();
    request.extensions = std::span(extensions).first(save ? 1 : 2);
    request.save = save;
    return editor->AskForFile(request, [this, save, newCategory](const std::string& path) {
        std::string target = save ? WithExtension(path) : path;
        if (!newCategory.empty() && FolderOf(target) == rootPath)
            target = newCategory + target.substr(rootPath.size());
        // Another name than the user agreed to replace.
        const bool mayReplace =
            target == path || file_system::KindOf(target.c_str()) == file_system::EntryKind::none;
        if (mayReplace && (save ? Save(target) : Load(target))) return;
        if (CPluginEditorInterface* const panel = renderer->GetEditor())
            panel->ShowMessage(save ? "Save Program" : "Load Program",
                               (save ? "This program could not be saved:\n"
                                     : "This file holds no program of this instrument:\n") +
                                   target);
    });
}

// A file without the extension would never be listed.
std::string CPresetList::WithExtension(const std::string& path) const {
    return path.ends_with('.' + extension) ? path : path + '.' + extension;
}

void CPresetList::ShowEverything() const {
    if (CPluginWrapper* const wrapper = renderer->GetWrapper()) wrapper->ProgramChanged();
    CPluginEditorInterface* const editor = renderer->GetEditor();
    if (editor == nullptr) return;
    editor->ProgramChanged();
    editor->ValuesChanged();
    editor->Redraw();
}

bool CPresetList::LoadProgramFromFile(const char* path) {
    return path != nullptr ? Load(path) : AskForFile(false);
}

bool CPresetList::Load(const std::string& path) {
    if (path.empty() || path.size() >= kPathBufferBytes) return false;
    std::optional<ProgramBlock> block = ReadProgramFile(path);
    const auto snapshot = GetLibrary();
    const LibraryProgram* const listed = snapshot->Find(path).second;
    // Programs of the built-in bank have a path and no file when the disk could not take them.
    if (!block && listed != nullptr && !listed->onDisk) block = *listed->block;
    if (!block || !block->IsUsable()) return false;

    const std::vector<float> before = ReportedValues(*renderer);
    if (!renderer->LoadProgram(block->bytes.data(), block->size, ProgramNameOf(path))) return false;
    SetProgramPath(path.c_str());
    ReportDifferences(*renderer, before);
    ShowEverything();
    return true;
}

std::string CPresetList::SavingFolder() const {
    const bool homeless = GetCurrentCat() < 0 && !rootPath.empty();
    return homeless ? rootPath + '/' + kHomelessCategory : GetCatFolder();
}

bool CPresetList::SaveProgramToFile(const char* path) {
    if (library) library->PrepareForSaving();
    if (path == nullptr) return AskForFile(true);
    const std::string name = path;
    if (name.empty() || name.find('/') != name.npos) return Save(name);
    return Save(PathForName(name));
}

std::string CPresetList::PathForName(const std::string& name) const {
    const std::string folder = SavingFolder();
    if (folder.empty() || !file_system::IsFileName(name)) return {};
    return folder + '/' + WithExtension(name);
}

bool CPresetList::WouldReplace(const std::string& name) const {
    return file_system::KindOf(PathForName(name).c_str()) != file_system::EntryKind::none;
}

bool CPresetList::Save(const std::string& path) {
    if (path.empty() || path.size() >= kPathBufferBytes) return false;
    const int size = renderer->SaveState(nullptr);
    if (size < 1) return false;
    std::vector<char> state(static_cast<std::size_t>(size));
    renderer->SaveState(state.data());
    const std::string folder = FolderOf(path);
    (void)CFileManager().CreateDirectory(folder.c_str());
    file_system::RemoveLeftovers(folder.c_str());
    if (!file_system::ReplaceFile(path.c_str(), state.data(), state.size())) return false;
    if (library) library->Refresh(folder);
    SetProgramPath(path.c_str());
    renderer->SetProgramName(ProgramNameOf(path));
    ShowEverything();
    return true;
}

std::string CPresetList::GetNameOfSound() const {
    std::array<char, kProgramNameCapacity> name{};
    renderer->GetProgramName(name);
    return name.data();
}

CPresetList::Moment CPresetList::Remember() const {
    Moment moment;
    moment.state.resize(static_cast<std::size_t>(std::max(0, renderer->SaveState(nullptr))));
    if (!moment.state.empty()) renderer->SaveState(moment.state.data());
    moment.programName = GetNameOfSound();
    moment.names = CurrentNames();
    return moment;
}

void CPresetList::Return(const Moment& moment) {
    const std::vector<float> before = ReportedValues(*renderer);
    const int size = static_cast<int>(moment.state.size());
    if (size == 0 || !renderer->LoadProgram(moment.state.data(), size, moment.programName)) return;
    {
        const std::lock_guard lock(namesMutex);
        names = moment.names;
        current = names.position;
    }
    ReportDifferences(*renderer, before);
    ShowEverything();
}

void CPresetList::ResetProgram() {
    const std::vector<float> before = ReportedValues(*renderer);
    renderer->SetParamsToDefault();
    ReportDifferences(*renderer, before);
    ShowEverything();
}

bool CPresetList::LoadFirstProgram() {
    if (library) library->WaitForFirst();
    const auto snapshot = GetLibrary();
    Select(*snapshot, 0, 0);
    const LibraryProgram* const first = snapshot->Program(0, 0);
    const ProgramBlock* const block = first != nullptr ? first->block.get() : nullptr;
    return block != nullptr && block->IsUsable() &&
           renderer->LoadProgram(block->bytes.data(), block->size, first->Name());
}

}  // namespace norava
