#pragma once

#include <array>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "program_text/program_text.h"
#include "synth/state_block.h"

// Programs in files: as text (.txt), as the instrument's block (.norava), inside a host's program
// file (.fxp, read only).

namespace norava {

using StateBlock = std::array<char, kStateSize>;

// Throws BadInput with the path and the system's reason when there is nothing to read.
void RequireReadable(const std::filesystem::path& path);

StateBlock ToBlock(const Program& program);

// Decided by the name's ending. Throws BadInput that begins with the path.
Program LoadProgram(const std::filesystem::path& path);
// The same for what such a file holds.
Program ReadProgram(std::string_view bytes, const std::filesystem::path& path);

// The whole file or nothing: a link stays one. Throws OutputError.
void SaveProgram(const std::filesystem::path& path, const Program& program);

struct BankEntry {
    std::string category;  // the folder's name
    std::filesystem::path path;
    Program program;
};

// All texts of a folder of category folders, sorted by category and name. Throws BadInput, for a
// program whose name is not its file's too.
std::vector<BankEntry> LoadBank(const std::filesystem::path& folder);

}  // namespace norava
