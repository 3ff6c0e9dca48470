#include "editor/built_in_pictures.h"
#include "editor/norava_editor.h"
#include "plugin/norava_def.h"
#include "plugin/synth_link.h"
#include "presets/factory_bank.h"
#include "presets/preset_folders.h"
#include "synth/norava_synth.h"

// What the module makes for a host.

namespace norava {

std::unique_ptr<CPluginRenderer> CNoravaDef::CreateRenderer() {
    LibraryPlace programs;
    programs.root = GetPresetRoot();
    programs.bank = GetFactoryBank();
    return std::make_unique<CNoravaSynth>(programs);
}

std::unique_ptr<CPluginEditorInterface> CNoravaDef::CreateEditor() {
    return std::make_unique<CNoravaEditor>(SynthLink::To, GetBuiltInPictures());
}

}  // namespace norava
