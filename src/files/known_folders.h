#pragma once

#include <string>

// Where an operating system keeps things. UTF-8 with '/' between folders, none at the end. Not for
// the audio thread.
namespace norava::file_system {

// Where programs keep what a user makes with them: on Linux the desktop's folder for programs'
// data ($XDG_DATA_HOME, else .local/share in the home folder), elsewhere the user's documents. Need
// not exist. Empty when the user has no home.
[[nodiscard]] std::string UserContentFolder();

// The folder of the file that this code was loaded from; empty when it cannot be told.
[[nodiscard]] std::string ModuleFolder();

}  // namespace norava::file_system
