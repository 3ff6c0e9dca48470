#include "presets/library_snapshot.h"

#include <algorithm>

#include "files/natural_order.h"

namespace norava {

namespace {

using IdTable = std::vector<std::pair<LibraryId, int>>;

template <typename Items>
IdTable TableOf(const Items& items) {
    IdTable table;
    table.reserve(items.size());
    for (const auto& item : items)
        table.emplace_back(item.id, static_cast<int>(table.size()));
    std::ranges::sort(table);
    return table;
}

int Find(const IdTable& table, LibraryId id) {
    const auto found = std::ranges::lower_bound(table, id, {}, &IdTable::value_type::first);
    return found != table.end() && found->first == id ? found->second : -1;
}

bool IsInside(int index, std::size_t size) {
    return index >= 0 && static_cast<std::size_t>(index) < size;
}

}  // namespace

bool ByShownName::operator()(std::string_view a, std::string_view b) const {
    const int byName = CompareNaturally(ProgramNameOf(a), ProgramNameOf(b));
    return byName != 0 ? byName < 0 : CompareNaturally(a, b) < 0;
}

int LibraryCategory::IndexOf(LibraryId program) const {
    return Find(programsById, program);
}

LibrarySnapshot::LibrarySnapshot(std::string root, std::vector<LibraryCategory> sorted,
                                 bool readable, bool complete)
    : rootPath(std::move(root)),
      categories(std::move(sorted)),
      isReadable(readable),
      isComplete(complete) {
    categoriesById = TableOf(categories);
    for (LibraryCategory& category : categories)
        category.programsById = TableOf(category.programs);
}

const LibraryCategory* LibrarySnapshot::Category(int index) const {
    return IsInside(index, categories.size()) ? &categories[static_cast<std::size_t>(index)]
                                              : nullptr;
}

const LibraryProgram* LibrarySnapshot::Program(int category, int index) const {
    const LibraryCategory* const in = Category(category);
    if (in == nullptr || !IsInside(index, in->programs.size())) return nullptr;
    return &in->programs[static_cast<std::size_t>(index)];
}

int LibrarySnapshot::IndexOf(LibraryId category) const {
    return norava::Find(categoriesById, category);
}

bool LibrarySnapshot::IsListed() const {
    return std::ranges::all_of(categories, &LibraryCategory::isListed);
}

std::string LibrarySnapshot::FolderOf(const LibraryCategory& category) const {
    return rootPath + '/' + category.folderName;
}

std::string LibrarySnapshot::PathOf(const LibraryCategory& category,
                                    const LibraryProgram& program) const {
    return FolderOf(category) + '/' + program.fileName;
}

std::pair<const LibraryCategory*, const LibraryProgram*> LibrarySnapshot::Find(
    std::string_view path) const {
    if (!path.starts_with(rootPath)) return {};
    path.remove_prefix(rootPath.size());
    const std::size_t slash = path.rfind('/');
    if (!path.starts_with('/') || slash == 0 || slash == path.npos) return {};
    const std::string_view folder = path.substr(1, slash - 1);
    const std::string_view file = path.substr(slash + 1);
    const auto category = std::ranges::find(categories, folder, &LibraryCategory::folderName);
    if (category == categories.end()) return {};
    const auto program = std::ranges::find(category->programs, file, &LibraryProgram::fileName);
    if (program == category->programs.end()) return {};
    return {&*category, &*program};
}

}  // namespace norava
