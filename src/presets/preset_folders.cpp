#include "presets/preset_folders.h"

#include "files/file_system.h"
#include "files/known_folders.h"

namespace norava {

std::string GetHVPresetsFolder() {
    const std::string folder = file_system::UserContentFolder();
    return folder.empty() ? folder : folder + "/Hollo-Vane/Shared Data/";
}

std::string GetPluginFolder() {
#if defined(__APPLE__)
    return "/Library/Application Support/Hollo-Vane/Norava";
#else
    const std::string module = file_system::ModuleFolder();
    std::string beside = module + "/Norava";
    if (!module.empty() && file_system::KindOf(beside.c_str()) == file_system::EntryKind::folder)
        return beside;
#if defined(_WIN32)
    return beside;
#else
    return "/usr/share/hollo-vane/norava";
#endif
#endif
}

std::string GetPresetRoot() {
    const std::string shared = GetHVPresetsFolder();
    return shared.empty() ? GetPluginFolder() + "/Presets" : shared + "Norava";
}

}  // namespace norava
