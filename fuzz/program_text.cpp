// The text of a program, as norava-program compiles it: what is taken can be written and read again
// to the same bits, and makes a block that the instrument takes. A refusal names source and line.

#include "program_text/program_text.h"

#include <algorithm>
#include <string_view>

#include "program_text/program_file.h"
#include "render/bad_input.h"
#include "states.h"
#include "target.h"

namespace norava::fuzz {
namespace {

void Run(std::string_view text) {
    const Program program = ParseProgram(text, "source");
    Require(!program.name.empty() && program.name.size() < kStateNameSize, "a name that fits");
    const std::string written = WriteProgram(program);
    const Program again = ParseProgram(written, "written");
    const StateBlock block = ToBlock(program);
    Require(ToBlock(again) == block, "the same values and name");
    Require(again.author == program.author && again.tags == program.tags &&
                again.description == program.description,
            "the same headings");
    Require(WriteProgram(again) == written, "what is written is read and written as it is");

    InstrumentState state;
    Require(ReadStateBlock(block.data(), kStateSize, state), "the instrument takes the block");
    Require(state.numValues == kNumParameters && state.hasName && program.name == state.name.data(),
            "with all values and its name");
}

}  // namespace
}  // namespace norava::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        norava::fuzz::Run({reinterpret_cast<const char*>(data), size});
    } catch (const norava::BadInput& refused) {
        const std::string_view what = refused.what();
        norava::fuzz::Require(what.starts_with("source:"), "a refusal names source and line");
    }
    return 0;
}
