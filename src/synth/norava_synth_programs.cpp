#include "framework/plugin_instance.h"
#include "framework/plugin_wrapper.h"
#include "synth/norava_synth.h"

// Programs that MIDI selects. All of this runs on the audio thread.

namespace norava {

static_assert(kProgramBlockBytes == kStateSize);

void CNoravaSynth::MIDIProgramChanged(int index) {
    SelectProgram(SelectedFrom::currentCategory, index);
}

void CNoravaSynth::SelectProgram(SelectedFrom from, int index) {
    CPresetList::SelectedProgram selected;
    const CPresetList::Selection selection = from == SelectedFrom::currentCategory
                                                 ? presets.TakeProgram(index, selected)
                                                 : presets.TakeFirstOfCategory(index, selected);
    awaited.reset();
    switch (selection) {
        case CPresetList::Selection::nothing:
            break;
        case CPresetList::Selection::notRead:
            awaited = Awaited{from, index};
            break;
        case CPresetList::Selection::refused:
            ResetSound(0.0);
            break;
        case CPresetList::Selection::taken:
            TakeProgram(selected);
            break;
    }
}

void CNoravaSynth::SelectAwaited() {
    const Awaited wanted = *awaited;
    SelectProgram(wanted.from, wanted.index);
}

void CNoravaSynth::TakeProgram(const CPresetList::SelectedProgram& selected) {
    InstrumentState state;
    if (!ReadStateBlock(selected.block.bytes.data(), selected.block.size, state)) {
        ResetSound(0.0);
        return;
    }
    RememberReportedValues();
    program = state;
    NameState(program, selected.name.data());
    programWaits = true;
    // At once: a note that starts at the same position must not be cleared afterwards.
    ApplyPendingValues();
}

// While another thread is storing a state there is no place for this one; it comes next.
void CNoravaSynth::StoreProgram() {
    RememberReportedValues();
    const bool stored = exchange.TryStoreWhole([this] {
        exchange.MarkReset();
        PutState(program);
    });
    if (!stored) return;
    programWaits = false;
    SetAllChanged();
}

void CNoravaSynth::RememberReportedValues() {
    if (hasReportedValues) return;
    for (int i = 0; i < kNumHostParameters; ++i)
        reportedValues[static_cast<std::size_t>(i)] = GetParamValue(i);
    hasReportedValues = true;
}

void CNoravaSynth::ReportChangedValues() {
    if (!hasReportedValues) return;
    hasReportedValues = false;
    if (wrapper == nullptr) return;
    for (int i = 0; i < kNumHostParameters; ++i) {
        const float value = GetParamValue(i);
        // A NaN differs from everything, itself too.
        if (value != reportedValues[static_cast<std::size_t>(i)])
            wrapper->ParameterChanged(i, value);
    }
}

}  // namespace norava
