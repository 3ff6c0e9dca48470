#ifdef _WIN32

#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <shlobj.h>
#include <windows.h>

#include <algorithm>
#include <iterator>
#include <memory>

#include "files/known_folders.h"

namespace norava::file_system {

namespace {

std::string Utf8(const wchar_t* text) {
    char bytes[4096];
    if (WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, text, -1, bytes, sizeof bytes, nullptr,
                            nullptr) == 0)
        return {};
    std::string path = bytes;
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

}  // namespace

std::string UserContentFolder() {
    PWSTR found = nullptr;
    const HRESULT result = SHGetKnownFolderPath(FOLDERID_Documents, 0, nullptr, &found);
    const std::unique_ptr<wchar_t, void (*)(void*)> owner(found, CoTaskMemFree);
    return SUCCEEDED(result) ? Utf8(found) : std::string();
}

std::string ModuleFolder() {
    HMODULE module = nullptr;
    const auto* const inside = reinterpret_cast<LPCWSTR>(&ModuleFolder);
    if (!GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            inside, &module))
        return {};
    wchar_t path[2048];
    const DWORD length = GetModuleFileNameW(module, path, static_cast<DWORD>(std::size(path)));
    if (length == 0 || length >= std::size(path)) return {};
    const std::string file = Utf8(path);
    return file.substr(0, file.rfind('/') == file.npos ? 0 : file.rfind('/'));
}

}  // namespace norava::file_system

#endif
