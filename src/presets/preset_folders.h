#pragma once

#include <string>

namespace norava {

// Where the makers' programs keep what they share: ".../Hollo-Vane/Shared Data/" with the '/' at
// its end, below the user's documents or what the desktop has in their place. Empty when the user
// has no home.
std::string GetHVPresetsFolder();

// The folder of the instrument's own pictures and fallback programs: fixed on macOS; elsewhere
// "Norava" beside the module, or the installation's data folder when there is none.
std::string GetPluginFolder();

// The root of the user's programs: "Norava" below the shared folder, "Presets" in the plug-in's
// folder without one.
std::string GetPresetRoot();

}  // namespace norava
