#include "framework/plugin_instance.h"

#include <algorithm>

#include "framework/plugin_editor_interface.h"
#include "framework/plugin_renderer.h"
#include "framework/text_copy.h"

namespace norava {

namespace {

constexpr std::string_view kUnknown = "<unknown>";

// Constant-initialised, so that a definition may be made by any static initialisation.
constinit std::atomic<CPluginInstance*> currentInstance = nullptr;

CSharedText<kPathCapacity>& PluginDirectory() {
    static CSharedText<kPathCapacity> directory("/Library/Application Support/Hollo-Vane/");
    return directory;
}

void CopyChannelName(int index, std::span<char> name) {
    if (index == 0) {
        CopyText(name, "Master");
        return;
    }
    std::array<char, 16> number;
    CopyNumber(number, index);
    CopyText(name, "Channel ");
    AppendText(name, number.data());
}

}  // namespace

CPluginInstance* GetPluginInstance() noexcept {
    return currentInstance;
}

CPluginInstance::CPluginInstance() : hostName(kUnknown), hostVendorName(kUnknown) {
    CopyText(pluginName, kUnknown);
    CopyText(vendorName, kUnknown);
    CopyText(versionLabel, kUnknown);
    currentInstance = this;
}

CPluginInstance::~CPluginInstance() {
    CPluginInstance* self = this;
    currentInstance.compare_exchange_strong(self, nullptr);
}

void CPluginInstance::GetInputChannelName(int index, std::span<char> name) {
    CopyChannelName(index, name);
}

void CPluginInstance::GetOutputChannelName(int index, std::span<char> name) {
    CopyChannelName(index, name);
}

void CPluginInstance::SetPluginFormatVST() {
    pluginFormat = kFormatVST;
}

void CPluginInstance::SetPluginFormatAU() {
    pluginFormat = kFormatAU;
}

void CPluginInstance::SetPluginFormatTQ() {
    pluginFormat = kFormatTQ;
}

void CPluginInstance::SetUIScalingFactor(int factor) {
    uiScalingFactor = std::max(factor, 1);
}

int CPluginInstance::GetUIScalingFactor() {
    return uiScalingFactor;
}

bool CPluginInstance::CheckWillOpen() {
    return true;
}

bool CPluginInstance::IsParamMeta(int) {
    return false;
}

std::unique_ptr<CPluginRenderer> CPluginInstance::CreateRenderer() {
    return nullptr;
}

std::unique_ptr<CPluginEditorInterface> CPluginInstance::CreateEditor() {
    return nullptr;
}

void CPluginInstance::SetPluginDirectory(std::string_view path) noexcept {
    PluginDirectory().Set(path);
}

std::size_t CPluginInstance::GetPluginDirectory(std::span<char> path) noexcept {
    return PluginDirectory().Get(path);
}

}  // namespace norava
