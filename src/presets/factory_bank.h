#pragma once

#include <span>

namespace norava {

// One program of the bank that comes with the instrument.
struct FactoryProgram {
    const char* category;                  // UTF-8, fit to name a folder
    const char* name;                      // UTF-8, fit to name a file, without extension
    std::span<const unsigned char> block;  // the instrument's state block, as a file holds it
};

// The bank that is built in, grouped by category. Constant data: any thread, also before main.
std::span<const FactoryProgram> GetFactoryBank();

}  // namespace norava
