// A host: the bytes are its calls, in any order that the interface allows, with any values, some of
// them on a second thread beside the first. The output is finite, nothing is written outside a
// block's frames or behind the end of a text, and the state that comes out goes in again.

#include <atomic>
#include <cmath>
#include <cstring>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "host/vst/vst_interface.h"
#include "input.h"
#include "panel_plugin.h"
#include "states.h"
#include "target.h"

extern "C" norava::vst::AEffect* VSTPluginMain(norava::vst::HostCallback host);

namespace norava::fuzz {
namespace {

constexpr int kMostCalls = 200;
constexpr int kMostFrames = 6000;  // of all blocks together
constexpr int kLargestBlock = 1200;
constexpr float kLoudest = 1.1e9f;  // the engine's own limit times the highest output level
constexpr float kGuard = 12345.0f;
constexpr char kUntouched = '#';

// A block's output, in memory of its size with words on both sides that nobody may write.
class Channel {
  public:
    Channel(int frames, float start)
        : samples_(static_cast<std::size_t>(2 * kGuards + frames), kGuard) {
        std::fill_n(Get(), frames, start);
    }
    float* Get() { return samples_.data() + kGuards; }
    void Check(bool isWritten) const {
        const std::span all(samples_);
        const auto isUntouched = [](float x) { return x == kGuard; };
        Require(std::ranges::all_of(all.first(kGuards), isUntouched) &&
                    std::ranges::all_of(all.last(kGuards), isUntouched),
                "nothing is written outside the block");
        const auto isFinite = [](float x) { return std::fabs(x) <= kLoudest; };
        Require(!isWritten || std::all_of(all.begin() + kGuards, all.end() - kGuards, isFinite),
                "the output is finite");
    }

  private:
    static constexpr int kGuards = 8;
    std::vector<float> samples_;
};

class Host {
  public:
    explicit Host(Input& input) : input_(input), effect_(VSTPluginMain(Callback)) {
        Require(effect_ != nullptr, "an instance is made");
        effect_->resvd1 = reinterpret_cast<vst::iptr>(this);
        Dispatch(vst::effOpen);
    }
    ~Host() {
        EndBeside();
        Dispatch(vst::effClose);
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    void Run() {
        for (int i = 0; i < kMostCalls && !input_.IsEmpty(); ++i)
            Call();
        EndBeside();
        SaveLoadSave();
    }

  private:
    static vst::iptr Callback(vst::AEffect* effect, vst::i32 opcode, vst::i32 index, vst::iptr,
                              void* ptr, vst::f32) {
        if (opcode == vst::audioMasterVersion) return vst::kVstVersion;
        if (effect == nullptr || effect->resvd1 == 0) return 0;
        auto* const host = reinterpret_cast<Host*>(effect->resvd1);
        if (opcode == vst::audioMasterGetTime && host->knowsTime_)
            return reinterpret_cast<vst::iptr>(&host->time_);
        if (opcode == vst::audioMasterCanDo) return ptr != nullptr;
        if (opcode == vst::audioMasterSizeWindow) return host->resizes_;
        if (opcode == vst::audioMasterAutomate || opcode == vst::audioMasterBeginEdit ||
            opcode == vst::audioMasterEndEdit) {
            Require(index >= 0 && index < effect->numParams, "the host knows the parameter");
            // As hosts do, from inside: asks back.
            (void)effect->getParameter(effect, index);
        }
        return 0;
    }

    vst::iptr Dispatch(vst::i32 opcode, vst::i32 index = 0, vst::iptr value = 0,
                       void* ptr = nullptr, float opt = 0.0f) {
        return effect_->dispatcher(effect_, opcode, index, value, ptr, opt);
    }

    void Call() {
        constexpr std::array kCalls = {
            &Host::SetRate,     &Host::SetBlockSize,   &Host::SuspendOrResume,
            &Host::SendEvents,  &Host::SendEvents,     &Host::SendEvents,
            &Host::Process,     &Host::Process,        &Host::Process,
            &Host::Process,     &Host::SetParameter,   &Host::SetParameter,
            &Host::AskForTexts, &Host::LoadChunk,      &Host::SetProgramName,
            &Host::UseEditor,   &Host::TouchEditor,    &Host::DoBeside,
            &Host::SetTime,     &Host::AskForSomething};
        (this->*kCalls[static_cast<std::size_t>(input_.Below(int{kCalls.size()}))])();
    }

    void SetBlockSize() { Dispatch(vst::effSetBlockSize, 0, input_.Int()); }

    // From the processing thread's point of view.
    void SuspendOrResume() {
        EndBeside();
        Dispatch(vst::effMainsChanged, 0, input_.Flag());
    }

    void SetParameter() {
        const int index = Parameter();
        effect_->setParameter(effect_, index, input_.Float());
    }

    int Parameter() {
        const int index = input_.Byte();
        return index < 250 ? index % 116 - 1 : input_.Int();
    }

    void SetRate() {
        // Higher ones, whose instances take hundreds of megabytes, come as any number does.
        constexpr std::array kRates = {44100.0f, 48000.0f,  96000.0f, 22050.0f, 1000.0f,
                                       8000.0f,  192000.0f, 0.0f,     -1.0f};
        EndBeside();
        const int choice = input_.Below(int{kRates.size()} + 1);
        const bool isAny = choice == int{kRates.size()};
        const float rate =
            isAny ? std::bit_cast<float>(input_.Word()) : kRates[static_cast<std::size_t>(choice)];
        Dispatch(vst::effSetSampleRate, 0, 0, nullptr, rate);
    }

    void SendEvents() {
        const auto count = static_cast<std::size_t>(input_.Below(12));
        std::vector<vst::VstMidiEvent> records(count);
        std::vector<char> list(offsetof(vst::VstEvents, events) + (count + 2) * sizeof(void*));
        auto* const events = reinterpret_cast<vst::VstEvents*>(list.data());
        vst::VstEvent** const pointers = events->events;
        events->numEvents = static_cast<vst::i32>(count);
        for (std::size_t i = 0; i < count; ++i) {
            vst::VstMidiEvent& record = records[i];
            const int kind = input_.Below(16);
            record.type = kind == 0 ? 6 : vst::kVstMidiType;
            record.byteSize = sizeof record;
            record.deltaFrames = kind == 1 ? input_.Int() : input_.Byte() * (1 + kind / 4);
            // Notes, half of the time.
            const std::uint8_t status = input_.Byte();
            record.midiData[0] =
                status < 128 ? static_cast<std::uint8_t>(0x80 + status % 32) : status;
            record.midiData[1] = input_.Byte();
            record.midiData[2] = input_.Byte();
            record.midiData[3] = static_cast<unsigned char>(kind);
            pointers[i] = kind == 2 ? nullptr : reinterpret_cast<vst::VstEvent*>(&record);
        }
        Require(Dispatch(vst::effProcessEvents, 0, 0, events) == 1, "events are taken");
    }

    void Process() {
        constexpr std::array kSizes = {1, 16, 64, 256, 511, 512, 513, 0, -5};
        const int choice = input_.Below(int{kSizes.size()} + 3);
        int frames = choice < int{kSizes.size()} ? kSizes[static_cast<std::size_t>(choice)]
                                                 : input_.Byte() * input_.Byte() % kLargestBlock;
        frames = std::min(frames, kMostFrames - framesDone_);
        const int written = std::max(frames, 0);
        framesDone_ += written;
        const int form = input_.Below(8);
        const float start = form == 0 ? 0.0f : kGuard;
        Channel left(written, start);
        Channel right(written, start);
        float* outputs[] = {form == 1 ? nullptr : left.Get(), form == 2 ? nullptr : right.Get()};
        float** const given = form == 3 ? nullptr : outputs;
        const auto process = form == 0 ? effect_->process : effect_->processReplacing;
        process(effect_, nullptr, given, frames);
        left.Check(given != nullptr && outputs[0] != nullptr);
        right.Check(given != nullptr && outputs[1] != nullptr);
    }

    // The text that an opcode writes ends within the host's buffer, and nothing lies behind it.
    void CheckText(vst::i32 opcode, vst::i32 index, std::size_t capacity) {
        std::string buffer(512, kUntouched);
        Dispatch(opcode, index, 0, buffer.data());
        Require(buffer.find('\0') < capacity, "a text fits");
        Require(buffer.find_first_not_of(kUntouched, capacity) == std::string::npos,
                "nothing is written behind a text");
    }

    void AskForTexts() {
        const int index = Parameter();
        for (const auto opcode :
             {vst::effGetParamName, vst::effGetParamLabel, vst::effGetParamDisplay})
            CheckText(opcode, index, vst::kParamTextCapacity);
        CheckText(vst::effGetProgramName, 0, vst::kProgramTextCapacity);
        CheckText(vst::effGetProgramNameIndexed, 0, vst::kProgramTextCapacity);
        (void)effect_->getParameter(effect_, index);
    }

    StateBytes Save() {
        void* chunk = nullptr;
        Require(
            Dispatch(vst::effGetChunk, input_.Flag(), 0, static_cast<void*>(&chunk)) == kStateSize,
            "a state has one size");
        StateBytes saved;
        std::memcpy(saved.data(), chunk, saved.size());
        Require(IsStateBlock(saved), "what is saved is a state");
        return saved;
    }

    // What a host restores: its own chunk with some bytes changed, cut, or anything.
    std::vector<char> MakeChunk() {
        const StateBytes saved = Save();
        std::vector<char> chunk(saved.begin(), saved.end());
        switch (input_.Below(4)) {
            case 0: {
                const auto bytes = input_.Take(input_.Byte());
                return {bytes.begin(), bytes.end()};
            }
            case 1:
                chunk.resize(input_.Word() % 700);
                break;
            default:
                for (int changes = input_.Below(8); changes > 0; --changes) {
                    const float value = input_.Float();
                    const auto index = static_cast<std::size_t>(input_.Below(kNumParameters));
                    std::memcpy(chunk.data() + 4 + 4 * index, &value, sizeof value);
                }
        }
        return chunk;
    }

    void Load(std::span<const char> chunk) {
        const vst::iptr taken =
            Dispatch(vst::effSetChunk, 0, std::ssize(chunk), const_cast<char*>(chunk.data()));
        Require(taken == (IsStateBlock(chunk) ? std::ssize(chunk) : 0),
                "a state is taken, anything else refused");
    }
    void LoadChunk() { Load(MakeChunk()); }

    void SaveLoadSave() {
        const StateBytes saved = Save();
        Load(saved);
        Require(Save() == saved, "a state stays as it is");
    }

    void SetProgramName() {
        const auto bytes = input_.Take(input_.Byte());
        std::string name(bytes.begin(), bytes.end());
        Dispatch(vst::effSetProgramName, 0, 0, name.data());
        Dispatch(vst::effSetProgram, 0, input_.Int());
        Require(Dispatch(vst::effGetProgram) == 0, "there is one program");
    }

    void UseEditor() {
        vst::ERect* rect = nullptr;
        Require(Dispatch(vst::effEditGetRect, 0, 0, static_cast<void*>(&rect)) == 1 &&
                    rect->right > 0 && rect->bottom > 0,
                "the panel has a size");
        switch (input_.Below(4)) {
            case 0:
                Require(Dispatch(vst::effEditOpen, 0, 0, this) == 1, "the panel opens");
                break;
            case 1:
                Dispatch(vst::effEditClose);
                break;
            default:
                Dispatch(vst::effEditIdle);
                if (OffscreenView* const view = PanelPlugin::Get().GetView()) view->Tick();
        }
    }

    void TouchEditor() {
        const int character = input_.Below(3) == 0 ? input_.Int() : input_.Byte();
        const auto code = static_cast<vst::iptr>(input_.Below(64));
        Dispatch(vst::effEditKeyDown, character, code, nullptr, input_.Float());
        Dispatch(vst::effEditKeyUp, character, code, nullptr, input_.Float());
        const CPoint at(input_.Byte() * 4 - 40, input_.Byte() * 3 - 40);
        if (OffscreenView* const view = PanelPlugin::Get().GetView()) view->Click(at);
    }

    // Parameters and states from another thread, while this one goes on.
    void DoBeside() {
        EndBeside();
        std::vector<std::pair<int, float>> changes(static_cast<std::size_t>(input_.Below(32)));
        for (auto& change : changes)
            change = {Parameter(), input_.Float()};
        std::vector<char> chunk = input_.Flag() ? MakeChunk() : std::vector<char>();
        beside_ = std::jthread([this, changes, chunk] {
            for (const auto& [index, value] : changes) {
                effect_->setParameter(effect_, index, value);
                (void)effect_->getParameter(effect_, index);
            }
            if (!chunk.empty()) Load(chunk);
            void* saved = nullptr;
            Require(Dispatch(vst::effGetChunk, 0, 0, static_cast<void*>(&saved)) == kStateSize,
                    "a state has one size");
        });
    }
    void EndBeside() {
        if (beside_.joinable()) beside_.join();
    }

    void SetTime() {
        constexpr std::array kFlags = {vst::kVstTransportChanged, vst::kVstTransportPlaying,
                                       vst::kVstPpqPosValid, vst::kVstTempoValid};
        const int which = input_.Byte();
        knowsTime_ = (which & 16) == 0;
        resizes_ = (which & 32) == 0;
        time_.flags = 0;
        for (std::size_t i = 0; i < kFlags.size(); ++i)
            if ((which >> i & 1) != 0) time_.flags |= kFlags[i];
        time_.tempo = input_.Flag() ? input_.Byte() : static_cast<double>(input_.Float()) * 1e6;
        time_.ppqPos = static_cast<double>(input_.Float()) * 1e3;
    }

    void AskForSomething() {
        CheckText(vst::effGetEffectName, 0, vst::kEffectNameCapacity);
        CheckText(vst::effGetVendorString, 0, vst::kVendorTextCapacity);
        CheckText(vst::effGetProductString, 0, vst::kProductTextCapacity);
        vst::VstPinProperties pin;
        Dispatch(vst::effGetOutputProperties, input_.Below(4) - 1, 0, &pin);
        const auto bytes = input_.Take(static_cast<std::size_t>(input_.Below(24)));
        std::string ability(bytes.begin(), bytes.end());
        Dispatch(vst::effCanDo, 0, 0, ability.data());
        // Numbers that this interface does not have, or asks with nothing at hand.
        const int opcode = input_.Byte();
        if (opcode != vst::effClose && opcode != vst::effEditOpen &&
            opcode != vst::effMainsChanged && opcode != vst::effSetSampleRate &&
            opcode != vst::effSetBlockSizeAndSampleRate)
            Dispatch(opcode, input_.Below(3), input_.Below(3), nullptr, 0.0f);
    }

    Input& input_;
    vst::AEffect* const effect_;
    vst::VstTimeInfo time_{};
    bool knowsTime_ = false;
    bool resizes_ = true;
    int framesDone_ = 0;
    std::jthread beside_;
};

}  // namespace
}  // namespace norava::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace norava::fuzz;
    PanelPlugin& plugin = PanelPlugin::Get();
    plugin.Restore();
    Input input(data, size);
    Host(input).Run();
    Require(plugin.GetView() == nullptr, "the panel goes with its instance");
    return 0;
}
