#include "host/vst/vst_wrapper.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "framework/block_runner.h"
#include "framework/plugin_instance.h"
#include "framework/plugin_renderer.h"

namespace norava {

namespace {

constexpr double kInitialSampleRate = 44100.0;  // what a host means until it says otherwise

// "1.1.5" as hosts show versions: four decimal places, 1150.
int VersionNumber(const char* label) {
    int number = 0;
    int place = 1000;
    for (; *label != '\0' && place > 0; ++label) {
        if (*label == '.')
            place /= 10;
        else if (*label >= '0' && *label <= '9')
            number += place * (*label - '0');
    }
    return number;
}

}  // namespace

CVSTWrapper::CVSTWrapper(CPluginInstance& pluginDefinition, vst::HostCallback hostCallback)
    : definition(pluginDefinition), host(hostCallback) {
    effect.magic = vst::kEffectMagic;
    effect.numPrograms = 1;
    effect.numParams = definition.GetNumParams();
    effect.numInputs = 2 * definition.GetNumInputStereoChannels();
    effect.numOutputs = 2 * definition.GetNumOutputStereoChannels();
    effect.flags = vst::effFlagsCanReplacing | vst::effFlagsProgramChunks;
    if (!definition.IsEffect()) effect.flags |= vst::effFlagsIsSynth;
    effect.ioRatio = 1.0f;
    effect.object = this;
    effect.uniqueID = definition.GetUID();
    effect.version = VersionNumber(definition.GetPluginVersionLabel());
    ConnectCallbacks(effect);

    renderer = definition.CreateRenderer();
    if (renderer == nullptr) return;
    renderer->SetWrapper(this);
    MakeEditor();
    renderer->Reset(kInitialSampleRate);
    setProgram(0);
}

CVSTWrapper::~CVSTWrapper() {
    try {
        close();
    } catch (...) {
        // The members go all the same.
    }
}

void CVSTWrapper::MakeEditor() {
    std::unique_ptr<CPluginEditorInterface> pluginEditor = definition.CreateEditor();
    if (pluginEditor == nullptr) return;
    editor = std::make_unique<CVSTEditor>(std::move(pluginEditor));
    CPluginEditorInterface& panel = editor->GetPluginEditor();
    renderer->SetEditor(&panel);
    panel.Connect(renderer.get(), this);
    effect.flags |= vst::effFlagsHasEditor;
    panel.CreateEditorControls();
}

void CVSTWrapper::close() {
    if (editor != nullptr) {
        editor->close();
        editor->GetPluginEditor().Connect(nullptr, nullptr);
        renderer->SetEditor(nullptr);
        editor.reset();
    }
    renderer.reset();
}

void CVSTWrapper::suspend() {
    if (renderer == nullptr) return;
    renderer->DeleteAllEvents();  // they were meant for a block that does not come any more
    renderer->Reset(0.0);
}

void CVSTWrapper::resume() {
    if (renderer == nullptr) return;
    renderer->Reset(0.0);
    renderer->AwaitReadiness();
}

void CVSTWrapper::setSampleRate(float hz) {
    const double usable = UsableSampleRate(hz);
    if (renderer != nullptr && usable > 0.0 && usable != renderer->GetSampleRate())
        renderer->Reset(usable);
}

// Audio

bool CVSTWrapper::processEvents(const vst::VstEvents* events) NORAVA_NONBLOCKING {
    if (renderer == nullptr || events == nullptr) return true;
    const vst::VstEvent* const* const list = events->events;
    for (int i = 0; i < events->numEvents; ++i) {
        if (list[i] == nullptr || list[i]->type != vst::kVstMidiType) continue;
        const auto* const midi = reinterpret_cast<const vst::VstMidiEvent*>(list[i]);
        renderer->CreateMIDIEvent(midi->deltaFrames, midi->midiData, sizeof(midi->midiData));
    }
    return true;
}

void CVSTWrapper::processReplacing(float** inputs, float** outputs, int frames) NORAVA_NONBLOCKING {
    Process(inputs, outputs, frames, true);
}

void CVSTWrapper::process(float** inputs, float** outputs, int frames) NORAVA_NONBLOCKING {
    Process(inputs, outputs, frames, false);
}

void CVSTWrapper::Process(float** inputs, float** outputs, int frames,
                          bool replacing) NORAVA_NONBLOCKING {
    if (renderer == nullptr) return;

    // Two questions, because some hosts fill in only what they are asked for. A host may clear the
    // transport flag with the first answer, so it is read there.
    BlockTime time;
    if (const vst::VstTimeInfo* const info = getTimeInfo(vst::kVstTempoValid)) {
        if ((info->flags & vst::kVstTempoValid) != 0) time.tempo = info->tempo;
        if ((info->flags & vst::kVstTransportChanged) != 0)
            time.transportChangedTo = (info->flags & vst::kVstTransportPlaying) != 0;
    }
    if (const vst::VstTimeInfo* const info = getTimeInfo(vst::kVstPpqPosValid)) {
        if ((info->flags & vst::kVstPpqPosValid) != 0) time.beatPos = info->ppqPos;
    }

    HostBlock block;
    block.frames = frames;
    block.accumulate = !replacing;
    if (inputs != nullptr) block.inputs = {inputs, static_cast<std::size_t>(effect.numInputs)};
    if (outputs != nullptr) block.outputs = {outputs, static_cast<std::size_t>(effect.numOutputs)};
    RunBlock(*renderer, block, time);
}

const vst::VstTimeInfo* CVSTWrapper::getTimeInfo(int request) {
    const vst::iptr answer = CallHost(vst::audioMasterGetTime, 0, request, nullptr, 0.0f);
    return reinterpret_cast<const vst::VstTimeInfo*>(answer);
}

// Parameters, program and state

void CVSTWrapper::setParameter(int index, float value) {
    if (renderer == nullptr) return;
    renderer->SetParamValue(index, value);
    renderer->SetParamNeedUpdate(index);
}

float CVSTWrapper::getParameter(int index) {
    return renderer != nullptr ? renderer->GetParamValue(index) : 0.0f;
}

// Parameters beyond those reported after a state load count too: hosts neither store nor show one
// that answers no.
bool CVSTWrapper::canParameterBeAutomated(int index) const noexcept {
    return IsParam(index);
}

void CVSTWrapper::setProgram(vst::iptr index) noexcept {
    if (index >= 0 && index < effect.numPrograms) currentProgram = static_cast<int>(index);
}

vst::iptr CVSTWrapper::getChunk(void** data, bool) {
    if (renderer == nullptr || data == nullptr) return 0;
    const int size = renderer->SaveState(nullptr);
    if (size < 1) return 0;
    char* const chunk = chunks.Replace(static_cast<std::size_t>(size));
    renderer->SaveState(chunk);
    *data = chunk;
    return size;
}

vst::iptr CVSTWrapper::setChunk(const void* data, vst::iptr size, bool) {
    if (renderer == nullptr || size < 0 || size > std::numeric_limits<int>::max()) return 0;
    if (!renderer->LoadState(static_cast<const char*>(data), static_cast<int>(size))) return 0;
    // A panel on another thread sees the renderer's count of changes move.
    const int numReported = std::min(definition.GetNumParamsAutomable(), renderer->GetNumParams());
    for (int i = 0; i < numReported; ++i)
        ParameterChanged(i, renderer->GetParamValue(i));
    return size;
}

// Back to the host

vst::iptr CVSTWrapper::CallHost(int opcode, int index, vst::iptr value, void* ptr, float opt) {
    return host != nullptr ? host(&effect, opcode, index, value, ptr, opt) : 0;
}

void CVSTWrapper::ParameterChanged(int index, float value) {
    if (IsParam(index)) CallHost(vst::audioMasterAutomate, index, 0, nullptr, value);
}

void CVSTWrapper::ProgramChanged() {
    CallHost(vst::audioMasterUpdateDisplay, 0, 0, nullptr, 0.0f);
}

void CVSTWrapper::BeginAutomation(int index) {
    if (IsParam(index)) CallHost(vst::audioMasterBeginEdit, index, 0, nullptr, 0.0f);
}

void CVSTWrapper::FinishAutomation(int index) {
    if (IsParam(index)) CallHost(vst::audioMasterEndEdit, index, 0, nullptr, 0.0f);
}

bool CVSTWrapper::ResizeEditor(int width, int height) {
    char question[] = "sizeWindow";
    if (CallHost(vst::audioMasterCanDo, 0, 0, question, 0.0f) != 1) return false;
    return CallHost(vst::audioMasterSizeWindow, width, height, nullptr, 0.0f) == 1;
}

}  // namespace norava
