#ifndef _WIN32

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string>
#include <string_view>

#include "files/file_system.h"

namespace norava::file_system {

namespace {

EntryKind KindOfMode(mode_t mode) {
    if (S_ISREG(mode)) return EntryKind::file;
    if (S_ISDIR(mode)) return EntryKind::folder;
    return EntryKind::other;
}

// O_NONBLOCK: opening a pipe must not wait for its other end. The kind is asked of the open
// descriptor, so that nobody can exchange the file between question and opening.
std::FILE* OpenRegularFile(const char* path, int flags, const char* mode) {
    const int descriptor = open(path, flags | O_NONBLOCK | O_CLOEXEC | O_NOCTTY, 0666);
    if (descriptor < 0) return nullptr;
    struct stat status {};
    const bool isRegular = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    const bool reads = (flags & O_ACCMODE) == O_RDONLY;
    const bool isReady = isRegular && (reads || ftruncate(descriptor, 0) == 0);
    std::FILE* const file = isReady ? fdopen(descriptor, mode) : nullptr;
    if (file == nullptr) close(descriptor);
    return file;
}

// Most file systems tell the kind with the name; links and the others cost one more question.
EntryKind KindOfEntry(const char* folder, const dirent& entry) {
    if (entry.d_type == DT_REG) return EntryKind::file;
    if (entry.d_type == DT_DIR) return EntryKind::folder;
    return KindOf((std::string(folder) + '/' + entry.d_name).c_str());
}

}  // namespace

EntryKind KindOf(const char* path) {
    struct stat status {};
    return stat(path, &status) == 0 ? KindOfMode(status.st_mode) : EntryKind::none;
}

std::FILE* OpenForReading(const char* path) {
    return OpenRegularFile(path, O_RDONLY, "rb");
}

std::FILE* OpenForWriting(const char* path) {
    return OpenRegularFile(path, O_WRONLY | O_CREAT, "wb");
}

bool Seek(std::FILE* file, int64_t offset) {
    return fseeko(file, offset, SEEK_SET) == 0;
}

int64_t SizeOf(std::FILE* file) {
    struct stat status {};
    return fstat(fileno(file), &status) == 0 ? status.st_size : -1;
}

bool IsFileName(std::string_view name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == name.npos;
}

bool MakeFolder(const char* path) {
    return mkdir(path, 0777) == 0 || KindOf(path) == EntryKind::folder;
}

Listing ListFolder(const char* folder, const EntryVisitor& visit) {
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(opendir(folder), closedir);
    if (!stream) {
        const bool none =
            errno == ENOENT || errno == ENOTDIR || errno == ELOOP || errno == ENAMETOOLONG;
        return none ? Listing::noFolder : Listing::failed;
    }
    for (;;) {
        errno = 0;  // the only way to tell the end from an error
        const dirent* const entry = readdir(stream.get());
        if (entry == nullptr) return errno == 0 ? Listing::done : Listing::failed;
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") continue;
        if (!visit(entry->d_name, KindOfEntry(folder, *entry))) return Listing::done;
    }
}

std::optional<FileStamp> StampOf(const char* path) {
    struct stat status {};
    if (stat(path, &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
#ifdef __APPLE__
    const timespec& modified = status.st_mtimespec;
#else
    const timespec& modified = status.st_mtim;
#endif
    return FileStamp{status.st_size, modified.tv_sec * int64_t{1'000'000'000} + modified.tv_nsec,
                     status.st_ino};
}

}  // namespace norava::file_system

#endif
