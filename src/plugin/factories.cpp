#include "editor/built_in_pictures.h"
#include "editor/norava_editor.h"
#include "plugin/norava_def.h"
#include "presets/factory_bank.h"
#include "presets/preset_folders.h"
#include "synth/norava_synth.h"

// What the module makes for a host.

namespace norava {

namespace {

class SynthLink final : public InstrumentLink {
  public:
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

// Every renderer of this definition is the one that CreateRenderer makes.
std::unique_ptr<InstrumentLink> LinkTo(CPluginRenderer& renderer) {
    return std::make_unique<SynthLink>(static_cast<CNoravaSynth&>(renderer));
}

}  // namespace

std::unique_ptr<CPluginRenderer> CNoravaDef::CreateRenderer() {
    LibraryPlace programs;
    programs.root = GetPresetRoot();
    programs.bank = GetFactoryBank();
    return std::make_unique<CNoravaSynth>(programs);
}

std::unique_ptr<CPluginEditorInterface> CNoravaDef::CreateEditor() {
    return std::make_unique<CNoravaEditor>(LinkTo, GetBuiltInPictures());
}

}  // namespace norava
