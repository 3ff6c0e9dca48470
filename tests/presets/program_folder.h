#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "files/scratch_folder.h"
#include "framework/plugin_wrapper.h"
#include "presets/preset_library.h"
#include "synth/player.h"
#include "synth/state_block.h"

namespace norava::test {

// The state block of an instrument with one value everywhere.
inline std::string Block(float value, const char* name = "stored name") {
    InstrumentState state;
    state.values.fill(value);
    NameState(state, name);
    std::string block(kStateSize, '\0');
    WriteStateBlock(state, block.data());
    return block;
}

// A VST program file round a chunk, as far as anyone reads it.
inline std::string Fxp(const std::string& chunk) {
    std::string file = "CcnK????FPCh";
    file.resize(60, '\x7f');
    return file + chunk;
}

// A library's root of the running test alone, with programs of that value in it.
class ProgramFolder {
  public:
    ProgramFolder(std::initializer_list<const char*> names = {}, float value = 0.5f) {
        for (const char* const name : names)
            Write(name, Block(value));
    }

    std::string Root() const { return scratch.Path("root"); }
    LibraryPlace Place() const { return {.root = Root()}; }
    std::string Path(const std::string& name) const { return Root() + '/' + name; }

    std::string Write(const std::string& name, const std::string& bytes) const {
        return scratch.Write("root/" + name, bytes);
    }
    std::string Read(const std::string& name) const { return scratch.Read("root/" + name); }

    ScratchFolder scratch;
};

// Whether something comes true while other threads work.
template <typename Condition>
bool Eventually(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (std::chrono::steady_clock::now() < end) {
        if (condition()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

inline std::string NameOf(CPluginRenderer& renderer) {
    std::array<char, 256> name{};
    renderer.GetProgramName(name);
    return name.data();
}

// "Category: program program | ..." in the library's order.
inline std::string Listing(const LibrarySnapshot& library) {
    std::string text;
    for (const LibraryCategory& category : library.Categories()) {
        text += (text.empty() ? "" : " | ") + std::string(category.Name()) + ':';
        for (const LibraryProgram& program : category.programs)
            text += ' ' + std::string(program.Name());
    }
    return text;
}

// An instrument on a library, and a host that writes down what it is told.
class LibrarySynth final : public Player, public CPluginWrapper {
  public:
    explicit LibrarySynth(const LibraryPlace& place) : Player(48000.0, place) {
        synth.SetWrapper(this);
        synth.AwaitReadiness();
    }
    void ParameterChanged(int index, float value) override { told.emplace_back(index, value); }
    float Value(int index = 3) { return synth.GetParamValue(index); }

    CPresetList& list = synth.GetPresetList();
    std::vector<std::pair<int, float>> told;
};

}  // namespace norava::test
