#include <array>
#include <cstring>
#include <span>
#include <string_view>

#include "framework/plugin_instance.h"
#include "framework/plugin_renderer.h"
#include "framework/text_copy.h"
#include "host/vst/vst_wrapper.h"

// The adapter's texts. A host buffer is written only as far as its text reaches, never filled up.

namespace norava {

namespace {

template <std::size_t kCapacity>
using TextBuffer = std::array<char, kCapacity>;

// Through a buffer of our own, so that nothing is written behind the text's end.
template <std::size_t kCapacity>
void HandOver(const TextBuffer<kCapacity>& text, char* hostBuffer) {
    if (hostBuffer != nullptr) CopyText({hostBuffer, kCapacity}, {text.data(), kCapacity});
}

template <std::size_t kCapacity>
void HandOver(std::string_view text, char* hostBuffer) {
    if (hostBuffer != nullptr) CopyText({hostBuffer, kCapacity}, text);
}

}  // namespace

void CVSTWrapper::getParameterName(int index, char* text) {
    TextBuffer<vst::kParamTextCapacity> name{};
    if (renderer != nullptr) renderer->GetParamName(index, name);
    HandOver(name, text);
}

void CVSTWrapper::getParameterLabel(int index, char* text) {
    TextBuffer<vst::kParamTextCapacity> label{};
    if (renderer != nullptr) renderer->GetParamLabel(index, label);
    HandOver(label, text);
}

void CVSTWrapper::getParameterDisplay(int index, char* text) {
    TextBuffer<vst::kParamTextCapacity> display{};
    if (renderer != nullptr) renderer->GetParamDisplay(index, display);
    HandOver(display, text);
}

void CVSTWrapper::setProgramName(const char* name) {
    if (renderer == nullptr || name == nullptr) return;
    renderer->SetProgramName({name, strnlen(name, kProgramNameCapacity - 1)});
    renderer->SetAllChanged();  // an open panel shows the name
}

void CVSTWrapper::getProgramName(char* text) {
    TextBuffer<vst::kProgramTextCapacity> name{};
    if (renderer != nullptr) renderer->GetProgramName(name);
    HandOver(name, text);
}

bool CVSTWrapper::getProgramNameIndexed(int, int, char* text) {
    getProgramName(text);
    return true;
}

bool CVSTWrapper::getOutputProperties(int index, vst::VstPinProperties* properties) {
    if (properties == nullptr || index < 0 || index >= effect.numOutputs) return false;
    *properties = {};
    definition.GetOutputChannelName(index / 2, properties->label);
    properties->flags = vst::kVstPinIsActive | vst::kVstPinIsStereo;
    CopyText(properties->shortLabel, properties->label);
    return true;
}

bool CVSTWrapper::getEffectName(char* text) {
    HandOver<vst::kEffectNameCapacity>(definition.GetPluginName(), text);
    return true;
}

bool CVSTWrapper::getVendorString(char* text) {
    HandOver<vst::kVendorTextCapacity>(definition.GetPluginVendorName(), text);
    return true;
}

bool CVSTWrapper::getProductString(char* text) {
    TextBuffer<2 * kNameCapacity> product{};
    CopyText(product, definition.GetPluginName());
    AppendText(product, " ");
    AppendText(product, definition.GetPluginVersionLabel());
    HandOver<vst::kProductTextCapacity>(product.data(), text);
    return true;
}

vst::PlugCategory CVSTWrapper::getPlugCategory() const noexcept {
    return definition.IsEffect() ? vst::kPlugCategEffect : vst::kPlugCategSynth;
}

int CVSTWrapper::canDo(const char* text) const noexcept {
    if (text == nullptr) return -1;
    for (const char* ability : {"receiveVstEvents", "receiveVstMidiEvent", "receiveVstTimeInfo"}) {
        if (std::strcmp(text, ability) == 0) return 1;
    }
    return -1;
}

}  // namespace norava
