#ifdef _WIN32

#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <fcntl.h>
#include <io.h>
#include <windows.h>

// The system's headers turn these names into macros.
#undef CreateDirectory
#undef ReplaceFile

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <memory>
#include <string>

#include "files/file_system.h"
#include "files/text_buffer.h"

namespace norava::file_system {

namespace {

// The "\\?\" form lifts the system's limit of 260 characters; it needs a full path with '\' only.
std::wstring WidePath(const char* path) {
    wchar_t wide[kPathBufferBytes];
    if (MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, wide, kPathBufferBytes) == 0)
        return {};
    wchar_t full[2 * kPathBufferBytes];
    const DWORD length = GetFullPathNameW(wide, 2 * kPathBufferBytes, full, nullptr);
    if (length == 0 || length >= 2 * kPathBufferBytes) return {};
    const std::wstring text(full, length);
    if (text.starts_with(L"\\\\?\\") || text.starts_with(L"\\\\.\\")) return text;
    if (text.starts_with(L"\\\\")) return L"\\\\?\\UNC" + text.substr(1);
    return L"\\\\?\\" + text;
}

EntryKind KindOfAttributes(DWORD attributes) {
    if (attributes == INVALID_FILE_ATTRIBUTES) return EntryKind::none;
    if (attributes & FILE_ATTRIBUTE_DIRECTORY) return EntryKind::folder;
    return attributes & FILE_ATTRIBUTE_DEVICE ? EntryKind::other : EntryKind::file;
}

std::FILE* OpenRegularFile(const char* path, DWORD access, DWORD creation, int flags,
                           const char* mode) {
    const std::wstring wide = WidePath(path);
    if (wide.empty()) return nullptr;
    const HANDLE handle = CreateFileW(wide.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      nullptr, creation, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return nullptr;
    if (GetFileType(handle) != FILE_TYPE_DISK) {
        CloseHandle(handle);
        return nullptr;
    }
    const int descriptor = _open_osfhandle(reinterpret_cast<intptr_t>(handle), flags | _O_BINARY);
    if (descriptor < 0) {
        CloseHandle(handle);
        return nullptr;
    }
    std::FILE* file = _fdopen(descriptor, mode);
    if (!file) _close(descriptor);
    return file;
}

// In the folder of `target`, under a name that is taken for nobody's file.
std::wstring UnfinishedName(const std::wstring& target) {
    static std::atomic<unsigned> serial = 0;
    return target.substr(0, target.rfind(L'\\') + 1) + L".norava-" +
           std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++serial) + L".tmp";
}

int64_t Joined(DWORD high, DWORD low) {
    return static_cast<int64_t>(static_cast<uint64_t>(high) << 32 | low);
}

int64_t NanosecondsSince1970(const FILETIME& time) {
    constexpr int64_t kTicksBefore1970 = 116444736000000000;  // of 100 ns, from 1601
    return (Joined(time.dwHighDateTime, time.dwLowDateTime) - kTicksBefore1970) * 100;
}

bool IsOlderThanADay(const FILETIME& time) {
    constexpr int64_t kDay = int64_t{86400} * 1'000'000'000;
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    return NanosecondsSince1970(now) - NanosecondsSince1970(time) > kDay;
}

bool WriteAndFlush(const std::wstring& path, const void* bytes, size_t count) {
    const HANDLE handle = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return false;
    DWORD written = 0;
    const auto wanted = static_cast<DWORD>(count);
    bool good = wanted == count && WriteFile(handle, bytes, wanted, &written, nullptr);
    good = good && written == wanted && FlushFileBuffers(handle);
    return CloseHandle(handle) && good;
}

}  // namespace

EntryKind KindOf(const char* path) {
    const std::wstring wide = WidePath(path);
    return wide.empty() ? EntryKind::none : KindOfAttributes(GetFileAttributesW(wide.c_str()));
}

std::FILE* OpenForReading(const char* path) {
    return OpenRegularFile(path, GENERIC_READ, OPEN_EXISTING, _O_RDONLY, "rb");
}

std::FILE* OpenForWriting(const char* path) {
    return OpenRegularFile(path, GENERIC_WRITE, CREATE_ALWAYS, 0, "wb");
}

bool Seek(std::FILE* file, int64_t offset) {
    return _fseeki64(file, offset, SEEK_SET) == 0;
}

int64_t SizeOf(std::FILE* file) {
    if (_fseeki64(file, 0, SEEK_END) != 0) return -1;
    const int64_t size = _ftelli64(file);
    return Seek(file, 0) ? size : -1;
}

// After a ':' stands the name of a hidden stream in the file before it.
bool IsFileName(std::string_view name) {
    const auto isControl = [](char letter) { return letter >= 0 && letter < ' '; };
    return !name.empty() && name != "." && name != ".." &&
           name.find_first_of("<>:\"/\\|?*") == name.npos && std::ranges::none_of(name, isControl);
}

bool MakeFolder(const char* path) {
    const std::wstring wide = WidePath(path);
    if (wide.empty()) return false;
    return CreateDirectoryW(wide.c_str(), nullptr) || KindOf(path) == EntryKind::folder;
}

Listing ListFolder(const char* folder, const EntryVisitor& visit) {
    const std::wstring wide = WidePath(folder);
    if (wide.empty()) return Listing::noFolder;
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileW((wide + L"\\*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        const DWORD error = GetLastError();
        const bool none = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ||
                          error == ERROR_DIRECTORY || error == ERROR_INVALID_NAME;
        return none ? Listing::noFolder : Listing::failed;
    }
    bool wantsMore = true;
    do {
        char name[4 * MAX_PATH];
        if (WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, entry.cFileName, -1, name,
                                sizeof name, nullptr, nullptr) == 0)
            continue;
        const std::string_view text = name;
        if (text == "." || text == "..") continue;
        wantsMore = visit(name, KindOfAttributes(entry.dwFileAttributes));
    } while (wantsMore && FindNextFileW(search, &entry));
    const bool done = !wantsMore || GetLastError() == ERROR_NO_MORE_FILES;
    FindClose(search);
    return done ? Listing::done : Listing::failed;
}

bool ReplaceFile(const char* path, const void* bytes, size_t count) {
    const std::wstring target = WidePath(path);
    const EntryKind kind = KindOf(path);
    if (target.empty() || (kind != EntryKind::none && kind != EntryKind::file)) return false;
    const std::wstring beside = UnfinishedName(target);
    const bool good = WriteAndFlush(beside, bytes, count) &&
                      MoveFileExW(beside.c_str(), target.c_str(),
                                  MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
    if (!good) DeleteFileW(beside.c_str());
    return good;
}

std::optional<FileStamp> StampOf(const char* path) {
    WIN32_FILE_ATTRIBUTE_DATA data;
    const std::wstring wide = WidePath(path);
    if (wide.empty() || !GetFileAttributesExW(wide.c_str(), GetFileExInfoStandard, &data) ||
        KindOfAttributes(data.dwFileAttributes) != EntryKind::file)
        return std::nullopt;
    return FileStamp{Joined(data.nFileSizeHigh, data.nFileSizeLow),
                     NanosecondsSince1970(data.ftLastWriteTime),
                     static_cast<uint64_t>(NanosecondsSince1970(data.ftCreationTime))};
}

bool PublishFolder(const char* path, const FolderFiller& fill) {
    const std::wstring target = WidePath(path);
    if (target.empty()) return false;
    const std::wstring beside = UnfinishedName(target);
    if (!CreateDirectoryW(beside.c_str(), nullptr)) return false;
    char name[4 * kPathBufferBytes];
    const bool named = WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, beside.c_str(), -1, name,
                                           sizeof name, nullptr, nullptr) != 0;
    // Without the flag for replacing it fails where something lies already.
    const bool good =
        named && fill(name) && MoveFileExW(beside.c_str(), target.c_str(), MOVEFILE_WRITE_THROUGH);
    std::error_code ignored;
    if (!good) std::filesystem::remove_all(beside, ignored);
    return good;
}

bool IsUnfinishedName(std::string_view name) {
    return name.starts_with(".norava-") && name.ends_with(".tmp");
}

// A file that somebody still writes cannot be deleted; a folder could, so it has to be old.
void RemoveLeftovers(const char* folder) {
    const std::wstring prefix = WidePath(folder) + L"\\";
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileW((prefix + L".norava-*.tmp").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) return;
    do {
        const std::wstring path = prefix + entry.cFileName;
        std::error_code ignored;
        if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
            DeleteFileW(path.c_str());
        else if (IsOlderThanADay(entry.ftLastWriteTime))
            std::filesystem::remove_all(path, ignored);
    } while (FindNextFileW(search, &entry));
    FindClose(search);
}

}  // namespace norava::file_system

#endif
