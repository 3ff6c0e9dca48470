#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "host/vst/vst_interface.h"

namespace norava {

// From now on instances take the programs of a folder of the tests' own, never the user's. Returns
// the library's root in it, which is made. An empty folder is used until the first call.
std::string UseProgramFolder(const std::string& name);

// One instance as a host sees it: nothing but the record and the callback. The module is loaded
// with the first one and stays while the process lives, as in hosts that scan first and play later.
class VstInstance {
  public:
    static constexpr int kParams = 114;
    static constexpr int kChunkSize = 588;

    explicit VstInstance(float sampleRate = 0.0f);  // 0: not started yet
    ~VstInstance();
    VstInstance(const VstInstance&) = delete;
    VstInstance& operator=(const VstInstance&) = delete;

    vst::iptr Dispatch(int opcode, int index = 0, vst::iptr value = 0, void* ptr = nullptr,
                       float opt = 0.0f) {
        return effect->dispatcher(effect, opcode, index, value, ptr, opt);
    }
    void Start(float sampleRate);  // rate, block size, resume
    void SwitchEffectsOn();

    // The text that an opcode writes. Fails the test when it writes beyond `capacity` bytes or does
    // not terminate.
    std::string Text(int opcode, int index, std::size_t capacity);
    void SetProgramName(std::string name) { Dispatch(vst::effSetProgramName, 0, 0, name.data()); }
    std::string ProgramName() { return Text(vst::effGetProgramName, 0, 24); }

    void Set(int index, float value) { effect->setParameter(effect, index, value); }
    float Get(int index) { return effect->getParameter(effect, index); }

    std::vector<char> Chunk();
    vst::iptr LoadChunk(const std::vector<char>& chunk);

    // MIDI messages for the next block. Delivering them allocates nothing.
    struct Message {
        int position;
        std::array<unsigned char, 3> bytes;
    };
    void Prepare(const std::vector<Message>& messages);
    void Deliver();
    void Send(const std::vector<Message>& messages);
    void Note(int note, int velocity = 100, int position = 0);

    struct Stereo {
        std::vector<float> left, right;
        bool operator==(const Stereo&) const = default;
        Stereo& operator+=(const Stereo& next);
    };
    // Renders `frames` frames in blocks.
    Stereo Render(int frames, int blockSize = 512);
    void Process(float* left, float* right, int frames);

    vst::AEffect* effect = nullptr;
    vst::VstTimeInfo time{};      // what the host answers; flags 0: it knows nothing
    bool forgetsReports = false;  // several threads may be told then
    std::vector<std::pair<int, float>> automated;
    std::vector<std::pair<int, bool>> edits;  // parameter, begun

  private:
    static vst::iptr Callback(vst::AEffect* effect, vst::i32 opcode, vst::i32 index,
                              vst::iptr value, void* ptr, vst::f32 opt);

    std::vector<vst::VstMidiEvent> records;
    std::vector<unsigned char> eventList;
};

bool IsFinite(const VstInstance::Stereo& sound);
float Peak(const VstInstance::Stereo& sound);

}  // namespace norava
