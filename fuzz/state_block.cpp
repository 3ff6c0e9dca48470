// The state block: any bytes. What is read is written back as it came. Some blocks go through a
// whole instance, as a host's chunk: a refused one changes nothing, a taken one is saved again, and
// the host hears of each value that it has to know. A few of these are played.

#include <bit>
#include <cmath>
#include <limits>

#include "host/vst/vst_interface.h"
#include "states.h"
#include "target.h"

extern "C" norava::vst::AEffect* VSTPluginMain(norava::vst::HostCallback host);

namespace norava::fuzz {
namespace {

constexpr unsigned kHandedOver = 32;  // one in so many
constexpr unsigned kPlayed = 1024;
constexpr int kFrames = 48;
constexpr float kLoudest = 1.0e9f;  // the engine's own limit times the highest output level

class Host {
  public:
    Host() : effect_(VSTPluginMain(Callback)) {
        Require(effect_ != nullptr, "an instance is made");
        Dispatch(vst::effSetSampleRate, 0, nullptr, 48000.0f);
        Load(base_);
        Require(Save() == base_, "what is loaded is saved");
    }

    void Run(std::span<const char> block) {
        const bool isState = IsStateBlock(block);
        const vst::iptr taken = Load(block);
        Require(taken == (isState ? static_cast<vst::iptr>(block.size()) : 0),
                "a state is taken, anything else refused");
        Require(told_ == (isState ? kNumHostParameters : 0), "the host hears of all values");
        const StateBytes saved = Save();
        Require(saved == StateAfter(base_, block), "what was loaded is saved, and nothing else");
        if (isState && IsOneOf(kPlayed, block)) Play();
        if (isState) Load(base_);
    }

  private:
    static vst::iptr Callback(vst::AEffect* effect, vst::i32 opcode, vst::i32 index, vst::iptr,
                              void*, vst::f32 value) {
        if (opcode == vst::audioMasterVersion) return vst::kVstVersion;
        if (opcode == vst::audioMasterAutomate) {
            Require(index == told_, "values are told in order");
            const float now = effect->getParameter(effect, index);
            Require(std::bit_cast<int>(now) == std::bit_cast<int>(value), "told as it is");
            ++told_;
        }
        return 0;
    }

    vst::iptr Dispatch(vst::i32 opcode, vst::iptr value, void* ptr, float opt = 0.0f) {
        return effect_->dispatcher(effect_, opcode, 0, value, ptr, opt);
    }

    StateBytes Save() {
        void* chunk = nullptr;
        Require(Dispatch(vst::effGetChunk, 0, static_cast<void*>(&chunk)) == kStateSize,
                "a state has one size");
        StateBytes saved;
        std::memcpy(saved.data(), chunk, saved.size());
        return saved;
    }

    vst::iptr Load(std::span<const char> block) {
        told_ = 0;
        return Dispatch(vst::effSetChunk, static_cast<vst::iptr>(block.size()),
                        const_cast<char*>(block.data()));
    }

    // From silence, as a host starts; a note in the middle.
    void Play() {
        Dispatch(vst::effMainsChanged, 0, nullptr);
        Dispatch(vst::effMainsChanged, 1, nullptr);
        vst::VstMidiEvent note{vst::kVstMidiType,  0, kFrames / 2, 0, 0, 0,
                               {0x90, 60, 100, 0}, 0, 0,           0, 0};
        vst::VstEvents events{1, 0, {reinterpret_cast<vst::VstEvent*>(&note), nullptr}};
        Dispatch(vst::effProcessEvents, 0, &events);
        std::array<std::array<float, kFrames>, 2> sound;
        for (auto& channel : sound)
            channel.fill(std::numeric_limits<float>::quiet_NaN());
        float* outputs[] = {sound[0].data(), sound[1].data()};
        effect_->processReplacing(effect_, nullptr, outputs, kFrames);
        for (const auto& channel : sound) {
            for (const float sample : channel)
                Require(std::fabs(sample) <= kLoudest, "the output is finite");
        }
    }

    static inline int told_ = 0;
    vst::AEffect* const effect_;
    StateBytes base_ = BaseState();
};

// Without an instance, which is what most executions are.
void ReadAndWrite(std::span<const char> block) {
    InstrumentState state;
    const bool taken = ReadStateBlock(block.data(), static_cast<int>(block.size()), state);
    Require(taken == IsStateBlock(block), "a state is read, anything else refused");
    if (!taken) return;
    const std::size_t values = std::min<std::size_t>((block.size() - 3) / 4, kNumParameters);
    Require(state.numValues == static_cast<int>(values), "as many values as there are");
    Require(state.hasName == (block.size() >= kStateSize), "a name when all of it is there");

    StateBytes written;
    written.fill('#');
    WriteStateBlock(state, written.data());
    StateBytes expected{};
    std::copy_n(block.begin(), std::min(block.size(), kValuesEnd), expected.begin());
    // A value of less than three bytes is none.
    if (values < kNumParameters) std::fill(expected.begin() + 4 + 4 * values, expected.end(), '\0');
    if (state.hasName) {
        const auto name = block.subspan(kValuesEnd, kStateNameSize - 1);
        std::copy(name.begin(), std::ranges::find(name, '\0'), expected.begin() + kValuesEnd);
    }
    Require(written == expected, "what was read is written");
}

}  // namespace
}  // namespace norava::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace norava::fuzz;
    static Host host;
    const std::span block(reinterpret_cast<const char*>(data), size);
    ReadAndWrite(block);
    if (IsOneOf(kHandedOver, block)) host.Run(block);
    return 0;
}
