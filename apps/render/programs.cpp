#include "render/programs.h"

#include <algorithm>
#include <cctype>
#include <limits>

#include "presets/factory_bank.h"
#include "presets/library_scanner.h"
#include "presets/program_file.h"
#include "program_text/program_file.h"
#include "render/bad_input.h"

namespace norava {

namespace {

namespace fs = std::filesystem;

constexpr std::uint8_t kNoteOn = 0x90;
constexpr std::uint8_t kNoteOff = 0x80;
constexpr std::uint8_t kController = 0xB0;
constexpr std::uint8_t kModWheel = 1;

std::string Lowered(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return char(std::tolower(c)); });
    return text;
}

std::vector<char> StateOf(const ProgramBlock* block) {
    if (block == nullptr) return {};
    return {block->bytes.begin(), block->bytes.begin() + block->size};
}

void AddNote(MidiSong& song, double seconds, double length, std::uint8_t note,
             std::uint8_t velocity) {
    song.events.push_back({seconds, {kNoteOn, note, velocity}});
    song.events.push_back({seconds + length, {kNoteOff, note, 0}});
}

}  // namespace

std::vector<NamedProgram> ListPrograms(const fs::path& library) {
    LibraryScanner scanner(library.string(), "norava");
    if (library.empty()) {
        scanner.TakeFactoryBank(GetFactoryBank());
    } else if (!scanner.ListRoot()) {
        std::error_code error;
        const fs::directory_iterator reason(library, error);
        throw BadInput(library.string() + ": this folder cannot be read: " + error.message());
    }
    scanner.ListAhead();
    scanner.ReadSome(std::numeric_limits<int>::max());
    std::vector<NamedProgram> programs;
    const auto snapshot = scanner.MakeSnapshot();
    for (const LibraryCategory& category : snapshot->Categories()) {
        for (const LibraryProgram& program : category.programs) {
            programs.push_back({std::string(category.Name()), std::string(program.Name()),
                                StateOf(program.block.get())});
        }
    }
    if (programs.empty()) {
        throw BadInput(library.string() +
                       ": there are no programs in it; a library has them in folders, one for each "
                       "category");
    }
    return programs;
}

NamedProgram FindProgram(const std::string& text, const fs::path& library) {
    std::error_code error;
    const fs::file_status status = fs::status(text, error);
    if (status.type() == fs::file_type::none) {
        throw BadInput(text + ": cannot be read: " + error.message());
    }
    if (fs::is_regular_file(status)) {
        RequireReadable(text);
        if (Lowered(fs::path(text).extension().string()) == ".txt") {
            throw BadInput(text + ": programs as text go through 'norava-program convert' first");
        }
        const auto block = ReadProgramFile(text);
        if (!block) throw BadInput(text + ": this is not a program file");
        return {"", std::string(ProgramNameOf(text)), StateOf(&*block)};
    }
    const std::vector<NamedProgram> programs = ListPrograms(library);
    const auto found = std::ranges::find(programs, Lowered(text), [](const NamedProgram& program) {
        return Lowered(program.FullName());
    });
    if (found == programs.end()) {
        throw BadInput("there is no program '" + text + "' (--list-programs shows them all)");
    }
    return *found;
}

MidiSong ProgramPhrase() {
    MidiSong song;
    song.tempos = {{}};
    constexpr std::array<std::uint8_t, 8> kNotes = {36, 45, 52, 57, 60, 64, 69, 81};
    constexpr std::uint8_t kSoftest = 50;
    double seconds = 0.0;
    for (const std::uint8_t note : kNotes) {
        const auto velocity = std::uint8_t(kSoftest + note % 12 * 6);
        AddNote(song, seconds, 0.45, note, velocity);
        seconds += 0.5;
    }
    for (const int note : {48, 55, 60, 64})
        AddNote(song, seconds, 2.0, std::uint8_t(note), 100);
    for (int step = 0; step <= 16; ++step) {
        const auto value = std::uint8_t(step <= 8 ? 15 * step : 15 * (16 - step));
        song.events.push_back({seconds + 0.5 + 0.1 * step, {kController, kModWheel, value}});
    }
    std::ranges::stable_sort(song.events, {}, &SongEvent::seconds);
    song.lengthSeconds = seconds + 2.5;
    return song;
}

}  // namespace norava
