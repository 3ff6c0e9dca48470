#pragma once

#include <span>
#include <string>

#include "presets/factory_bank.h"

namespace norava {

// Writes the bank below `root`, one folder a category, when nothing lies at `root`: whole or not at
// all, whatever happens meanwhile. False when something lies there already, when there is nothing
// to write, or when it cannot be written. Not for the audio thread.
bool WriteFactoryBank(const std::string& root, const std::string& extension,
                      std::span<const FactoryProgram> bank);

}  // namespace norava
