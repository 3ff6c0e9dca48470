#include "plugin/norava_def.h"

#include "framework/plugin_editor_interface.h"
#include "framework/text_copy.h"
#include "parameters/parameter_index.h"
#include "synth/norava_synth.h"

namespace norava {

namespace {

// Hosts store this number in every project: it never changes. In a little-endian file it reads
// "RvoN".
constexpr std::int32_t kUniqueID = 0x4E6F7652;
constexpr std::int32_t kTQProductID = 20117;

CNoravaDef definition;

}  // namespace

CNoravaDef::CNoravaDef() {
    CopyText(pluginName, "Norava");
    CopyText(vendorName, "Hollo-Vane");
    CopyText(versionLabel, "1.1.5");
    uniqueID = kUniqueID;
    numParams = kNumParameters;
    numParamsAutomable = kNumHostParameters;
    numInputStereoChannels = 0;
    numOutputStereoChannels = 1;
    isEffect = false;
}

void CNoravaDef::SetPluginFormatTQ() {
    CPluginInstance::SetPluginFormatTQ();
    uniqueID = kTQProductID;
}

std::unique_ptr<CPluginRenderer> CNoravaDef::CreateRenderer() {
    return std::make_unique<CNoravaSynth>();
}

std::unique_ptr<CPluginEditorInterface> CNoravaDef::CreateEditor() {
    return nullptr;
}

}  // namespace norava
