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

// A folder that is named from the root; anything else counts as none.
std::string WholePath(const char* text) {
    std::string folder;
    if (text != nullptr && *text == '/') folder = text;
    while (folder.size() > 1 && folder.ends_with('/'))
        folder.pop_back();
    return folder;
}

std::string HomeFolder() {
    std::string home = WholePath(std::getenv("HOME"));
    if (!home.empty()) return home;
    constexpr size_t kEnough = 16384;
    std::vector<char> memory(kEnough);
    passwd entry{};
    passwd* found = nullptr;
    (void)getpwuid_r(getuid(), &entry, memory.data(), memory.size(), &found);
    return WholePath(found != nullptr ? found->pw_dir : nullptr);
}

}  // namespace

std::string UserContentFolder() {
#ifdef __APPLE__
    constexpr std::string_view kBeneathHome = "/Documents";
#else
    std::string data = WholePath(std::getenv("XDG_DATA_HOME"));
    if (!data.empty()) return data;
    constexpr std::string_view kBeneathHome = "/.local/share";
#endif
    std::string folder = HomeFolder();
    if (!folder.empty()) folder += kBeneathHome;
    return folder;
}

std::string ModuleFolder() {
    Dl_info module{};
    if (dladdr(reinterpret_cast<const void*>(&ModuleFolder), &module) == 0) return {};
    std::string path = module.dli_fname;
    const std::size_t slash = path.rfind('/');
    path.resize(slash != path.npos ? slash : 0);
    return path;
}

}  // namespace norava::file_system

#endif
