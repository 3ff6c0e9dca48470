#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "dsp/sound_settings.h"
#include "framework/plugin_renderer.h"
#include "fx/effects_chain.h"
#include "presets/preset_list.h"
#include "synth/engine_parameters.h"
#include "synth/key_bank.h"
#include "synth/parameter_exchange.h"
#include "synth/rate_converter.h"
#include "synth/slice_level.h"
#include "synth/state_block.h"

namespace norava {

// The instrument's renderer: 84 key voices at 48 kHz, converted to the host's rate, effects, output
// level.
//
// The engine (everything below the exchange) belongs to the audio thread. Values and states that
// other threads set are stored at once and read back at once; they reach the engine in
// ApplyPendingValues. Construction, destruction and Reset never run beside processing.
class CNoravaSynth : public CPluginRenderer {
  public:
    // Starts with the first program of the first category of the library at `programs`, or with the
    // defaults when there is none.
    explicit CNoravaSynth(const LibraryPlace& programs = {});
    ~CNoravaSynth() override;

    void Reset(double sampleRateHz) override;
    void AwaitReadiness() override;
    void ApplyPendingValues() override;
    void ProcessAudioBuffers() override;

    void SetParamValue(int index, float value) override;
    float GetParamDefaultValue(int index) override;
    void GetParamLabel(int index, std::span<char> label) override;
    void GetParamDisplay(int index, std::span<char> text) override;

    // kStateSize, whatever the buffer; a null one is not written to. Any thread but the audio
    // thread.
    int SaveState(char* buffer) override;
    // Any thread but the audio thread.
    bool LoadState(const char* data, int size) override;
    bool LoadProgram(const char* data, int size, std::string_view name) override;
    void ReportChangedValues() override;

    void MIDINoteOn(int note) override;
    void MIDINoteOff(int note) override;
    void MIDIPitchWheelMoved() override;
    void MIDICCChanged(int number) override;
    void MIDIAftertouchChanged() override;
    using CPluginRenderer::MIDIAftertouchChanged;
    // This, and controller 32 for the category, load at their place in the stream, without touching
    // the disk.
    void MIDIProgramChanged(int program) override;

    CPresetList& GetPresetList() { return presets; }

    // All values to the table's defaults, the program to "<noname>", as one state. Any thread but
    // the audio thread.
    void SetParamsToDefault() override;

    // Applies the output level and takes the peak; outputs may be the inputs. Audio thread.
    void processRenderPostFX(float* inL, float* inR, float* outL, float* outR, int frames);

    // The factor of one output: master level and controller 7, and controller 10, which lowers the
    // right side above its centre and the left side below it. Audio thread.
    float GetChnLevel(bool right) const;

    // What the next noise is made from, 0 at first and not touched by Reset: with equal seeds,
    // equal calls after a Reset give equal samples. Audio thread.
    std::uint32_t GetNoiseSeed() const { return sound.noiseSeed; }
    void SetNoiseSeed(std::uint32_t seed) { sound.noiseSeed = seed; }

    // Largest magnitudes since they were cleared: of the output, and of each string before mix and
    // effects. Any thread.
    PeakMeter& OutputPeak() { return outputPeak; }
    PeakMeter& String1Peak() { return string1Peak; }
    PeakMeter& String2Peak() { return string2Peak; }

  private:
    enum class SelectedFrom { currentCategory, categories };

    void InitParameterNames();
    void ResetSound(double sampleRateHz);
    void PutState(const InstrumentState& state);
    void StoreState(const InstrumentState& state);
    void SelectProgram(SelectedFrom from, int index);
    void SelectAwaited();
    void TakeProgram(const CPresetList::SelectedProgram& selected);
    void StoreProgram();
    void RememberReportedValues();
    void AdvanceLfo(int frames);
    void RenderKeys(float* left, float* right, int frames);
    void ClearSound();
    void ShowKeyActivity();

    CPresetList presets;  // first: its files are read while the rest is made
    ParameterExchange exchange;
    SoundSettings sound;
    CNoravaFX effects;
    EngineParameters engine;
    KeyBank keys;
    RateConverter converter;
    double hostRate = kInternalRate;  // Hz, until the first Reset with a rate
    float lfoPhase = 0.0f;            // turns, 0..1
    PeakMeter outputPeak;
    PeakMeter string1Peak;
    PeakMeter string2Peak;

    // Audio thread. A selection that the library has not read yet, and a program that met another
    // thread storing a state; both are tried again.
    struct Awaited {
        SelectedFrom from = SelectedFrom::currentCategory;
        int index = 0;
    };
    std::optional<Awaited> awaited;
    InstrumentState program;
    bool programWaits = false;
    // What the host believes, while a processing call changes programs.
    std::array<float, kNumParameters> reportedValues{};
    bool hasReportedValues = false;
};

}  // namespace norava
