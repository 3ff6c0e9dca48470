#ifndef _WIN32

#include <dlfcn.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>
#include <vector>

#include "files/known_folders.h"

namespace norava::file_system {

namespace {

// An environment variable that names a folder from the root; anything else in it counts as unset.
std::string FolderFromEnvironment(const char* variable) {
    const char* const text = std::getenv(variable);
    std::string folder = text != nullptr && *text == '/' ? text : "";
    while (folder.size() > 1 && folder.ends_with('/'))
        folder.pop_back();
    return folder;
}

std::string HomeFolder() {
    if (std::string home = FolderFromEnvironment("HOME"); !home.empty()) return home;
    constexpr size_t kEnough = 16384;
    std::vector<char> memory(kEnough);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, memory.data(), memory.size(), &found) != 0 || !found)
        return {};
    return found->pw_dir != nullptr && *found->pw_dir == '/' ? found->pw_dir : "";
}

}  // namespace

std::string UserContentFolder() {
#ifdef __APPLE__
    constexpr std::string_view kBeneathHome = "/Documents";
#else
    if (std::string data = FolderFromEnvironment("XDG_DATA_HOME"); !data.empty()) return data;
    constexpr std::string_view kBeneathHome = "/.local/share";
#endif
    const std::string home = HomeFolder();
    return home.empty() ? home : home + std::string(kBeneathHome);
}

std::string ModuleFolder() {
    Dl_info module{};
    if (dladdr(reinterpret_cast<const void*>(&ModuleFolder), &module) == 0 || !module.dli_fname)
        return {};
    const std::string_view path = module.dli_fname;
    return std::string(path.substr(0, path.rfind('/') == path.npos ? 0 : path.rfind('/')));
}

}  // namespace norava::file_system

#endif
