#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "framework/audio_buffer.h"
#include "framework/event_buffer.h"
#include "framework/plugin_param.h"
#include "framework/shared_text.h"

namespace norava {

class CPluginEditorInterface;
class CPluginWrapper;

inline constexpr int kMaxSliceFrames = 512;  // the most that ProcessAudioBuffers is ever asked for
inline constexpr int kMIDINotes = 128;
inline constexpr int kMIDIControllers = 128;
inline constexpr std::size_t kProgramNameCapacity = 1024;  // bytes with the terminator

// Host rates the engine is built for; others are moved to the nearer end. Anything that is no rate
// (0, negative, NaN) gives 0, which every Reset takes as "keep the rate".
inline constexpr double kMinSampleRate = 1000.0;
inline constexpr double kMaxSampleRate = 768000.0;
double UsableSampleRate(double hz) noexcept;

// The sound of a plug-in, whatever its host's format: parameter store, audio buffers, incoming
// events, song position and the last state of every MIDI controller. The instrument derives from
// it.
//
// Threads. "Audio" is the thread inside the host's processing call; construction, destruction and
// Reset by the host never run beside it. "Any" may be called at any time, the audio thread
// included: these work on atomic words, and what they set reaches the engine at the next
// ApplyPendingValues.
class CPluginRenderer : public CEventBuffer {
  public:
    // Counts of parameters and channels come from GetPluginInstance(), which must exist.
    CPluginRenderer();

    // Audio. Each keeps the new state and calls the hook below that belongs to it.
    unsigned char MIDITrnsl_NoteOn(unsigned char note, unsigned char velocity) override;
    unsigned char MIDITrnsl_NoteOff(unsigned char note, unsigned char velocity) override;
    float MIDITrnsl_PitchWheel(float position) override;
    unsigned char MIDITrnsl_CC(unsigned char number, unsigned char value) override;
    unsigned char MIDITrnsl_NoteAftertouch(unsigned char note, unsigned char pressure) override;
    unsigned char MIDITrnsl_ChnAftertouch(unsigned char pressure) override;
    unsigned char MIDITrnsl_ProgramNum(unsigned char program) override;
    void DeleteEventData(void* data) override;
    ~CPluginRenderer() override;

    // Clears the sound. A rate above 0 (see UsableSampleRate) is stored first; anything else keeps
    // the one before.
    virtual void Reset(double sampleRateHz);

    // Audio; GetSampleRate any. A tempo that is not finite and positive is ignored, a position that
    // is not finite too.
    virtual void SetSongTempo(double beatsPerMinute);
    virtual double GetSongTempo();
    virtual void SetSongBeatPos(double quarterNotes);
    virtual double GetSongBeatPos();              // -1: never received
    virtual double GetSampleRate();               // Hz; 0 before the first Reset with a rate
    virtual bool TransportChanged(bool playing);  // returns its argument

    // Audio. Fills the output buffer from the input buffer for the frame count that the output
    // buffer is set to, at most kMaxSliceFrames; the events before it have been dispatched.
    virtual void ProcessAudioBuffers();
    virtual CAudioBuffer* GetOutputAudioBuffer();
    virtual CAudioBuffer* GetInputAudioBuffer();

    // Any. Texts go into the caller's buffer, cut to it and terminated.
    virtual void SetProgramName(std::string_view name);
    virtual std::size_t GetProgramName(std::span<char> name);  // length of the text in `name`

    // Any, SetParamName excepted (construction). Indices out of range are ignored and read as 0 or
    // "<out of range>".
    virtual void SetParamValue(int index, float value);
    virtual void SetParamName(int index, std::string_view name);
    virtual float GetParamValue(int index);
    virtual float GetParamDefaultValue(int index);
    virtual void GetParamName(int index, std::span<char> name);
    virtual void GetParamLabel(int index, std::span<char> label);
    virtual void GetParamDisplay(int index, std::span<char> text);

    // Any. Size of the state in bytes; with a buffer (of at least that size) the state is written
    // into it. LoadState is false for a block that it refuses, and nothing has changed then;
    // one that is taken ends with SetAllChanged.
    virtual int SaveState(char* buffer);
    virtual bool LoadState(const char* buffer, int size);

    // Audio: what the translators report. State is already stored.
    virtual void MIDINoteOn(int note);
    virtual void MIDINoteOff(int note);
    virtual void MIDIPitchWheelMoved();
    virtual void MIDICCChanged(int number);
    virtual void MIDIAftertouchChanged();
    virtual void MIDIAftertouchChanged(int note);
    virtual void MIDIProgramChanged(int program);

    // Hooks of the TQ host.
    virtual int TQ_GetOutputIndex(int index);
    virtual int TQ_GetMIDIPortNumber();  // -1: no port
    virtual void TQ_GetKeyName(int note, std::span<char> name);

    // Audio, at the start of each processing call before any event: what other threads have set
    // (parameter values, a loaded state, requests to reset) becomes engine quantities.
    virtual void ApplyPendingValues();

    // Any but the audio thread. Clears the sound, loads a state and takes the program's name, as
    // one handover to the audio thread. False when the state is refused: the sound alone is cleared
    // then.
    virtual bool LoadProgram(const char* data, int size, std::string_view name);
    // Audio, at the end of each processing call: tells the host of the parameters that the call
    // itself has changed.
    virtual void ReportChangedValues();
    // Any but the audio thread, before the host starts to play: waits a little for what is still
    // being fetched in the background.
    virtual void AwaitReadiness();
    // Any but the audio thread. Every parameter takes its default.
    virtual void SetParamsToDefault();

    // Any. Tells the panel that a parameter was changed elsewhere.
    void SetParamNeedUpdate(int index) noexcept;
    // Panel: whether the parameter was changed since the last call for it.
    bool TakeParamNeedUpdate(int index) noexcept;
    // Any. Tells the panel that everything may have changed (a loaded state); the panel compares
    // the count.
    void SetAllChanged() noexcept { allChanged.fetch_add(1, std::memory_order_release); }
    std::uint32_t GetAllChangedCount() const noexcept {
        return allChanged.load(std::memory_order_acquire);
    }

    int GetNumParams() const noexcept { return numParams; }

    // User-interface thread; set by the adapter.
    void SetEditor(CPluginEditorInterface* newEditor) noexcept { editor = newEditor; }
    void SetWrapper(CPluginWrapper* newWrapper) noexcept { wrapper = newWrapper; }
    CPluginEditorInterface* GetEditor() const noexcept { return editor; }
    CPluginWrapper* GetWrapper() const noexcept { return wrapper; }

    // Any. 1 while the key sounds; 0 outside 0..127.
    float GetKeyActivity(int note) const noexcept;

    // Audio. Notes and controllers outside 0..127 read 0.
    float GetNoteVelocity(int note) const noexcept;              // 0..1, 0 after note-off
    float GetController(int number) const noexcept;              // 0..1
    float GetPitchWheel() const noexcept { return pitchWheel; }  // -1..1
    float GetNoteAftertouch(int note) const noexcept;            // 0..1
    float GetChannelAftertouch() const noexcept { return channelAftertouch; }  // 0..1

    // Audio. Per-note tables of kMIDINotes entries, indexed by MIDI note.
    const float* GetKeyGainLeft() const noexcept { return keyGainLeft.data(); }  // factors, 1.0
    const float* GetKeyGainRight() const noexcept { return keyGainRight.data(); }
    const float* GetKeyTuning() const noexcept { return keyTuningSemitones.data(); }  // 0.0

  protected:
    using NoteTable = std::array<float, kMIDINotes>;

    bool IsParam(int index) const noexcept { return index >= 0 && index < numParams; }
    void SetKeyActivity(int note, float activity) noexcept;  // audio

    NoteTable keyGainLeft;
    NoteTable keyGainRight;
    NoteTable keyTuningSemitones{};
    NoteTable keyTable4{};  // free for derived renderers, like the next
    NoteTable keyTable5{};
    std::array<std::atomic<float>, kMIDINotes> keyActivity{};
    std::atomic<double> sampleRate = 0.0;  // Hz
    double songTempo = 120.0;              // beats per minute
    double songBeatPos = -1.0;             // quarter notes
    CSharedText<kProgramNameCapacity> programName;
    int numParams = 0;
    std::unique_ptr<CPluginParam[]> params;
    CPluginEditorInterface* editor = nullptr;
    CPluginWrapper* wrapper = nullptr;
    CAudioBuffer inputBuffer;  // empty when the plug-in has no inputs
    CAudioBuffer outputBuffer;
    NoteTable noteVelocity{};
    std::array<float, kMIDIControllers> controller{};
    float pitchWheel = 0.0f;
    NoteTable noteAftertouch{};
    float channelAftertouch = 0.0f;

  private:
    std::atomic<std::uint32_t> allChanged = 0;
};

}  // namespace norava
