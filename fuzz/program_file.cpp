// A program file (.norava) on the disk: what the instrument loads of it, saves again and loads
// again, and the same by the program tool. A refused file changes neither sound nor name.

#include "presets/program_file.h"

#include <filesystem>
#include <optional>

#include "files/scratch_folder.h"
#include "presets/preset_list.h"
#include "program_text/program_file.h"
#include "render/bad_input.h"
#include "states.h"
#include "target.h"

namespace norava::fuzz {
namespace {

StateBytes Named(StateBytes state, std::string_view name) {
    std::fill(state.begin() + kValuesEnd, state.end(), '\0');
    CopyText(std::span(state).subspan(kValuesEnd), name);
    return state;
}

class Target : BaseInstrument {
  public:
    void Run(std::span<const char> bytes) {
        Restore();
        const std::string path = folder_.Write("given.norava", {bytes.data(), bytes.size()});
        const std::optional<ProgramBlock> block = ReadProgramFile(path);
        Require(block == DecodeProgram(bytes, static_cast<long>(bytes.size())),
                "the file is read as its bytes are");
        const bool isProgram = block && IsStateBlock(Used(*block));
        Require(list_.LoadProgramFromFile(path.c_str()) == isProgram,
                "a program is loaded, anything else refused");
        const StateBytes expected =
            isProgram ? Named(StateAfter(base, Used(*block)), "given") : base;
        Require(Save() == expected, "what was loaded is saved, and nothing else");
        if (isProgram) SaveAndReturn(expected);
        Convert(path, isProgram);
    }

  private:
    static std::span<const char> Used(const ProgramBlock& block) {
        return std::span(block.bytes).first(static_cast<std::size_t>(block.size));
    }

    void SaveAndReturn(const StateBytes& state) {
        const std::string path = folder_.Path("saved.norava");
        Require(list_.SaveProgramToFile(path.c_str()), "it can be saved");
        const std::string file = folder_.Read("saved.norava");
        Require(std::ranges::equal(file, state), "the file is the state");
        Restore();
        Require(list_.LoadProgramFromFile(path.c_str()), "what was saved is loaded");
        Require(Save() == Named(state, "saved"), "saving and loading keep everything");
    }

    // The tool's own reader and writer. To it a wrapped program is no plain file.
    void Convert(const std::string& path, bool isProgram) {
        try {
            const Program program = LoadProgram(path);
            Require(!program.name.empty(), "a program has a name");
            SaveProgram(folder_.Path("tool.norava"), program);
            const Program again = LoadProgram(folder_.Path("tool.norava"));
            Require(ToBlock(again) == ToBlock(program), "a block stays as it is");
            SaveProgram(folder_.Path("tool.txt"), program);
            const Program text = LoadProgram(folder_.Path("tool.txt"));
            Require(ToBlock(text) == ToBlock(program), "as a text it stays as it is");
        } catch (const BadInput& refused) {
            Require(*refused.what() != '\0', "a refusal says why");
            const std::string file = folder_.Read("given.norava");
            Require(!isProgram || !IsStateBlock(file), "the tool takes what is played");
        }
    }

    const test::ScratchFolder folder_;
    CPresetList& list_ = synth.GetPresetList();
};

}  // namespace
}  // namespace norava::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static norava::fuzz::Target target;
    target.Run({reinterpret_cast<const char*>(data), size});
    return 0;
}
