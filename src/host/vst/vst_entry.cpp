#include <array>
#include <memory>

#include "framework/plugin_instance.h"
#include "framework/plugin_renderer.h"
#include "host/vst/vst_wrapper.h"

namespace norava {

namespace {

using HostText = std::array<char, kNameCapacity>;

// Hosts write at most 64 bytes by agreement; some write nothing.
HostText AskHostForText(vst::HostCallback host, vst::HostOpcode opcode) {
    HostText text{};
    host(nullptr, opcode, 0, 0, text.data(), 0.0f);
    return text;
}

}  // namespace

vst::AEffect* CreateEffectInstance(vst::HostCallback host) {
    CPluginInstance* const definition = GetPluginInstance();
    if (definition == nullptr) return nullptr;
    definition->SetPluginFormatVST();
    const HostText vendor = AskHostForText(host, vst::audioMasterGetVendorString);
    const HostText product = AskHostForText(host, vst::audioMasterGetProductString);
    definition->SetHostVendorName({vendor.data(), vendor.size()});
    definition->SetHostName({product.data(), product.size()});
    if (!definition->CheckWillOpen()) return nullptr;
    return std::make_unique<CVSTWrapper>(*definition, host).release()->getAeffect();
}

}  // namespace norava

#if defined(_WIN32)
#define NORAVA_EXPORT __declspec(dllexport)
#else
#define NORAVA_EXPORT __attribute__((visibility("default")))
#endif

// What every VST 2.4 host looks for. Null refuses: a host of an older interface, or no memory.
extern "C" NORAVA_EXPORT norava::vst::AEffect* VSTPluginMain(norava::vst::HostCallback host) {
    if (host == nullptr) return nullptr;
    try {
        if (host(nullptr, norava::vst::audioMasterVersion, 0, 0, nullptr, 0.0f) == 0)
            return nullptr;
        return norava::CreateEffectInstance(host);
    } catch (...) {
        return nullptr;
    }
}
