#include "program_text/program_file.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <tuple>

#include "files/file_system.h"
#include "program_text/text_tokens.h"
#include "render/bad_input.h"

namespace norava {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLargestFile = 65536;

std::string ReadAll(const fs::path& path) {
    RequireReadable(path);
    if (!fs::is_regular_file(path)) throw BadInput(path.string() + ": this is no ordinary file");
    std::ifstream stream(path, std::ios::binary);
    // One byte beyond the limit is enough to see that a file is something else.
    std::string bytes(kLargestFile + 1, '\0');
    stream.read(bytes.data(), std::streamsize(bytes.size()));
    bytes.resize(std::size_t(stream.gcount()));
    if (stream.bad() || bytes.empty()) throw BadInput(path.string() + ": cannot be read");
    if (bytes.size() > kLargestFile) throw BadInput(path.string() + ": too large for a program");
    return bytes;
}

// In small letters: other systems' banks have capitals.
std::string EndingOf(const fs::path& path) {
    return Folded(path.extension().string());
}

void RequireKnownEnding(const fs::path& path) {
    const std::string ending = EndingOf(path);
    if (ending != ".txt" && ending != ".norava" && ending != ".fxp") {
        throw BadInput(path.string() + ": programs end in .txt, .norava or .fxp");
    }
}

// A host's program file around an opaque chunk: numbers big-endian, the chunk from byte 60.
std::string_view FindChunk(std::string_view file, const fs::path& path) {
    constexpr std::size_t kFormOffset = 8;
    constexpr std::size_t kChunkOffset = 60;
    if (!file.starts_with("CcnK") || file.size() < kChunkOffset ||
        file.substr(kFormOffset, 4) != "FPCh") {
        throw BadInput(path.string() + ": this is not a host's program file with a chunk");
    }
    return file.substr(kChunkOffset);
}

Program FromBlock(std::string_view block, const fs::path& path) {
    InstrumentState state;
    if (!ReadStateBlock(block.data(), int(block.size()), state) || state.numValues == 0) {
        throw BadInput(path.string() + ": this is not a program of the instrument");
    }
    Program program;  // what a shorter block lacks keeps its default
    std::copy_n(state.values.begin(), state.numValues, program.values.begin());
    const std::string stem = path.stem().string();
    const bool isNamed = state.hasName && state.name.front() != '\0';
    // A name that fills its field, and a file's, may be longer than what a block keeps.
    NameState(state, isNamed ? std::string_view(state.name.data()) : stem);
    program.name = state.name.data();
    return program;
}

}  // namespace

void RequireReadable(const fs::path& path) {
    std::error_code error;
    if (fs::is_directory(path, error)) throw BadInput(path.string() + ": this is a folder");
    if (access(path.c_str(), R_OK) == 0) return;
    throw BadInput(path.string() + ": cannot be read: " + std::strerror(errno));
}

StateBlock ToBlock(const Program& program) {
    InstrumentState state;
    state.values = program.values;
    state.numValues = kNumParameters;
    state.hasName = true;
    program.name.copy(state.name.data(), kStateNameSize - 1);
    StateBlock block{};
    WriteStateBlock(state, block.data());
    return block;
}

Program LoadProgram(const fs::path& path) {
    RequireKnownEnding(path);
    return ReadProgram(ReadAll(path), path);
}

Program ReadProgram(std::string_view bytes, const fs::path& path) {
    RequireKnownEnding(path);
    const std::string ending = EndingOf(path);
    if (ending == ".txt") return ParseProgram(bytes, path.string());
    return FromBlock(ending == ".fxp" ? FindChunk(bytes, path) : bytes, path);
}

void SaveProgram(const fs::path& path, const Program& program) {
    const std::string ending = EndingOf(path);
    std::string bytes;
    if (ending == ".txt") {
        bytes = WriteProgram(program);
    } else if (ending == ".norava") {
        const StateBlock block = ToBlock(program);
        bytes.assign(block.begin(), block.end());
    } else {
        throw OutputError(path.string() + ": programs are written as .txt or .norava");
    }
    if (!file_system::ReplaceFile(path.c_str(), bytes.data(), bytes.size())) {
        throw OutputError(path.string() + ": cannot be written");
    }
}

std::vector<BankEntry> LoadBank(const fs::path& folder) try {
    if (!fs::is_directory(folder)) throw BadInput(folder.string() + ": there is no such folder");
    std::vector<BankEntry> bank;
    for (const auto& category : fs::directory_iterator(folder)) {
        if (!category.is_directory()) continue;
        for (const auto& file : fs::directory_iterator(category)) {
            if (EndingOf(file.path()) != ".txt") continue;
            BankEntry entry{category.path().filename().string(), file.path(),
                            LoadProgram(file.path())};
            if (entry.program.name != file.path().stem().string()) {
                throw BadInput(file.path().string() + ": the program calls itself " +
                               Quoted(entry.program.name));
            }
            bank.push_back(std::move(entry));
        }
    }
    std::ranges::sort(bank, {}, [](const BankEntry& entry) {
        return std::tie(entry.category, entry.program.name);
    });
    return bank;
} catch (const fs::filesystem_error& error) {
    throw BadInput(error.path1().string() + ": cannot be read: " + error.code().message());
}

}  // namespace norava
