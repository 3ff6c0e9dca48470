#include "plugin/norava_def.h"

#include "framework/text_copy.h"
#include "parameters/parameter_index.h"

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

}  // namespace norava
