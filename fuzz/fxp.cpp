// A host's program file (.fxp), or anything else that lies in a library's folder: what the library
// takes out of it stays within the file's bytes and the block's size, and both readers of such
// files, the library's and the program tool's, find the same sound. Some go into an instrument.

#include <bit>
#include <filesystem>
#include <optional>

#include "presets/program_file.h"
#include "program_text/program_file.h"
#include "render/bad_input.h"
#include "states.h"
#include "target.h"

namespace norava::fuzz {
namespace {

constexpr unsigned kLoaded = 32;  // one in so many goes into an instrument
constexpr unsigned kCompared = 8;
constexpr std::size_t kChunkOffset = 60;

bool IsFxp(std::string_view file) {
    return file.starts_with("CcnK") && file.size() >= 12 && file.substr(8, 4) == "FPCh";
}

void CheckBlock(std::span<const char> file, const std::optional<ProgramBlock>& block) {
    const bool rightSize =
        file.size() >= kMinProgramFileBytes && file.size() <= kMaxProgramFileBytes;
    Require(block.has_value() == rightSize, "files of a program's size have a block");
    if (!block) return;
    const bool wrapped = IsFxp({file.data(), file.size()});
    // A wrapped one counts as that much longer than it is, with zeros.
    const std::size_t size =
        std::min<std::size_t>(file.size() + (wrapped ? kChunkOffset : 0), kProgramBlockBytes);
    Require(block->size == static_cast<int>(size), "the block is as long as the file says");
    std::array<char, kProgramBlockBytes> expected{};
    const auto chunk = file.subspan(std::min(wrapped ? kChunkOffset : 0, file.size()));
    std::copy_n(chunk.begin(), std::min(chunk.size(), expected.size()), expected.begin());
    Require(block->bytes == expected, "the block is what the file holds");
}

void Load(const ProgramBlock& block) {
    static BaseInstrument instrument;
    const std::span<const char> bytes(block.bytes.data(), static_cast<std::size_t>(block.size));
    const bool taken = instrument.synth.LoadProgram(bytes.data(), block.size, "base");
    Require(taken == IsStateBlock(bytes), "a state is taken, anything else refused");
    StateBytes expected = StateAfter(instrument.base, bytes);
    // The program is called what its file is called.
    std::copy(instrument.base.begin() + kValuesEnd, instrument.base.end(),
              expected.begin() + kValuesEnd);
    Require(instrument.Save() == expected, "what was loaded is saved, and nothing else");
    if (taken) instrument.Restore();
}

// Only for files with a whole block: of shorter ones the tool makes less.
void Compare(std::span<const char> file, const ProgramBlock& block) {
    static const std::filesystem::path path = "some.fxp";
    const std::string_view bytes(file.data(), file.size());
    const bool isProgram = IsFxp(bytes) && IsStateBlock(file.subspan(kChunkOffset));
    try {
        const Program program = ReadProgram(bytes, path);
        Require(isProgram, "the tool takes no other file");
        const StateBlock read = ToBlock(program);
        Require(std::equal(read.begin(), read.begin() + kValuesEnd, block.bytes.begin()),
                "both readers find the same values");
    } catch (const BadInput&) {
        Require(!isProgram, "the tool takes what the library takes");
    }
}

}  // namespace
}  // namespace norava::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace norava;
    const std::span file(reinterpret_cast<const char*>(data), size);
    // The library reads no more of a file than it needs.
    const auto head = file.first(std::min<std::size_t>(size, kProgramHeadBytes));
    const std::optional<ProgramBlock> block = DecodeProgram(head, static_cast<long>(size));
    fuzz::CheckBlock(file, block);
    if (block && fuzz::IsOneOf(fuzz::kLoaded, file)) fuzz::Load(*block);
    if (size >= kProgramHeadBytes && fuzz::IsOneOf(fuzz::kCompared, file))
        fuzz::Compare(file, *block);
    return 0;
}
