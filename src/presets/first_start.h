#pragma once

#include <atomic>
#include <span>
#include <string>

#include "presets/factory_bank.h"

namespace norava {

// Writes the bank below `root`, one folder a category, when nothing lies at `root`: whole or not at
// all, whatever happens meanwhile. False when something lies there already, when there is nothing
// to write, when it cannot be written, or when `cancelled` becomes true first. Not for the audio
// thread.
bool WriteFactoryBank(const std::string& root, const std::string& extension,
                      std::span<const FactoryProgram> bank,
                      const std::atomic<bool>* cancelled = nullptr);

}  // namespace norava
