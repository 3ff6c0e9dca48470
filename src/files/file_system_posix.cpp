#ifndef _WIN32

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
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
    if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
        const bool writes = (flags & O_ACCMODE) != O_RDONLY;
        if (!writes || ftruncate(descriptor, 0) == 0) {
            if (std::FILE* file = fdopen(descriptor, mode)) return file;
        }
    }
    close(descriptor);
    return nullptr;
}

// Most file systems tell the kind with the name; links and the others cost one more question.
EntryKind KindOfEntry(const char* folder, const dirent& entry) {
    if (entry.d_type == DT_REG) return EntryKind::file;
    if (entry.d_type == DT_DIR) return EntryKind::folder;
    return KindOf((std::string(folder) + '/' + entry.d_name).c_str());
}

bool WriteAll(int descriptor, const char* bytes, size_t count) {
    while (count > 0) {
        const ssize_t written = write(descriptor, bytes, count);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        bytes += written;
        count -= static_cast<size_t>(written);
    }
    return true;
}

// Makes the renaming itself survive a power failure. Some file systems cannot do it; the content is
// safe already, so that is no reason to call the save failed.
void FlushFolderOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    fsync(descriptor);
    close(descriptor);
}

// The bytes on their way to `target`, in its folder, under a name that file lists and people do not
// see. A new file gets the permissions that the user's mask leaves; `mode` (if not negative)
// overrides them.
bool WriteBesideAndRename(const std::string& target, int mode, const char* bytes, size_t count) {
    static std::atomic<unsigned> serial = 0;
    const std::string beside = target.substr(0, target.rfind('/') + 1) + ".norava-" +
                               std::to_string(getpid()) + '-' + std::to_string(++serial) + ".tmp";
    const int descriptor = open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0) return false;
    bool good = WriteAll(descriptor, bytes, count);
    good = good && (mode < 0 || fchmod(descriptor, static_cast<mode_t>(mode)) == 0);
    good = good && fsync(descriptor) == 0;
    good = close(descriptor) == 0 && good;
    good = good && rename(beside.c_str(), target.c_str()) == 0;
    if (!good) unlink(beside.c_str());
    if (good) FlushFolderOf(target);
    return good;
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
    if (fseeko(file, 0, SEEK_END) != 0) return -1;
    const int64_t size = ftello(file);
    return Seek(file, 0) ? size : -1;
}

bool MakeFolder(const char* path) {
    return mkdir(path, 0777) == 0 || KindOf(path) == EntryKind::folder;
}

bool ListFolder(const char* folder, const EntryVisitor& visit) {
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(opendir(folder), closedir);
    if (!stream) return false;
    while (const dirent* entry = readdir(stream.get())) {
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") continue;
        if (!visit(entry->d_name, KindOfEntry(folder, *entry))) break;
    }
    return true;
}

bool ReplaceFile(const char* path, const void* bytes, size_t count) {
    std::string target = path;
    int mode = -1;
    const EntryKind kind = KindOf(path);
    if (kind == EntryKind::file) {
        // Renaming over a link would leave the link's target old and the link gone.
        const std::unique_ptr<char, void (*)(void*)> resolved(realpath(path, nullptr), std::free);
        struct stat status {};
        if (!resolved || stat(resolved.get(), &status) != 0) return false;
        target = resolved.get();
        mode = static_cast<int>(status.st_mode & 0777);
        if (access(target.c_str(), W_OK) != 0) return false;  // a locked file stays as it is
    } else if (kind != EntryKind::none) {
        return false;
    }
    return WriteBesideAndRename(target, mode, static_cast<const char*>(bytes), count);
}

}  // namespace norava::file_system

#endif
