#pragma once

#include <memory>

#include "editor/instrument_link.h"
#include "synth/norava_synth.h"

namespace norava {

// The panel's link to the instrument's renderer. User-interface thread.
class SynthLink final : public InstrumentLink {
  public:
    // Every renderer of the instrument's definition is a CNoravaSynth.
    static std::unique_ptr<InstrumentLink> To(CPluginRenderer& renderer) {
        return std::make_unique<SynthLink>(static_cast<CNoravaSynth&>(renderer));
    }
    explicit SynthLink(CNoravaSynth& instrument) : synth(instrument) {}

    CPresetList& GetPresetList() override { return synth.GetPresetList(); }
    StringPeaks TakeStringPeaks() override {
        return {Take(synth.String1Peak()), Take(synth.String2Peak())};
    }

  private:
    static float Take(PeakMeter& meter) {
        const float peak = meter.Get();
        meter.Clear();
        return peak;
    }

    CNoravaSynth& synth;
};

}  // namespace norava
