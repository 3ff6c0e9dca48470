#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "framework/nonblocking.h"
#include "presets/preset_library.h"

namespace norava {

class CPluginRenderer;

inline constexpr char kNoProgramName[] = "<noname>";

// One instance's place in the library of program files: current category and program, stepping,
// loading and saving. Categories and programs are numbered from 0 in natural order; the numbers
// follow the library's newest snapshot, the current program stays the same file when others come
// and go.
//
// Any thread that may wait may call everything but the operations for the audio thread; what shows
// in the panel or asks the user belongs to the user-interface thread.
class CPresetList {
  public:
    // Without a root there is no library: nothing can be selected, single files still load and
    // save. `pluginRenderer` outlives the list.
    CPresetList(CPluginRenderer* pluginRenderer, const LibraryPlace& place);
    ~CPresetList();
    CPresetList(const CPresetList&) = delete;
    CPresetList& operator=(const CPresetList&) = delete;

    // Looks at the disk; nothing is selected then. True when the root can be read.
    bool CreateCatList();
    // Looks at the current category's folder and makes its first program current. False, with
    // nothing changed, when there is no current category.
    bool CreatePrgList();
    // The current category's folder, the root without one.
    std::string GetCatFolder() const;

    // False for an index outside the list, and when it was the current one already. A category
    // starts at its first program. Nothing is loaded.
    bool SetCurrentCat(int index);
    bool SetCurrentPrg(int index);
    // No wrap-around: false at either end. The first program when none is current.
    bool NextProgram();
    bool PrevProgram();
    // Points the list at a file, in the library or not. A null path is ignored.
    void SetProgramPath(const char* path);

    int GetCurrentCat() const;  // -1: none
    int GetCurrentPrg() const;
    std::string GetProgramPath() const;
    std::string GetProgramName() const;
    std::string GetCategoryName() const;

    // For the browser: what is listed, and a count that moves when that changes. Any thread.
    std::shared_ptr<const LibrarySnapshot> GetLibrary() const;
    std::uint32_t GetLibraryRevision() const;

    // Both ask the user for a file when `path` is null: true when the panel asks; it goes on by
    // itself then and tells of a failure. Load: false for a file that is none, is too long or too
    // short, or that the renderer refuses; its values stay then. Save: the old file stays when
    // anything fails; a bare name goes into the current category, "User" without one, and is
    // refused when a file cannot have it. The host hears of changed parameters, the panel of all.
    bool LoadProgramFromFile(const char* path);
    bool SaveProgramToFile(const char* path);

    // What the renderer calls its sound: another name than GetProgramName() after a host's state or
    // a reset.
    std::string GetNameOfSound() const;

    // Whether saving under this bare name would overwrite a file.
    bool WouldReplace(const std::string& name) const;

    // What sounds and where the list stands, for a user who may want to come back to it. The host
    // hears of parameters that the return changes, the panel of all.
    class Moment;
    Moment Remember() const;
    void Return(const Moment& moment);

    // Every parameter to its default, the program's name to "<noname>"; the list stays where it is.
    // The host hears of changed parameters, the panel of all.
    void ResetProgram();

    // The first program of the first category, as a new instance starts; found in memory, without
    // waiting for the rest of the library. False when there is none.
    bool LoadFirstProgram();
    // Waits until the library can be played from, unless it is a very large one.
    void WaitUntilRead() const;

    void OpenEditor();  // the browser
    void OpenAboutBox();

    // For the audio thread: select like SetCurrentPrg and SetCurrentCat and copy the program out.
    enum class Selection {
        nothing,  // no such index, the current program, or a category without programs
        refused,  // selected, but its file holds no program
        taken,
        notRead  // selected nothing: the library is still being read, ask again
    };
    struct SelectedProgram {
        ProgramBlock block;
        std::array<char, 256> name{};
    };
    Selection TakeProgram(int index, SelectedProgram& program) NORAVA_NONBLOCKING;
    Selection TakeFirstOfCategory(int index, SelectedProgram& program) NORAVA_NONBLOCKING;

  private:
    // Both ids in one word, so that nobody meets the category of one program with another one.
    // Aligned as one, or clang would not write it with one instruction.
    struct alignas(2 * sizeof(LibraryId)) Position {
        LibraryId category = kNoLibraryId;
        LibraryId program = kNoLibraryId;
        bool operator==(const Position&) const = default;
    };
    static_assert(std::atomic<Position>::is_always_lock_free);

    struct Names {
        Position position;
        std::string category = "<user>";
        std::string program = kNoProgramName;
        std::string path;
    };

    std::shared_ptr<const LibrarySnapshot> GetListedLibrary() const;
    std::string PathForName(const std::string& name) const;
    Selection Take(const LibrarySnapshot& snapshot, int category, int program,
                   SelectedProgram& taken) NORAVA_NONBLOCKING;
    bool Select(const LibrarySnapshot& snapshot, int category, int program);
    Position Find(const LibrarySnapshot& snapshot, const Names& wanted) const;
    Names CurrentNames() const;
    bool Load(const std::string& path);
    bool Save(const std::string& path);
    std::string SavingFolder() const;
    bool AskForFile(bool save);
    std::string WithExtension(const std::string& path) const;
    void ShowEverything() const;

    CPluginRenderer* const renderer;
    const std::string extension;
    const std::string rootPath;
    const std::shared_ptr<PresetLibrary> library;  // null: none

    std::atomic<Position> current = Position{};

    mutable std::mutex namesMutex;
    mutable Names names;  // of `names.position`; looked up again when the audio thread moved on
};

class CPresetList::Moment {
    friend class CPresetList;
    std::vector<char> state;
    std::string programName;  // the renderer's
    Names names;
};

}  // namespace norava
