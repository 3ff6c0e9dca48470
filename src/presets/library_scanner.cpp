#include "presets/library_scanner.h"

#include <algorithm>
#include <chrono>

#include "files/text_buffer.h"

namespace norava {

namespace {

using file_system::EntryKind;
using file_system::Listing;

int64_t NowInNanoseconds() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

bool IsHidden(std::string_view name) {
    return name.starts_with('.');
}

const std::shared_ptr<const ProgramBlock>& RefusedBlock() {
    static const auto refused = std::make_shared<const ProgramBlock>();
    return refused;
}

}  // namespace

LibraryScanner::LibraryScanner(std::string rootPath, std::string fileExtension)
    : root(std::move(rootPath)), extension(std::move(fileExtension)) {}

bool LibraryScanner::IsProgramFile(const std::string& name) const {
    const std::size_t dot = name.rfind('.');
    if (IsHidden(name) || dot == name.npos) return false;
    const std::string_view ending = std::string_view(name).substr(dot + 1);
    return ending == extension || ending == "fxp";
}

LibraryId LibraryScanner::IdOf(const std::string& path) {
    const auto former = formerIds.extract(path);
    return former ? former.mapped() : nextId++;
}

void LibraryScanner::KeepId(const std::string& path, LibraryId id) {
    if (formerIds.size() > kMaxLibraryPrograms) formerIds.clear();
    formerIds.insert_or_assign(path, id);
}

bool LibraryScanner::ListRoot() {
    std::set<std::string> found;
    const Listing result =
        file_system::ListFolder(root.c_str(), [&](const char* name, EntryKind kind) {
            const bool fits = root.size() + std::string_view(name).size() + 1 < kPathBufferBytes;
            if (file_system::IsUnfinishedName(name)) littered.insert(root);
            if (kind == EntryKind::folder && !IsHidden(name) && fits) found.insert(name);
            return found.size() < kMaxLibraryCategories;
        });
    if (result == Listing::failed) {
        failed.insert(root);
        return isReadable && !isStandIn;
    }
    const bool listed = result == Listing::done;
    if (!listed && isStandIn) return false;
    isStandIn = false;
    changed = changed || isReadable != listed;
    isReadable = listed;
    for (auto old = categories.begin(); old != categories.end();) {
        if (found.contains(old->first)) {
            ++old;
            continue;
        }
        KeepId(old->first, old->second.id);
        for (const auto& [name, program] : old->second.programs)
            KeepId(old->first + '/' + name, program.id);
        numPrograms -= old->second.programs.size();
        changed = true;
        old = categories.erase(old);
    }
    for (const std::string& name : found) {
        const auto [category, isNew] = categories.try_emplace(name);
        if (!isNew) continue;
        category->second.id = IdOf(name);
        changed = true;
        unlisted.push_back(name);
    }
    return isReadable;
}

// Calls `visit` with the file names of a category's programs until it returns false.
Listing LibraryScanner::VisitPrograms(const std::string& folder,
                                      const std::function<bool(std::string)>& visit) {
    const Listing result =
        file_system::ListFolder(folder.c_str(), [&](const char* entry, EntryKind kind) {
            std::string name = entry;
            if (file_system::IsUnfinishedName(name)) littered.insert(folder);
            // A longer path could be listed but never loaded.
            const bool fits = folder.size() + 1 + name.size() < kPathBufferBytes;
            if (kind != EntryKind::file || !fits || !IsProgramFile(name)) return true;
            return visit(std::move(name));
        });
    if (result == Listing::failed) failed.insert(folder);
    return result;
}

// Quicker than a listing, which would sort the folder.
void LibraryScanner::ReadFirst() {
    if (categories.empty() || categories.begin()->second.isListed) return;
    auto& [folderName, category] = *categories.begin();
    const std::string folder = root + '/' + folderName;
    std::string first;
    (void)VisitPrograms(folder, [&](std::string name) {
        if (first.empty() || ByShownName{}(name, first)) first = std::move(name);
        return true;
    });
    if (first.empty()) return;
    const auto [place, isNew] = category.programs.try_emplace(first);
    if (!isNew) return;
    ++numPrograms;
    place->second.id = IdOf(folderName + '/' + first);
    Read(folder, first, place->second);
}

bool LibraryScanner::ListNext() {
    if (unlisted.empty()) return false;
    const std::string name = std::move(unlisted.front());
    unlisted.pop_front();
    ListCategory(name);
    return !unlisted.empty();
}

void LibraryScanner::ListAhead() {
    for (const auto& [name, category] : categories) {
        if (!category.isListed) ListCategory(name);
    }
}

void LibraryScanner::ListAllCategories() {
    for (const auto& [name, category] : categories)
        ListCategory(name);
}

void LibraryScanner::ListCategory(const std::string& folderName) {
    const auto category = categories.find(folderName);
    if (category == categories.end()) return;
    auto& programs = category->second.programs;
    const std::string folder = root + '/' + folderName;

    std::set<std::string> found;
    const std::size_t room = kMaxLibraryPrograms - (numPrograms - programs.size());
    const Listing result = VisitPrograms(folder, [&](std::string name) {
        if (found.size() == room) return false;
        found.insert(std::move(name));
        return true;
    });
    if (result == Listing::failed && category->second.isListed) return;

    numPrograms -= programs.size();
    const auto isGone = [&](const auto& old) {
        if (found.contains(old.first)) return false;
        KeepId(folderName + '/' + old.first, old.second.id);
        return true;
    };
    if (std::erase_if(programs, isGone) > 0) changed = true;
    for (const std::string& name : found) {
        const auto [place, isNew] = programs.try_emplace(name);
        Program& program = place->second;
        if (isNew) {
            program.id = IdOf(folderName + '/' + name);
            changed = true;
        }
        // One without bytes waits to be read already.
        if (isNew || (program.block && MayHaveChanged(folder + '/' + name, program)))
            unread.emplace_back(folderName, name);
    }
    numPrograms += programs.size();
    if (!std::exchange(category->second.isListed, true)) changed = true;
}

// A file that was written shortly before it was read may have been written again without a new
// stamp.
bool LibraryScanner::MayHaveChanged(const std::string& path, const Program& program) const {
    constexpr int64_t kClockResolution = 2'000'000'000;
    if (!program.onDisk || !program.stamp) return true;
    if (program.stamp->modifiedNanoseconds > program.readAtNanoseconds - kClockResolution)
        return true;
    return file_system::StampOf(path.c_str()) != program.stamp;
}

void LibraryScanner::Read(const std::string& folder, const std::string& name, Program& program) {
    const std::string path = folder + '/' + name;
    // First the stamp: a change in between makes the bytes newer than it and is seen the next time.
    program.readAtNanoseconds = NowInNanoseconds();
    program.stamp = file_system::StampOf(path.c_str());
    const std::optional<ProgramBlock> read = ReadProgramFile(path);
    if (!read && program.stamp && IsProgramFileSize(program.stamp->sizeBytes)) {
        program.stamp.reset();  // which stays the same when the file can be read again
        failed.insert(folder);
        if (program.onDisk && program.block) return;
    }
    const ProgramBlock block = read.value_or(ProgramBlock{});
    if (program.onDisk && program.block && *program.block == block) return;
    program.onDisk = true;
    program.block = block.IsUsable() ? std::make_shared<const ProgramBlock>(block) : RefusedBlock();
    changed = true;
}

bool LibraryScanner::ReadSome(int most) {
    for (; most > 0 && !unread.empty(); --most) {
        const auto [folder, name] = std::move(unread.front());
        unread.pop_front();
        const auto category = categories.find(folder);
        if (category == categories.end()) continue;
        const auto program = category->second.programs.find(name);
        if (program == category->second.programs.end()) continue;
        Read(root + '/' + folder, name, program->second);
    }
    return !unread.empty();
}

void LibraryScanner::TakeFactoryBank(std::span<const FactoryProgram> bank) {
    isStandIn = true;
    isReadable = !bank.empty();
    for (const FactoryProgram& source : bank) {
        const auto [category, isNewCategory] = categories.try_emplace(source.category);
        if (isNewCategory) category->second.id = IdOf(source.category);
        category->second.isListed = true;
        const std::string name = std::string(source.name) + '.' + extension;
        const auto [program, isNew] = category->second.programs.try_emplace(name);
        if (!isNew) continue;
        ++numPrograms;
        changed = true;
        program->second.id = IdOf(source.category + ('/' + name));
        program->second.onDisk = false;
        ProgramBlock block;
        block.size = static_cast<int>(std::min(source.block.size(), block.bytes.size()));
        std::copy_n(source.block.begin(), block.size, block.bytes.begin());
        program->second.block = std::make_shared<const ProgramBlock>(block);
    }
}

std::vector<std::string> LibraryScanner::Folders() const {
    std::vector<std::string> folders = {root};
    for (const auto& [name, category] : categories)
        folders.push_back(root + '/' + name);
    return folders;
}

std::string LibraryScanner::CategoryOf(const std::string& folder) const {
    if (!folder.starts_with(root + '/')) return {};
    const std::string name = folder.substr(root.size() + 1);
    return name.find('/') == name.npos ? name : std::string();
}

std::shared_ptr<const LibrarySnapshot> LibraryScanner::MakeSnapshot() const {
    std::vector<LibraryCategory> list;
    list.reserve(categories.size());
    for (const auto& [folder, source] : categories) {
        LibraryCategory& category = list.emplace_back();
        category.folderName = folder;
        category.id = source.id;
        category.isListed = source.isListed;
        category.programs.reserve(source.programs.size());
        for (const auto& [name, program] : source.programs)
            category.programs.push_back({name, program.id, program.onDisk, program.block});
    }
    return std::make_shared<const LibrarySnapshot>(root, std::move(list), isReadable, IsComplete());
}

}  // namespace norava
