#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "presets/program_file.h"

namespace norava {

// Names a category or a program for as long as its library lives, whatever is added, removed or
// sorted around it.
using LibraryId = std::int32_t;
inline constexpr LibraryId kNoLibraryId = -1;

struct LibraryProgram {
    std::string fileName;  // with extension
    LibraryId id = kNoLibraryId;
    bool onDisk = true;                         // false: from the built-in bank
    std::shared_ptr<const ProgramBlock> block;  // null: not read yet; unusable: refused

    std::string_view Name() const { return ProgramNameOf(fileName); }
};

struct LibraryCategory {
    std::string folderName;
    LibraryId id = kNoLibraryId;
    bool isListed = false;                 // false: only the first program is known, if any
    std::vector<LibraryProgram> programs;  // in natural order

    // "Bass.old" is shown as "Bass".
    std::string_view Name() const { return ProgramNameOf(folderName); }
    int IndexOf(LibraryId program) const;  // -1: not here

  private:
    friend class LibrarySnapshot;
    std::vector<std::pair<LibraryId, int>> programsById;  // sorted
};

// Orders file and folder names as the library does: naturally by what is shown, then by the whole.
struct ByShownName {
    bool operator()(std::string_view a, std::string_view b) const;
};

// What the library held at one moment; never changes. Positions in it are what users and MIDI call
// category and program numbers, counted from 0. Reading takes no memory and no lock: any thread
// that has a way to keep the snapshot alive.
class LibrarySnapshot {
  public:
    LibrarySnapshot() = default;
    // Takes categories and programs that are in order already.
    LibrarySnapshot(std::string root, std::vector<LibraryCategory> sorted, bool readable,
                    bool complete);

    const std::vector<LibraryCategory>& Categories() const { return categories; }
    const LibraryCategory* Category(int index) const;  // null: none
    const LibraryProgram* Program(int category, int index) const;
    int IndexOf(LibraryId category) const;  // -1: not here

    std::string FolderOf(const LibraryCategory& category) const;
    std::string PathOf(const LibraryCategory& category, const LibraryProgram& program) const;
    // Category and program at a full path; both null when the library does not hold it.
    std::pair<const LibraryCategory*, const LibraryProgram*> Find(std::string_view path) const;

    // Whether the root could be listed (or the built-in bank stands in for it).
    bool IsReadable() const { return isReadable; }
    // Whether all categories have been listed.
    bool IsListed() const;
    // Whether the bytes of all programs are here too.
    bool IsComplete() const { return isComplete; }

  private:
    std::string rootPath;
    std::vector<LibraryCategory> categories;
    std::vector<std::pair<LibraryId, int>> categoriesById;  // sorted
    bool isReadable = false;
    bool isComplete = false;
};

}  // namespace norava
