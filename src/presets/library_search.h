#pragma once

#include <string_view>
#include <vector>

#include "presets/library_snapshot.h"

namespace norava {

// A program's numbers in the snapshot.
struct FoundProgram {
    int category = 0;
    int program = 0;
    bool operator==(const FoundProgram&) const = default;
};

// The programs that hold every word of `text` in their own or their category's name, capital and
// small letters alike; those whose name begins with the text come first, otherwise in the library's
// order. A text without words finds nothing. Any thread that may take memory.
std::vector<FoundProgram> SearchLibrary(const LibrarySnapshot& library, std::string_view text);

}  // namespace norava
