#include "files/file_list.h"

#include <algorithm>
#include <cstring>

#include "files/file_system.h"
#include "files/text_buffer.h"

namespace norava {

namespace {

// Last part of a path, split at its last '.'.
struct EntryName {
    explicit EntryName(std::string_view path) : whole(path.substr(path.rfind('/') + 1)) {
        const size_t dot = whole.rfind('.');
        name = whole.substr(0, dot);
        if (dot != whole.npos) extension = whole.substr(dot + 1);
    }

    std::string_view whole, name, extension;
};

}  // namespace

bool CFileList::addFilter(const char* extension, bool forFolders) {
    CFileListFilter filter;
    filter.forFolders = forFolders;
    if (!CopyText(filter.extension, sizeof filter.extension, extension ? extension : ""))
        return false;
    filters.push_back(filter);
    return true;
}

bool CFileList::Accepts(std::string_view extension, bool isFolder) const {
    if (filters.empty()) return true;
    return std::any_of(filters.begin(), filters.end(), [&](const CFileListFilter& filter) {
        if (filter.forFolders != isFolder) return false;
        return filter.extension[0] == '\0' || extension == filter.extension;
    });
}

bool CFileList::findFiles(const char* folder) {
    using file_system::EntryKind;
    resetFileList();
    if (folder == nullptr || *folder == '\0') return false;
    std::string prefix = folder;
    if (!prefix.ends_with('/')) prefix += '/';

    size_t offered = 0;
    const auto listing = file_system::ListFolder(folder, [&](const char* name, EntryKind kind) {
        if (offered == maxEntries) return false;
        const bool usable = kind == EntryKind::file || kind == EntryKind::folder;
        const std::string path = prefix + name;
        if (!usable || path.size() >= kPathBufferBytes) return true;
        addItem(path.c_str(), kind == EntryKind::folder);
        ++offered;
        return true;
    });
    return listing == file_system::Listing::done;
}

void CFileList::addItem(const char* path, bool isFolder) {
    if (path == nullptr || *path == '\0' || std::strlen(path) >= kPathBufferBytes) return;
    const EntryName entry(path);
    if (entry.whole == "." || entry.whole == "..") return;
    if (Accepts(entry.extension, isFolder)) items.push_back({path, isFolder});
}

const char* CFileList::getFileInfo(long index, char* name, char* extension, bool* isFolder) const {
    if (index < 0 || index >= getNumFilesInList()) return nullptr;
    const CFileListItem& item = items[static_cast<size_t>(index)];
    const EntryName entry(item.path);
    if (name) CopyText(name, kNameBufferBytes, entry.name);
    if (extension) CopyText(extension, kNameBufferBytes, entry.extension);
    if (isFolder) *isFolder = item.isFolder;
    return item.path.c_str();
}

}  // namespace norava
