#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace norava {

// Which entries a list takes: folders or files, of one extension or of any.
struct CFileListFilter {
    static constexpr size_t kExtensionBytes = 32;

    char extension[kExtensionBytes] = "";  // without '.', empty: any
    bool forFolders = false;
};

struct CFileListItem {
    std::string path;  // full, '/'-separated
    bool isFolder = false;
};

// The entries of one folder, filtered, in the order in which the file system gives them. Names are
// compared case-sensitively. What is neither file nor folder (pipes, devices, links that lead
// nowhere) is left out, and so is an entry whose full path exceeds 1023 bytes. Not for the audio
// thread.
class CFileList {
  public:
    // A dialog's list ends here: more could not be used there, and a folder of a million files must
    // not stop the window.
    static constexpr size_t kMaxListedEntries = 1024;

    explicit CFileList(size_t maxListedEntries = kMaxListedEntries)
        : maxEntries(maxListedEntries) {}

    // Null or empty extension: any. False when the extension is longer than 31 bytes.
    bool addFilter(const char* extension, bool forFolders);
    void resetFileList() { items.clear(); }
    void resetFilters() { filters.clear(); }

    // Empties the list and fills it anew. False when the folder cannot be read.
    [[nodiscard]] bool findFiles(const char* folder);
    // Appends an entry that the filters let in. Without filters everything is let in.
    void addItem(const char* path, bool isFolder);

    [[nodiscard]] long getNumFilesInList() const { return static_cast<long>(items.size()); }
    // Full path of an item, valid until the list changes; null outside the list. The other pointers
    // may be null; `name` (without extension) and `extension` (without '.') must hold 256 bytes and
    // are cut there.
    const char* getFileInfo(long index, char* name, char* extension, bool* isFolder) const;

  private:
    [[nodiscard]] bool Accepts(std::string_view extension, bool isFolder) const;

    std::vector<CFileListFilter> filters;
    std::vector<CFileListItem> items;
    size_t maxEntries;
};

}  // namespace norava
