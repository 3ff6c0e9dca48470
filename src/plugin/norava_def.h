#pragma once

#include <memory>

#include "framework/plugin_instance.h"

namespace norava {

// The instrument's identity and its factories. The module makes exactly one.
class CNoravaDef final : public CPluginInstance {
  public:
    CNoravaDef();

    // The TQ host knows the instrument by a product number of its own.
    void SetPluginFormatTQ() override;
    std::unique_ptr<CPluginRenderer> CreateRenderer() override;
    std::unique_ptr<CPluginEditorInterface> CreateEditor() override;
};

}  // namespace norava
