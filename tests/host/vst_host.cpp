#include "host/vst_host.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "files/scratch_folder.h"
#include "parameters/parameter_index.h"

namespace norava {

std::string UseProgramFolder(const std::string& name) {
    static const test::ScratchFolder mine;
    const std::filesystem::path root = mine / name / "Hollo-Vane/Shared Data/Norava";
    std::filesystem::create_directories(root);
    setenv("XDG_DATA_HOME", mine.Path(name).c_str(), 1);
    return root.string();
}

// Before any instance, so that none ever sees the user's.
static const std::string kFirstFolder = UseProgramFolder("empty");

VstInstance::VstInstance(float sampleRate) {
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

VstInstance::~VstInstance() {
    Dispatch(vst::effClose);
}

vst::iptr VstInstance::Callback(vst::AEffect* effect, vst::i32 opcode, vst::i32 index, vst::iptr,
                                void* ptr, vst::f32 opt) {
    switch (opcode) {
        case vst::audioMasterVersion:
            return vst::kVstVersion;
        case vst::audioMasterGetVendorString:
        case vst::audioMasterGetProductString:
            std::memcpy(ptr, "Test", sizeof "Test");
            return 1;
        default:
            break;
    }
    // As in many hosts there is no object behind the record while the entry function runs.
    if (effect == nullptr || effect->resvd1 == 0) return 0;
    auto* const host = reinterpret_cast<VstInstance*>(effect->resvd1);
    switch (opcode) {
        case vst::audioMasterGetTime:
            return host->time.flags != 0 ? reinterpret_cast<vst::iptr>(&host->time) : 0;
        case vst::audioMasterAutomate:
            if (!host->forgetsReports) host->automated.emplace_back(index, opt);
            return 0;
        case vst::audioMasterBeginEdit:
        case vst::audioMasterEndEdit:
            if (!host->forgetsReports)
                host->edits.emplace_back(index, opcode == vst::audioMasterBeginEdit);
            return 1;
        default:
            return 0;
    }
}

void VstInstance::Start(float sampleRate) {
    Dispatch(vst::effSetSampleRate, 0, 0, nullptr, sampleRate);
    Dispatch(vst::effSetBlockSize, 0, 512);
    Dispatch(vst::effMainsChanged, 0, 1);
}

void VstInstance::SwitchEffectsOn() {
    for (const int switched : {param::kDelayOn, param::kChorusOn, param::kReverbOn})
        Set(switched, 1.0f);
}

std::string VstInstance::Text(int opcode, int index, std::size_t capacity) {
    std::string buffer(512, '#');
    Dispatch(opcode, index, 0, buffer.data());
    const std::size_t length = buffer.find('\0');
    EXPECT_LT(length, capacity) << "opcode " << opcode;
    EXPECT_EQ(buffer.find_first_not_of('#', capacity), std::string::npos) << "wrote byte";
    return buffer.substr(0, length);
}

std::vector<char> VstInstance::Chunk() {
    void* data = nullptr;
    const vst::iptr size = Dispatch(vst::effGetChunk, 0, 0, &data);
    const char* const bytes = static_cast<const char*>(data);
    return {bytes, bytes + size};
}

vst::iptr VstInstance::LoadChunk(const std::vector<char>& chunk) {
    // A copy of exactly that size, so that the address checker sees reads behind it.
    const std::vector<char> exact(chunk.begin(), chunk.end());
    return Dispatch(vst::effSetChunk, 0, static_cast<vst::iptr>(exact.size()),
                    const_cast<char*>(exact.data()));
}

void VstInstance::Prepare(const std::vector<Message>& messages) {
    records.assign(messages.size(), {});
    eventList.assign(offsetof(vst::VstEvents, events) + messages.size() * sizeof(void*), 0);
    auto* const events = reinterpret_cast<vst::VstEvents*>(eventList.data());
    events->numEvents = static_cast<vst::i32>(messages.size());
    vst::VstEvent** const list = events->events;
    for (std::size_t i = 0; i < messages.size(); ++i) {
        records[i].type = vst::kVstMidiType;
        records[i].byteSize = sizeof(vst::VstMidiEvent);
        records[i].deltaFrames = messages[i].position;
        std::copy_n(messages[i].bytes.begin(), 3, records[i].midiData);
        list[i] = reinterpret_cast<vst::VstEvent*>(&records[i]);
    }
}

void VstInstance::Deliver() {
    EXPECT_EQ(Dispatch(vst::effProcessEvents, 0, 0, eventList.data()), 1);
}

void VstInstance::Send(const std::vector<Message>& messages) {
    Prepare(messages);
    Deliver();
}

void VstInstance::Note(int note, int velocity, int position) {
    Send({{position,
           {0x90, static_cast<unsigned char>(note), static_cast<unsigned char>(velocity)}}});
}

void VstInstance::Process(float* left, float* right, int frames) {
    float* outputs[2] = {left, right};
    effect->processReplacing(effect, nullptr, outputs, frames);
}

VstInstance::Stereo VstInstance::Render(int frames, int blockSize) {
    const auto size = static_cast<std::size_t>(frames);
    Stereo sound{std::vector<float>(size), std::vector<float>(size)};
    for (int done = 0; done < frames; done += blockSize) {
        Process(sound.left.data() + done, sound.right.data() + done,
                std::min(blockSize, frames - done));
    }
    return sound;
}

VstInstance::Stereo& VstInstance::Stereo::operator+=(const Stereo& next) {
    left.insert(left.end(), next.left.begin(), next.left.end());
    right.insert(right.end(), next.right.begin(), next.right.end());
    return *this;
}

bool IsFinite(const VstInstance::Stereo& sound) {
    const auto finite = [](float x) { return std::isfinite(x); };
    return std::ranges::all_of(sound.left, finite) && std::ranges::all_of(sound.right, finite);
}

float Peak(const VstInstance::Stereo& sound) {
    float peak = 0.0f;
    for (std::size_t i = 0; i < sound.left.size(); ++i)
        peak = std::max({peak, std::abs(sound.left[i]), std::abs(sound.right[i])});
    return peak;
}

}  // namespace norava
