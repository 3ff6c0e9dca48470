#include "presets/preset_list.h"

#include <algorithm>

#include "files/text_buffer.h"
#include "framework/plugin_editor_interface.h"
#include "framework/plugin_renderer.h"

namespace norava {

CPresetList::CPresetList(CPluginRenderer* pluginRenderer, const LibraryPlace& place)
    : renderer(pluginRenderer),
      extension(place.extension),
      rootPath(place.root),
      library(PresetLibrary::Open(place)) {}

CPresetList::~CPresetList() = default;

std::shared_ptr<const LibrarySnapshot> CPresetList::GetLibrary() const {
    return library ? library->Get() : std::make_shared<const LibrarySnapshot>();
}

void CPresetList::WaitUntilRead() const {
    if (library) library->WaitUntilRead();
}

// For choices that people make of what is listed.
std::shared_ptr<const LibrarySnapshot> CPresetList::GetListedLibrary() const {
    if (library) library->WaitUntilListed();
    return GetLibrary();
}

std::uint32_t CPresetList::GetLibraryRevision() const {
    return library ? library->Revision() : 0;
}

bool CPresetList::CreateCatList() {
    if (library) library->Refresh({});
    current = Position{};
    return GetLibrary()->IsReadable();
}

bool CPresetList::CreatePrgList() {
    if (GetCurrentCat() < 0) return false;
    library->Refresh(GetCatFolder());
    const auto snapshot = GetLibrary();
    const int category = GetCurrentCat();
    if (category < 0) return false;
    Select(*snapshot, category, 0);
    return true;
}

std::string CPresetList::GetCatFolder() const {
    const auto snapshot = GetLibrary();
    const auto* const category = snapshot->Category(snapshot->IndexOf(current.load().category));
    return category != nullptr ? snapshot->FolderOf(*category) : rootPath;
}

// Position

bool CPresetList::Select(const LibrarySnapshot& snapshot, int category, int program) {
    const LibraryCategory* const in = snapshot.Category(category);
    if (in == nullptr) return false;
    const LibraryProgram* const chosen = snapshot.Program(category, program);
    Names chosenNames;
    chosenNames.position = {in->id, chosen != nullptr ? chosen->id : kNoLibraryId};
    chosenNames.category = in->Name();
    if (chosen != nullptr) {
        chosenNames.program = chosen->Name();
        chosenNames.path = snapshot.PathOf(*in, *chosen);
    }
    const std::lock_guard lock(namesMutex);
    if (chosen == nullptr) {
        // A category without programs: the program that was loaded keeps its name.
        chosenNames.program = names.program;
        chosenNames.path = names.path;
    }
    const Position before = current.exchange(chosenNames.position);
    names = std::move(chosenNames);
    return !(before == names.position);
}

bool CPresetList::SetCurrentCat(int index) {
    const auto snapshot = GetListedLibrary();
    if (snapshot->Category(index) == nullptr) return false;
    const bool changed = snapshot->IndexOf(current.load().category) != index;
    Select(*snapshot, index, 0);
    return changed;
}

bool CPresetList::SetCurrentPrg(int index) {
    const auto snapshot = GetListedLibrary();
    const int category = snapshot->IndexOf(current.load().category);
    if (snapshot->Program(category, index) == nullptr) return false;
    return Select(*snapshot, category, index);
}

bool CPresetList::NextProgram() {
    return SetCurrentPrg(GetCurrentPrg() + 1);
}

bool CPresetList::PrevProgram() {
    const int index = GetCurrentPrg();
    return SetCurrentPrg(index < 0 ? 0 : index - 1);
}

int CPresetList::GetCurrentCat() const {
    return GetLibrary()->IndexOf(current.load().category);
}

int CPresetList::GetCurrentPrg() const {
    const auto snapshot = GetLibrary();
    const Position position = current;
    const auto* const category = snapshot->Category(snapshot->IndexOf(position.category));
    return category != nullptr ? category->IndexOf(position.program) : -1;
}

void CPresetList::SetProgramPath(const char* path) {
    if (path == nullptr) return;
    Names wanted;
    wanted.path = path;
    wanted.program = ProgramNameOf(wanted.path);
    wanted.category = FolderNameOf(wanted.path);
    auto snapshot = GetLibrary();
    if (library && snapshot->Find(wanted.path).second == nullptr) {
        library->Refresh(wanted.path.substr(0, wanted.path.rfind('/')));
        snapshot = GetLibrary();
    }
    wanted.position = Find(*snapshot, wanted);
    const std::lock_guard lock(namesMutex);
    names = std::move(wanted);
    current = names.position;
}

// The very file when the library holds it; otherwise the first of its name in the first category of
// its folder's name, or that category's first program.
CPresetList::Position CPresetList::Find(const LibrarySnapshot& snapshot,
                                        const Names& wanted) const {
    if (const auto [category, program] = snapshot.Find(wanted.path); program != nullptr)
        return {category->id, program->id};
    const auto& categories = snapshot.Categories();
    const std::string_view folder = std::string_view(wanted.path).substr(0, wanted.path.rfind('/'));
    auto category = std::ranges::find_if(
        categories, [&](const LibraryCategory& c) { return snapshot.FolderOf(c) == folder; });
    if (category == categories.end())
        category = std::ranges::find(categories, wanted.category, &LibraryCategory::Name);
    if (category == categories.end()) return {};
    if (category->programs.empty()) return {category->id, kNoLibraryId};
    const auto program =
        std::ranges::find(category->programs, wanted.program, &LibraryProgram::Name);
    const bool found = program != category->programs.end();
    return {category->id, found ? program->id : category->programs.front().id};
}

// Names

CPresetList::Names CPresetList::CurrentNames() const {
    const auto snapshot = GetLibrary();
    const std::lock_guard lock(namesMutex);
    const Position position = current;
    if (names.position == position) return names;
    names.position = position;
    const LibraryCategory* const category =
        snapshot->Category(snapshot->IndexOf(position.category));
    if (category == nullptr) return names;
    names.category = category->Name();
    const int index = category->IndexOf(position.program);
    if (index < 0) return names;
    const LibraryProgram& program = category->programs[static_cast<std::size_t>(index)];
    names.program = program.Name();
    names.path = snapshot->PathOf(*category, program);
    return names;
}

std::string CPresetList::GetProgramPath() const {
    return CurrentNames().path;
}

std::string CPresetList::GetProgramName() const {
    return CurrentNames().program;
}

std::string CPresetList::GetCategoryName() const {
    return CurrentNames().category;
}

// Audio thread

CPresetList::Selection CPresetList::Take(const LibrarySnapshot& snapshot, int category, int program,
                                         SelectedProgram& taken) NORAVA_NONBLOCKING {
    const LibraryProgram* const chosen = snapshot.Program(category, program);
    if (chosen == nullptr) {
        const bool mayCome = program >= 0 && !snapshot.Category(category)->isListed;
        return mayCome ? Selection::notRead : Selection::nothing;
    }
    const ProgramBlock* const block = chosen->block.get();
    if (block == nullptr) return Selection::notRead;
    current.store({snapshot.Category(category)->id, chosen->id});
    if (!block->IsUsable()) return Selection::refused;
    taken.block = *block;
    CopyText(taken.name.data(), taken.name.size(), chosen->Name());
    return Selection::taken;
}

CPresetList::Selection CPresetList::TakeProgram(int index,
                                                SelectedProgram& program) NORAVA_NONBLOCKING {
    if (!library) return Selection::nothing;
    const PresetLibrary::Reader snapshot(*library);
    const Position position = current.load();
    const int category = snapshot->IndexOf(position.category);
    if (category < 0) return Selection::nothing;
    if (snapshot->Category(category)->IndexOf(position.program) == index) return Selection::nothing;
    return Take(*snapshot, category, index, program);
}

CPresetList::Selection CPresetList::TakeFirstOfCategory(int index, SelectedProgram& program)
    NORAVA_NONBLOCKING {
    if (!library) return Selection::nothing;
    const PresetLibrary::Reader snapshot(*library);
    const LibraryCategory* const category = snapshot->Category(index);
    if (category == nullptr) return Selection::nothing;
    if (category->isListed && category->programs.empty())
        current.store({category->id, kNoLibraryId});
    return Take(*snapshot, index, 0, program);
}

// Panels

void CPresetList::OpenEditor() {
    if (CPluginEditorInterface* const editor = renderer->GetEditor()) editor->ShowBrowser();
}

void CPresetList::OpenAboutBox() {
    if (CPluginEditorInterface* const editor = renderer->GetEditor()) editor->ShowAboutBox();
}

}  // namespace norava
