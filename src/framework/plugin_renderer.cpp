#include "framework/plugin_renderer.h"

#include <algorithm>
#include <cmath>

#include "framework/plugin_instance.h"
#include "framework/text_copy.h"

namespace norava {

double UsableSampleRate(double hz) noexcept {
    return hz > 0.0 ? std::clamp(hz, kMinSampleRate, kMaxSampleRate) : 0.0;
}

CPluginRenderer::CPluginRenderer() {
    keyGainLeft.fill(1.0f);
    keyGainRight.fill(1.0f);
    if (const CPluginInstance* const instance = GetPluginInstance()) {
        numParams = std::max(instance->GetNumParams(), 0);
        inputBuffer.Allocate(2 * instance->GetNumInputStereoChannels(), kMaxSliceFrames);
        outputBuffer.Allocate(2 * instance->GetNumOutputStereoChannels(), kMaxSliceFrames);
    }
    params = std::make_unique<CPluginParam[]>(static_cast<std::size_t>(numParams));
}

CPluginRenderer::~CPluginRenderer() = default;

void CPluginRenderer::DeleteEventData(void* data) {
    CEventBuffer::DeleteEventData(data);
}

void CPluginRenderer::Reset(double sampleRateHz) {
    const double usable = UsableSampleRate(sampleRateHz);
    if (usable > 0.0) sampleRate = usable;
}

void CPluginRenderer::SetSongTempo(double beatsPerMinute) {
    if (std::isfinite(beatsPerMinute) && beatsPerMinute > 0.0) songTempo = beatsPerMinute;
}

double CPluginRenderer::GetSongTempo() {
    return songTempo;
}

void CPluginRenderer::SetSongBeatPos(double quarterNotes) {
    if (std::isfinite(quarterNotes)) songBeatPos = quarterNotes;
}

double CPluginRenderer::GetSongBeatPos() {
    return songBeatPos;
}

double CPluginRenderer::GetSampleRate() {
    return sampleRate.load(std::memory_order_relaxed);
}

bool CPluginRenderer::TransportChanged(bool playing) {
    return playing;
}

void CPluginRenderer::ProcessAudioBuffers() {}

CAudioBuffer* CPluginRenderer::GetOutputAudioBuffer() {
    return &outputBuffer;
}

CAudioBuffer* CPluginRenderer::GetInputAudioBuffer() {
    return &inputBuffer;
}

void CPluginRenderer::SetProgramName(std::string_view name) {
    programName.Set(name);
}

std::size_t CPluginRenderer::GetProgramName(std::span<char> name) {
    return programName.Get(name);
}

// Parameters

void CPluginRenderer::SetParamValue(int index, float value) {
    if (IsParam(index))
        params[static_cast<std::size_t>(index)].value.store(value, std::memory_order_relaxed);
}

void CPluginRenderer::SetParamName(int index, std::string_view name) {
    if (IsParam(index)) CopyText(params[static_cast<std::size_t>(index)].name, name);
}

float CPluginRenderer::GetParamValue(int index) {
    if (!IsParam(index)) return 0.0f;
    return params[static_cast<std::size_t>(index)].value.load(std::memory_order_relaxed);
}

float CPluginRenderer::GetParamDefaultValue(int) {
    return 0.0f;
}

void CPluginRenderer::GetParamName(int index, std::span<char> name) {
    if (IsParam(index))
        CopyText(name, params[static_cast<std::size_t>(index)].name.data());
    else
        CopyText(name, "<out of range>");
}

void CPluginRenderer::GetParamLabel(int, std::span<char> label) {
    CopyText(label, "");
}

void CPluginRenderer::GetParamDisplay(int index, std::span<char> text) {
    CopyNumber(text, 100.0 * GetParamValue(index), 1);
}

void CPluginRenderer::SetParamNeedUpdate(int index) noexcept {
    // Release: whoever takes the flag reads the value that was stored before it was raised.
    if (IsParam(index))
        params[static_cast<std::size_t>(index)].needUpdate.store(true, std::memory_order_release);
}

bool CPluginRenderer::TakeParamNeedUpdate(int index) noexcept {
    if (!IsParam(index)) return false;
    std::atomic<bool>& flag = params[static_cast<std::size_t>(index)].needUpdate;
    // Most are not raised: a plain read keeps the polling cheap.
    return flag.load(std::memory_order_relaxed) && flag.exchange(false, std::memory_order_acquire);
}

int CPluginRenderer::SaveState(char*) {
    return 0;
}

bool CPluginRenderer::LoadState(const char*, int) {
    return true;
}

void CPluginRenderer::ApplyPendingValues() {}

bool CPluginRenderer::LoadProgram(const char* data, int size, std::string_view name) {
    Reset(0.0);
    if (!LoadState(data, size)) return false;
    SetProgramName(name);
    return true;
}

void CPluginRenderer::ReportChangedValues() {}

void CPluginRenderer::AwaitReadiness() {}

void CPluginRenderer::SetParamsToDefault() {
    for (int i = 0; i < GetNumParams(); ++i)
        SetParamValue(i, GetParamDefaultValue(i));
}

// Hooks of the TQ host

int CPluginRenderer::TQ_GetOutputIndex(int) {
    return 0;
}

int CPluginRenderer::TQ_GetMIDIPortNumber() {
    return -1;
}

void CPluginRenderer::TQ_GetKeyName(int, std::span<char>) {}

}  // namespace norava
