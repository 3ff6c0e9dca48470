#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "files/scratch_folder.h"
#include "framework/repeatedly.h"
#include "host/vst/vst_interface.h"
#include "parameters/parameter_index.h"
#include "synth/player.h"

namespace norava {

// From now on instances take the programs of a folder of the tests' own, never the user's. Returns
// the library's root in it, which is made.
inline std::string UseProgramFolder(const std::string& name) {
    static const test::ScratchFolder mine;
    const std::filesystem::path root = mine / name / "Hollo-Vane/Shared Data/Norava";
    std::filesystem::create_directories(root);
    setenv("XDG_DATA_HOME", mine.Path(name).c_str(), 1);
    return root.string();
}

// Before any instance, so that none ever sees the user's.
inline const std::string kFirstFolder = UseProgramFolder("empty");

// One instance as a host sees it: nothing but the record and the callback. The module is loaded
// with the first one and stays while the process lives, as in hosts that scan first and play later.
class VstInstance {
  public:
    static constexpr int kParams = 114;
    static constexpr int kChunkSize = 588;

    explicit VstInstance(float sampleRate = 0.0f) {  // 0: not started yet
        static auto* const entry = [] {
            void* const module = dlopen(NORAVA_MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
            if (module == nullptr) ADD_FAILURE() << dlerror();
            return reinterpret_cast<vst::AEffect* (*)(vst::HostCallback)>(
                dlsym(module, "VSTPluginMain"));
        }();
        effect = entry(Callback);
        EXPECT_NE(effect, nullptr);
        effect->resvd1 = reinterpret_cast<vst::iptr>(this);
        // A host takes no memory while it is told inside its processing call.
        automated.reserve(1 << 12);
        Dispatch(vst::effOpen);
        if (sampleRate > 0.0f) Start(sampleRate);
    }
    ~VstInstance() { Dispatch(vst::effClose); }
    VstInstance(const VstInstance&) = delete;
    VstInstance& operator=(const VstInstance&) = delete;

    vst::iptr Dispatch(int opcode, int index = 0, vst::iptr value = 0, void* ptr = nullptr,
                       float opt = 0.0f) {
        return effect->dispatcher(effect, opcode, index, value, ptr, opt);
    }
    void Start(float sampleRate) {
        Dispatch(vst::effSetSampleRate, 0, 0, nullptr, sampleRate);
        Dispatch(vst::effSetBlockSize, 0, 512);
        Dispatch(vst::effMainsChanged, 0, 1);
    }

    // The text that an opcode writes. Fails the test when it writes beyond `capacity` bytes or does
    // not terminate.
    std::string Text(int opcode, int index, std::size_t capacity) {
        std::string buffer(512, '#');
        Dispatch(opcode, index, 0, buffer.data());
        const std::size_t length = buffer.find('\0');
        EXPECT_LT(length, capacity) << "opcode " << opcode;
        EXPECT_EQ(buffer.find_first_not_of('#', capacity), std::string::npos) << "wrote byte";
        return buffer.substr(0, length);
    }
    void SetProgramName(std::string name) { Dispatch(vst::effSetProgramName, 0, 0, name.data()); }
    std::string ProgramName() { return Text(vst::effGetProgramName, 0, 24); }

    void Set(int index, float value) { effect->setParameter(effect, index, value); }
    float Get(int index) { return effect->getParameter(effect, index); }
    void SwitchEverythingOn() {
        for (const int effectOn : {param::kDelayOn, param::kChorusOn, param::kReverbOn})
            Set(effectOn, 1.0f);
        for (int band = 0; band < kResonatorBands; ++band)
            Set(param::kResonatorOn + band, 1.0f);
    }

    std::vector<char> Chunk() {
        void* data = nullptr;
        const vst::iptr size = Dispatch(vst::effGetChunk, 0, 0, &data);
        const char* const bytes = static_cast<const char*>(data);
        return {bytes, bytes + size};
    }
    vst::iptr LoadChunk(const std::vector<char>& chunk) {
        // A copy of exactly that size, so that the address checker sees reads behind it.
        const std::vector<char> exact(chunk.begin(), chunk.end());
        return Dispatch(vst::effSetChunk, 0, static_cast<vst::iptr>(exact.size()),
                        const_cast<char*>(exact.data()));
    }

    // MIDI messages for the next block. Delivering them allocates nothing.
    struct Message {
        int position;
        std::array<unsigned char, 3> bytes;
    };
    void Prepare(const std::vector<Message>& messages) {
        records.assign(messages.size(), {});
        eventList.assign(offsetof(vst::VstEvents, events) + messages.size() * sizeof(void*), 0);
        auto* const events = reinterpret_cast<vst::VstEvents*>(eventList.data());
        events->numEvents = static_cast<vst::i32>(messages.size());
        vst::VstEvent** const list = events->events;
        for (std::size_t i = 0; i < messages.size(); ++i) {
            records[i].type = vst::kVstMidiType;
            records[i].deltaFrames = messages[i].position;
            std::copy_n(messages[i].bytes.begin(), 3, records[i].midiData);
            list[i] = reinterpret_cast<vst::VstEvent*>(&records[i]);
        }
    }
    void Deliver() { EXPECT_EQ(Dispatch(vst::effProcessEvents, 0, 0, eventList.data()), 1); }
    void Send(const std::vector<Message>& messages) {
        Prepare(messages);
        Deliver();
    }
    void Note(int note, int position = 0) {
        Send({{position, {0x90, static_cast<unsigned char>(note), 100}}});
    }

    void Process(float* left, float* right, int frames) {
        float* outputs[2] = {left, right};
        effect->processReplacing(effect, nullptr, outputs, frames);
    }
    // Renders `frames` frames in blocks.
    test::Stereo Render(int frames, int blockSize = 512) {
        const auto size = static_cast<std::size_t>(frames);
        test::Stereo sound{std::vector<float>(size), std::vector<float>(size)};
        for (int done = 0; done < frames; done += blockSize) {
            Process(sound.left.data() + done, sound.right.data() + done,
                    std::min(blockSize, frames - done));
        }
        return sound;
    }

    vst::AEffect* effect = nullptr;
    bool forgetsReports = false;  // several threads may be told then
    std::vector<std::pair<int, float>> automated;
    std::vector<std::pair<int, bool>> edits;  // parameter, begun

  private:
    static vst::iptr Callback(vst::AEffect* effect, vst::i32 opcode, vst::i32 index, vst::iptr,
                              void*, vst::f32 opt) {
        if (opcode == vst::audioMasterVersion) return vst::kVstVersion;
        // As in many hosts there is no object behind the record while the entry function runs.
        if (effect == nullptr || effect->resvd1 == 0) return 0;
        auto* const host = reinterpret_cast<VstInstance*>(effect->resvd1);
        if (host->forgetsReports) return 0;
        if (opcode == vst::audioMasterAutomate) host->automated.emplace_back(index, opt);
        if (opcode == vst::audioMasterBeginEdit || opcode == vst::audioMasterEndEdit)
            host->edits.emplace_back(index, opcode == vst::audioMasterBeginEdit);
        return 0;
    }

    std::vector<vst::VstMidiEvent> records;
    std::vector<unsigned char> eventList;
};

}  // namespace norava
