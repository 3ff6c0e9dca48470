#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "render/midi_song.h"

namespace norava {

// A program of the instrument with the state that it loads.
struct NamedProgram {
    std::string category;
    std::string name;
    std::vector<char> state;  // empty: its file holds no program

    std::string FullName() const { return category + '/' + name; }
};

// The programs of a library's folder, or the built-in ones for an empty path; in the order in which
// the instrument numbers them. The user's own library is read only when it is named. Throws
// BadInput.
std::vector<NamedProgram> ListPrograms(const std::filesystem::path& library);

// A program by "Category/Name" (in any case), or from a program file when there is one of that
// name. Throws BadInput.
NamedProgram FindProgram(const std::string& text, const std::filesystem::path& library);

// A few bars that show what a program does: single notes over its range from soft to hard, a chord
// and the modulation wheel.
MidiSong ProgramPhrase();

}  // namespace norava
