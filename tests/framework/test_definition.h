#pragma once

#include "framework/plugin_instance.h"

namespace norava {

// A plug-in with a few parameters and as many stereo pairs as a test wants.
class TestDefinition : public CPluginInstance {
  public:
    static constexpr int kParams = 5;

    explicit TestDefinition(int inputPairs = 0, int outputPairs = 1) {
        numParams = kParams;
        numParamsAutomable = kParams - 2;
        numInputStereoChannels = static_cast<std::int8_t>(inputPairs);
        numOutputStereoChannels = static_cast<std::int8_t>(outputPairs);
    }
};

}  // namespace norava
