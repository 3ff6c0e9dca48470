#include "synth/norava_synth.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "framework/plugin_instance.h"
#include "parameters/parameter_table.h"
#include "presets/preset_folders.h"
#include "synth/parameter_text.h"

namespace norava {

namespace {

constexpr int kModWheelController = 1;
constexpr int kVolumeController = 7;
constexpr int kPanController = 10;

constexpr int kCategoryController = 32;
constexpr float kHighestControllerValue = 127.0f;

constexpr double kLfoPi = 3.141592653;

// Above this no sound is meant: the engine has run away. Taken before the output level, which
// reaches 1000.
constexpr float kRunawayLevel = 1.0e6f;

}  // namespace

CNoravaSynth::CNoravaSynth(const LibraryPlace& programs)
    : presets(this, programs), engine(sound, effects), keys(sound) {
    CPluginInstance::SetPluginDirectory(GetPluginFolder());
    controller[kVolumeController] = 1.0f;
    controller[kPanController] = 0.5f;
    sound.keyTuningSemitones = GetKeyTuning();
    sound.keyGainLeft = GetKeyGainLeft();
    sound.keyGainRight = GetKeyGainRight();
    InitParameterNames();
    SetParamsToDefault();
    CNoravaSynth::ApplyPendingValues();
    if (presets.LoadFirstProgram()) CNoravaSynth::ApplyPendingValues();
}

CNoravaSynth::~CNoravaSynth() = default;

void CNoravaSynth::Reset(double sampleRateHz) {
    // First, because a change of rate turns the sign of the chorus that has been set by then.
    CNoravaSynth::ApplyPendingValues();
    ResetSound(sampleRateHz);
}

// So that program changes in the first block find their programs.
void CNoravaSynth::AwaitReadiness() {
    presets.WaitUntilRead();
}

void CNoravaSynth::ResetSound(double sampleRateHz) {
    CPluginRenderer::Reset(sampleRateHz);
    lfoPhase = 0.0f;
    keys.Reset();
    converter.Reset();
    outputPeak.Clear();
    string1Peak.Clear();
    string2Peak.Clear();
    ShowKeyActivity();
    if (UsableSampleRate(sampleRateHz) > 0.0) {
        hostRate = GetSampleRate();
        converter.SetHostRate(hostRate);
        effects.setSampleRate(hostRate);
    } else {
        effects.reset();
    }
}

// Rendering

void CNoravaSynth::ApplyPendingValues() {
    if (awaited) SelectAwaited();
    if (programWaits) StoreProgram();
    exchange.TakePending([this](int index) { return CPluginRenderer::GetParamValue(index); },
                         [this] { ResetSound(0.0); },
                         [this](int index, float value) { engine.Apply(index, value); });
}

void CNoravaSynth::ProcessAudioBuffers() {
    ApplyPendingValues();
    const int frames = outputBuffer.GetNumFrames();
    float* const left = outputBuffer.GetBuf(0);
    float* const right = outputBuffer.GetBuf(1);
    if (left == nullptr || right == nullptr) return;

    AdvanceLfo(frames);
    RenderKeys(left, right, frames);
    effects.setTempo(GetSongTempo());
    effects.process(left, right, left, right, frames);

    const std::int32_t level =
        std::max(LargestMagnitudeBits(left, frames), LargestMagnitudeBits(right, frames));
    if (level > std::bit_cast<std::int32_t>(kRunawayLevel)) {
        std::fill_n(left, frames, 0.0f);
        std::fill_n(right, frames, 0.0f);
        ClearSound();
    } else if (level != 0) {
        processRenderPostFX(left, right, left, right, frames);
    }
    ShowKeyActivity();
}

// The voices see one value a slice: cos(2 pi phase), then phase += frames * rate / host rate.
void CNoravaSynth::AdvanceLfo(int frames) {
    sound.lfoValue = static_cast<float>(std::cos(2.0 * kLfoPi * lfoPhase));
    lfoPhase =
        static_cast<float>(lfoPhase + frames * static_cast<double>(engine.GetLfoRate()) / hostRate);
    if (lfoPhase > 1.0f) lfoPhase -= 1.0f;
}

void CNoravaSynth::RenderKeys(float* left, float* right, int frames) {
    float peak1 = 0.0f;
    float peak2 = 0.0f;
    converter.Process(left, right, frames, [&](float* internalLeft, float* internalRight, int n) {
        return keys.Render(internalLeft, internalRight, n, &peak1, &peak2);
    });
    string1Peak.Raise(peak1);
    string2Peak.Raise(peak2);
}

void CNoravaSynth::ClearSound() {
    keys.Reset();
    converter.ClearSound();
    effects.reset();
}

void CNoravaSynth::ShowKeyActivity() {
    keys.ReportChanges(
        [this](int note, bool sounds) { SetKeyActivity(note, sounds ? 1.0f : 0.0f); });
}

void CNoravaSynth::processRenderPostFX(float* inL, float* inR, float* outL, float* outR,
                                       int frames) {
    const float gainLeft = GetChnLevel(false);
    const float gainRight = GetChnLevel(true);
    for (int i = 0; i < frames; ++i)
        outL[i] = inL[i] * gainLeft;
    for (int i = 0; i < frames; ++i)
        outR[i] = inR[i] * gainRight;
    const std::int32_t largest =
        std::max(LargestMagnitudeBits(outL, frames), LargestMagnitudeBits(outR, frames));
    outputPeak.Raise(std::bit_cast<float>(largest));
}

float CNoravaSynth::GetChnLevel(bool right) const {
    const double level =
        static_cast<double>(engine.GetMasterGain()) * controller[kVolumeController];
    if (level <= 0.0) return 0.0f;
    const double pan = std::clamp(2.0 * controller[kPanController], 0.0, 2.0);
    const double side = right ? std::min(2.0 - pan, 1.0) : std::min(pan, 1.0);
    return static_cast<float>(level * side);
}

// MIDI

void CNoravaSynth::MIDINoteOn(int note) {
    keys.Start(note, GetNoteVelocity(note));
}

void CNoravaSynth::MIDINoteOff(int note) {
    keys.Release(note);
}

void CNoravaSynth::MIDIPitchWheelMoved() {
    sound.pitchWheel = pitchWheel;
    RaiseRevision(sound);
}

void CNoravaSynth::MIDICCChanged(int number) {
    if (number == kCategoryController) {
        // In single precision every one of the 128 values comes back as itself.
        SelectProgram(SelectedFrom::categories,
                      static_cast<int>(GetController(number) * kHighestControllerValue));
    }
    if (number != kModWheelController) return;
    sound.modWheel = GetController(number);
    RaiseRevision(sound);
}

void CNoravaSynth::MIDIAftertouchChanged() {
    sound.channelAftertouch = channelAftertouch;
    RaiseRevision(sound);
}

// Parameters

void CNoravaSynth::InitParameterNames() {
    for (int i = 0; i < kNumHostParameters; ++i)
        SetParamName(i, GetParameter(i).name);
}

void CNoravaSynth::SetParamsToDefault() {
    InstrumentState state;
    state.numValues = kNumParameters;
    for (const Parameter& row : kParameters) {
        state.values[static_cast<std::size_t>(row.index)] = row.defaultValue;
    }
    state.hasName = true;
    std::ranges::copy(kNoProgramName, state.name.begin());
    StoreState(state);
}

void CNoravaSynth::SetParamValue(int index, float value) {
    CPluginRenderer::SetParamValue(index, value);
    if (IsParameter(index)) exchange.Mark(index);
}

float CNoravaSynth::GetParamDefaultValue(int index) {
    return IsParameter(index) ? GetParameter(index).defaultValue : 0.0f;
}

void CNoravaSynth::GetParamLabel(int index, std::span<char> label) {
    FormatParameterUnit(index, label);
}

void CNoravaSynth::GetParamDisplay(int index, std::span<char> text) {
    FormatParameterValue(index, GetParamValue(index), text);
}

// State

int CNoravaSynth::SaveState(char* buffer) {
    if (buffer == nullptr) return kStateSize;
    InstrumentState state;
    exchange.ReadWhole([&] {
        for (int i = 0; i < kNumParameters; ++i) {
            state.values[static_cast<std::size_t>(i)] = GetParamValue(i);
        }
        GetProgramName(std::span(state.name).first(kStateNameSize));
    });
    WriteStateBlock(state, buffer);
    return kStateSize;
}

bool CNoravaSynth::LoadState(const char* data, int size) {
    InstrumentState state;
    if (!ReadStateBlock(data, size, state)) return false;
    StoreState(state);
    return true;
}

bool CNoravaSynth::LoadProgram(const char* data, int size, std::string_view name) {
    InstrumentState state;
    const bool taken = ReadStateBlock(data, size, state);
    if (!taken) {
        exchange.MarkReset();
        return false;
    }
    NameState(state, name);
    exchange.StoreWhole([&] {
        exchange.MarkReset();
        PutState(state);
    });
    SetAllChanged();
    return true;
}

void CNoravaSynth::PutState(const InstrumentState& state) {
    for (int i = 0; i < state.numValues; ++i)
        SetParamValue(i, state.values[static_cast<std::size_t>(i)]);
    if (state.hasName) SetProgramName(state.name.data());
}

void CNoravaSynth::StoreState(const InstrumentState& state) {
    exchange.StoreWhole([&] { PutState(state); });
    SetAllChanged();
}

}  // namespace norava
