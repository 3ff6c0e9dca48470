#ifndef _WIN32

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#ifdef __linux__
#include <sys/syscall.h>
#endif

#include "files/file_system.h"

// Files and folders that appear whole or not at all. What is unfinished carries a name of its own
// and a lock that ends with its process, so that leftovers can be told from work in progress.

namespace norava::file_system {

namespace {

constexpr std::string_view kUnfinishedPrefix = ".norava-";
constexpr std::string_view kUnfinishedSuffix = ".tmp";

class Descriptor {
  public:
    explicit Descriptor(int number) : fd(number) {}
    ~Descriptor() {
        if (fd >= 0) close(fd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] int Get() const { return fd; }
    [[nodiscard]] bool IsOpen() const { return fd >= 0; }

  private:
    const int fd;
};

std::string FolderOf(const std::string& path) {
    std::string folder = path.substr(0, path.rfind('/') + 1);
    if (folder.empty()) folder = "./";
    return folder;
}

// In the folder of `target`, under a name that file lists and people do not see.
std::string UnfinishedName(const std::string& target) {
    static std::atomic<unsigned> serial = 0;
    return FolderOf(target) + std::string(kUnfinishedPrefix) + std::to_string(getpid()) + '-' +
           std::to_string(++serial) + std::string(kUnfinishedSuffix);
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

// A new file gets the permissions that the user's mask leaves; `mode` (if not negative) overrides
// them.
bool WriteContent(int descriptor, int mode, const char* bytes, size_t count) {
    return WriteAll(descriptor, bytes, count) &&
           (mode < 0 || fchmod(descriptor, static_cast<mode_t>(mode)) == 0) &&
           fsync(descriptor) == 0;
}

// Makes the renaming itself survive a power failure. Some file systems cannot do it; the content is
// safe already, so that is no reason to call the save failed.
void FlushFolder(const std::string& folder) {
    const Descriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.IsOpen()) fsync(opened.Get());
}

// Between making the file and locking it another process may take it for a leftover; then it is
// written once more.
bool WriteBesideAndRename(const std::string& target, int mode, const char* bytes, size_t count) {
    for (int attempt = 0; attempt < 3; ++attempt) {
        const std::string beside = UnfinishedName(target);
        const Descriptor file(open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        if (!file.IsOpen()) return false;
        flock(file.Get(), LOCK_EX | LOCK_NB);
        const bool written = WriteContent(file.Get(), mode, bytes, count);
        if (written && rename(beside.c_str(), target.c_str()) == 0) return true;
        const bool wasRemoved = written && errno == ENOENT;
        unlink(beside.c_str());
        if (!wasRemoved) return false;
    }
    return false;
}

#ifdef __linux__
// A file without a name leaves nothing behind when its process is killed, so it gets one as late as
// possible: its own, when there is no file to replace, or one that lives until the next call.
// Empty: this file system knows no such files.
std::optional<bool> WriteNamelessAndLink(const std::string& target, int mode, const char* bytes,
                                         size_t count) {
    const Descriptor file(open(FolderOf(target).c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, 0666));
    const std::string own = "/proc/self/fd/" + std::to_string(file.Get());
    if (!file.IsOpen() || access(own.c_str(), F_OK) != 0) return std::nullopt;
    flock(file.Get(), LOCK_EX | LOCK_NB);
    if (!WriteContent(file.Get(), mode, bytes, count)) return false;
    const auto link = [&](const std::string& name) {
        return linkat(AT_FDCWD, own.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
    };
    if (link(target)) return true;
    if (errno != EEXIST) return false;
    const std::string beside = UnfinishedName(target);
    if (!link(beside)) return false;
    if (rename(beside.c_str(), target.c_str()) == 0) return true;
    unlink(beside.c_str());
    return false;
}
#endif

bool WriteWhole(const std::string& target, int mode, const char* bytes, size_t count) {
#ifdef __linux__
    if (const auto done = WriteNamelessAndLink(target, mode, bytes, count)) return *done;
#endif
    return WriteBesideAndRename(target, mode, bytes, count);
}

// Never replaces anything.
bool RenameToNew(const char* from, const char* to) {
#if defined(__linux__) && defined(SYS_renameat2)
    constexpr unsigned kNoReplace = 1;
    if (syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, kNoReplace) == 0) return true;
    if (errno != EINVAL && errno != ENOSYS) return false;
#elif defined(__APPLE__)
    return renamex_np(from, to, RENAME_EXCL) == 0;
#endif
    struct stat status {};
    return lstat(to, &status) != 0 && errno == ENOENT && rename(from, to) == 0;
}

void RemoveTree(const std::string& path) {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

}  // namespace

bool IsUnfinishedName(std::string_view name) {
    return name.starts_with(kUnfinishedPrefix) && name.ends_with(kUnfinishedSuffix);
}

bool ReplaceFile(const char* path, const void* bytes, size_t count) {
    std::string target = path;
    int mode = -1;
    struct stat status {};
    if (stat(path, &status) == 0) {
        // Renaming over a link would leave the link's target old and the link gone.
        const std::unique_ptr<char, void (*)(void*)> resolved(realpath(path, nullptr), std::free);
        if (!resolved || !S_ISREG(status.st_mode)) return false;
        target = resolved.get();
        mode = static_cast<int>(status.st_mode & 0777);
        if (access(target.c_str(), W_OK) != 0) return false;  // a locked file stays as it is
    } else if (errno != ENOENT || lstat(path, &status) == 0) {
        return false;  // a link that leads nowhere stays, too
    }
    if (!WriteWhole(target, mode, static_cast<const char*>(bytes), count)) return false;
    FlushFolder(FolderOf(target));
    return true;
}

bool PublishFolder(const char* path, const FolderFiller& fill) {
    const std::string beside = UnfinishedName(path);
    if (mkdir(beside.c_str(), 0777) != 0) return false;
    const Descriptor folder(open(beside.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.IsOpen()) flock(folder.Get(), LOCK_EX | LOCK_NB);
    const bool good = folder.IsOpen() && fill(beside.c_str()) && fsync(folder.Get()) == 0 &&
                      RenameToNew(beside.c_str(), path);
    if (!good) RemoveTree(beside);
    if (good) FlushFolder(FolderOf(path));
    return good;
}

void RemoveLeftovers(const char* folder) {
    std::vector<std::string> found;
    (void)ListFolder(folder, [&](const char* name, EntryKind) {
        if (IsUnfinishedName(name)) found.push_back(std::string(folder) + '/' + name);
        return true;
    });
    for (const std::string& path : found) {
        const Descriptor opened(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
        if (opened.IsOpen() && flock(opened.Get(), LOCK_EX | LOCK_NB) == 0) RemoveTree(path);
    }
}

}  // namespace norava::file_system

#endif
