#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "framework/shared_text.h"

namespace norava {

class CPluginEditorInterface;
class CPluginRenderer;

inline constexpr std::size_t kNameCapacity = 256;  // bytes with the terminator
inline constexpr std::size_t kPathCapacity = 1024;

// What the plug-in is before any host talks to it, and the factory of its renderer and editor. One
// object, made by the module's static initialisation, serves all instances of the process. The
// identity never changes after construction; what hosts set (format, host names, directory, zoom)
// may be set and read on any thread.
class CPluginInstance {
  public:
    CPluginInstance();  // becomes what GetPluginInstance() returns
    CPluginInstance(const CPluginInstance&) = delete;
    CPluginInstance& operator=(const CPluginInstance&) = delete;
    ~CPluginInstance();  // not virtual: nothing deletes through this base

    // `index` counts stereo pairs.
    virtual void GetInputChannelName(int index, std::span<char> name);
    virtual void GetOutputChannelName(int index, std::span<char> name);
    virtual void SetPluginFormatVST();
    virtual void SetPluginFormatAU();
    virtual void SetPluginFormatTQ();
    virtual void SetUIScalingFactor(int factor);  // below 1 counts as 1
    virtual int GetUIScalingFactor();
    virtual bool CheckWillOpen();  // false: no instance is made
    virtual bool IsParamMeta(int index);
    virtual std::unique_ptr<CPluginRenderer> CreateRenderer();       // null in the base
    virtual std::unique_ptr<CPluginEditorInterface> CreateEditor();  // null: no panel

    int GetNumParams() const noexcept { return numParams; }
    int GetNumParamsAutomable() const noexcept { return numParamsAutomable; }
    int GetNumInputStereoChannels() const noexcept { return numInputStereoChannels; }
    int GetNumOutputStereoChannels() const noexcept { return numOutputStereoChannels; }
    const char* GetPluginName() const noexcept { return pluginName.data(); }
    const char* GetPluginVendorName() const noexcept { return vendorName.data(); }
    const char* GetPluginVersionLabel() const noexcept { return versionLabel.data(); }
    std::int32_t GetUID() const noexcept { return uniqueID; }
    bool IsEffect() const noexcept { return isEffect; }
    bool IsVST() const noexcept { return pluginFormat == kFormatVST; }
    bool IsAU() const noexcept { return pluginFormat == kFormatAU; }
    bool IsTQ() const noexcept { return pluginFormat == kFormatTQ; }

    void SetHostName(std::string_view name) noexcept { hostName.Set(name); }
    void SetHostVendorName(std::string_view name) noexcept { hostVendorName.Set(name); }
    std::size_t GetHostName(std::span<char> name) const noexcept { return hostName.Get(name); }
    std::size_t GetHostVendorName(std::span<char> name) const noexcept {
        return hostVendorName.Get(name);
    }

    // The folder of pictures and fallback programs; one for the process.
    static void SetPluginDirectory(std::string_view path) noexcept;
    static std::size_t GetPluginDirectory(std::span<char> path) noexcept;

  protected:
    static constexpr std::int8_t kFormatUnknown = -1;
    static constexpr std::int8_t kFormatVST = 0;
    static constexpr std::int8_t kFormatAU = 1;
    static constexpr std::int8_t kFormatTQ = 2;

    std::int32_t numParams = 0;
    std::int32_t numParamsAutomable =
        0;  // the first ones: those the host is told of after a state load
    std::int8_t numInputStereoChannels = 0;
    std::int8_t numOutputStereoChannels = 1;
    std::atomic<std::int8_t> pluginFormat = kFormatUnknown;
    std::array<char, kNameCapacity> pluginName{};
    std::array<char, kNameCapacity> vendorName{};
    std::array<char, kNameCapacity> versionLabel{};
    CSharedText<kNameCapacity> hostName;
    CSharedText<kNameCapacity> hostVendorName;
    bool isEffect = false;
    std::atomic<std::int32_t> uniqueID = -1;
    std::atomic<std::int32_t> uiScalingFactor = 1;
};

// The definition made last, null before any.
CPluginInstance* GetPluginInstance() noexcept;

}  // namespace norava
