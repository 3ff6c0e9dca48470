#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <optional>
#include <string_view>

// What the file classes need of an operating system; one source a system implements it. Paths are
// UTF-8 with '/' between folders. Nothing here may be called on the audio thread.
namespace norava::file_system {

enum class EntryKind {
    none,    // nothing there, or a link that leads nowhere or round in circles
    file,    // a regular file
    folder,  //
    other    // pipe, socket, device: opening one can wait for ever or act on hardware
};

// What the path leads to, links followed.
[[nodiscard]] EntryKind KindOf(const char* path);

// Opens a regular file and nothing else, without ever waiting. Null when that is not possible.
// Writing creates the file or empties the one that is there.
[[nodiscard]] std::FILE* OpenForReading(const char* path);
[[nodiscard]] std::FILE* OpenForWriting(const char* path);

// Positions from the file's start, in 64 bits on every system.
[[nodiscard]] bool Seek(std::FILE* file, int64_t offset);
// Of a file that was opened for reading and stands at its start; negative on failure.
[[nodiscard]] int64_t SizeOf(std::FILE* file);

// Whether a file in a folder can have that name; false for what the system would take for a path.
[[nodiscard]] bool IsFileName(std::string_view name);

// Makes one folder whose parent exists. True also when the folder is there already.
[[nodiscard]] bool MakeFolder(const char* path);

// Calls `visit` with each entry's name and kind, in the system's order and without "." and "..",
// until it returns false.
enum class Listing {
    done,      // nothing was missed but what `visit` did not want
    noFolder,  // there is none at that path
    failed     // it cannot be read to its end now: no right to, no handles left, a drive's error
};
using EntryVisitor = std::function<bool(const char* name, EntryKind kind)>;
[[nodiscard]] Listing ListFolder(const char* folder, const EntryVisitor& visit);

// Whether a file is still the one that was looked at: another content has another stamp, except
// that a change within the clock's resolution of the one before may keep it.
struct FileStamp {
    int64_t sizeBytes = 0;
    int64_t modifiedNanoseconds = 0;  // since 1970
    uint64_t fileNumber = 0;
    bool operator==(const FileStamp&) const = default;
};
// Empty for everything but a regular file.
[[nodiscard]] std::optional<FileStamp> StampOf(const char* path);

// Puts `bytes` in place of the file at `path` in one step: a reader, a kill, a power failure or a
// full disk meets the old content or the new, never a mixture. A call that returns leaves nothing
// beside it, whatever went wrong. A kill leaves nothing either, except between the last two steps
// of replacing a file (or on a file system without nameless files): then the whole new content lies
// beside it under a hidden name, until RemoveLeftovers meets it. A link at `path` keeps leading to
// the file that is replaced, and the file keeps its permissions.
[[nodiscard]] bool ReplaceFile(const char* path, const void* bytes, size_t count);

// Makes a folder that appears under its name only when it is complete: `fill` gets the name of a
// folder beside it, and when it returns true that one is renamed. False, with nothing left, when
// anything fails or something lies at `path` already, a link that leads nowhere included.
using FolderFiller = std::function<bool(const char* unfinished)>;
[[nodiscard]] bool PublishFolder(const char* path, const FolderFiller& fill);

// Removes from a folder what the two above could not clear away because their process was killed.
// What another process is still writing stays.
void RemoveLeftovers(const char* folder);
// Whether an entry is such a thing by its name.
[[nodiscard]] bool IsUnfinishedName(std::string_view name);

}  // namespace norava::file_system
