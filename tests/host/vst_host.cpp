#include "host/vst_host.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>

namespace norava {

std::string UseProgramFolder(const std::string& name) {
    namespace fs = std::filesystem;
    static const fs::path mine =
        fs::temp_directory_path() / ("norava-host-tests-" + std::to_string(getpid()));
    static const auto removeAtEnd = std::shared_ptr<void>(nullptr, [](void*) {
        std::error_code ignored;
        fs::remove_all(mine, ignored);
    });
    const fs::path root = mine / name / "Hollo-Vane" / "Shared Data" / "Norava";
    fs::create_directories(root);
    setenv("XDG_DATA_HOME", (mine / name).c_str(), 1);
    return root.string();
}

VstModule::Entry VstModule::GetEntry() {
    static const Entry entry = [] {
        UseProgramFolder("empty");
        void* const module = dlopen(NORAVA_MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
        EXPECT_NE(module, nullptr) << dlerror();
        return module != nullptr ? reinterpret_cast<Entry>(dlsym(module, "VSTPluginMain"))
                                 : nullptr;
    }();
    return entry;
}

VstInstance::VstInstance() {
    const VstModule::Entry entry = VstModule::GetEntry();
    if (entry != nullptr) effect = entry(Callback);
    EXPECT_NE(effect, nullptr);
    effect->resvd1 = reinterpret_cast<vst::iptr>(this);
    automated.reserve(
        1 << 12);  // a host takes no memory while it is told inside its processing call
    Dispatch(vst::effOpen);
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
            std::strcpy(static_cast<char*>(ptr), "Test House");
            return 1;
        case vst::audioMasterGetProductString:
            std::strcpy(static_cast<char*>(ptr), "Test Host");
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

std::string VstInstance::Text(int opcode, int index, std::size_t capacity) {
    std::array<char, 512> buffer;
    buffer.fill('#');
    Dispatch(opcode, index, 0, buffer.data());
    const auto end = std::find(buffer.begin(), buffer.end(), '\0');
    EXPECT_LT(static_cast<std::size_t>(end - buffer.begin()), capacity) << "opcode " << opcode;
    for (std::size_t i = capacity; i < buffer.size(); ++i) {
        if (buffer[i] != '#') ADD_FAILURE() << "opcode " << opcode << " wrote byte " << i;
    }
    return {buffer.begin(), end};
}

std::vector<char> VstInstance::Chunk() {
    void* data = nullptr;
    const vst::iptr size = Dispatch(vst::effGetChunk, 0, 0, &data);
    const char* const bytes = static_cast<const char*>(data);
    return {bytes, bytes + size};
}

vst::iptr VstInstance::LoadChunk(const std::vector<char>& chunk) {
    // A block of exactly that size, so that the address checker sees reads behind it.
    const std::vector<char> exact(chunk.begin(), chunk.end());
    return Dispatch(vst::effSetChunk, 0, static_cast<vst::iptr>(exact.size()),
                    const_cast<char*>(exact.data()));
}

void VstInstance::Send(const std::vector<Message>& messages) {
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
    EXPECT_EQ(Dispatch(vst::effProcessEvents, 0, 0, events), 1);
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

bool IsFinite(const std::vector<float>& samples) {
    return std::all_of(samples.begin(), samples.end(), [](float x) { return std::isfinite(x); });
}

bool IsFinite(const VstInstance::Stereo& sound) {
    return IsFinite(sound.left) && IsFinite(sound.right);
}

float Peak(const std::vector<float>& samples) {
    float peak = 0.0f;
    for (float x : samples)
        peak = std::max(peak, std::abs(x));
    return peak;
}

bool SameBits(const std::vector<float>& a, const std::vector<float>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

}  // namespace norava
