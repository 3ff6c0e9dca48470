#pragma once

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "files/file_system.h"
#include "presets/factory_bank.h"
#include "presets/library_snapshot.h"

namespace norava {

// A library of more than this is cut there, so that a folder tree chosen by mistake does not fill
// the memory: 140 MB of programs at most.
inline constexpr std::size_t kMaxLibraryCategories = 4096;
inline constexpr std::size_t kMaxLibraryPrograms = 200'000;

// Knows what the folders of a library hold, and reads what has changed in them. Entries whose name
// begins with a dot, that are no regular files (or folders of categories), that cannot be read or
// that vanish meanwhile count as not there or not usable; none of them makes it wait. What was
// there before stays while an error hides it: handles that are used up, a share that does not
// answer. One thread at a time, never the audio thread.
class LibraryScanner {
  public:
    LibraryScanner(std::string rootPath, std::string fileExtension);

    // Finds the categories that are new, which are to be listed, and forgets those that are gone.
    // False when there is no root: the library is empty then, or keeps the bank that stands in.
    bool ListRoot();
    // Finds and reads the first program of the first category, when that is still to be listed.
    void ReadFirst();
    // Lists one category; programs that may have changed are to be read again. A folder outside
    // the library is ignored.
    void ListCategory(const std::string& folderName);
    void ListAllCategories();

    // Lists the next category of those that are to be listed; returns whether more are left.
    bool ListNext();
    bool HasUnlisted() const { return !unlisted.empty(); }
    // Lists those that were never listed, and leaves them to ListNext all the same: for a caller
    // before whom they are not watched yet.
    void ListAhead();

    // In place of a root that does not exist, until one can be listed.
    void TakeFactoryBank(std::span<const FactoryProgram> bank);

    // Reads up to `most` programs of those that are to be read; returns whether more are left.
    bool ReadSome(int most);
    // Whether there is nothing left to list and to read.
    bool IsComplete() const { return unlisted.empty() && unread.empty(); }

    // Whether a snapshot made now differs from the one at the last call.
    bool TakeChanged() { return std::exchange(changed, false); }
    // Folders to be listed again after a while, since the last call: they, or programs in them,
    // could not be read.
    std::set<std::string> TakeFailed() { return std::exchange(failed, {}); }
    // Folders in which a listing met what a killed process left unfinished, since the last call.
    std::set<std::string> TakeLittered() { return std::exchange(littered, {}); }

    std::vector<std::string> Folders() const;  // full paths: the root and the categories
    std::shared_ptr<const LibrarySnapshot> MakeSnapshot() const;
    const std::string& Root() const { return root; }
    // The name of a category's folder from its full path; empty for any other path.
    std::string CategoryOf(const std::string& folder) const;

  private:
    struct Program {
        LibraryId id = kNoLibraryId;
        bool onDisk = true;
        std::shared_ptr<const ProgramBlock> block;  // null: to be read
        std::optional<file_system::FileStamp> stamp;
        int64_t readAtNanoseconds = 0;
    };
    struct Category {
        LibraryId id = kNoLibraryId;
        bool isListed = false;
        std::map<std::string, Program, ByShownName> programs;  // by file name
    };

    // `path` begins at the root. What comes back has the id that it had.
    LibraryId IdOf(const std::string& path);
    void KeepId(const std::string& path, LibraryId id);

    bool IsProgramFile(const std::string& name) const;
    file_system::Listing VisitPrograms(const std::string& folder,
                                       const std::function<bool(std::string)>& visit);
    bool MayHaveChanged(const std::string& path, const Program& program) const;
    void Read(const std::string& folder, const std::string& name, Program& program);

    const std::string root;
    const std::string extension;
    bool isReadable = false;
    bool isStandIn = false;                                   // a bank in place of the root
    std::map<std::string, Category, ByShownName> categories;  // by folder name
    std::deque<std::string> unlisted;                         // folder names
    std::deque<std::pair<std::string, std::string>> unread;   // folder and file name
    std::set<std::string> littered, failed;                   // full paths
    std::size_t numPrograms = 0;
    LibraryId nextId = 0;
    std::unordered_map<std::string, LibraryId> formerIds;  // of what is gone
    bool changed = true;
};

}  // namespace norava
