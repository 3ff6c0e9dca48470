#include <algorithm>

#include "gui/control_button.h"
#include "gui/control_list.h"
#include "gui/control_text_field.h"
#include "gui/keys.h"
#include "gui/utf8.h"
#include "gui/window_port.h"
#include "presets/panel/preset_list_editor.h"

// What the user does in the browser.

namespace norava {

namespace {

constexpr int kPageRows = 10;

bool IsCharacter(int key) {
    return key >= 0x20 && key != kKeyDelete && static_cast<unsigned>(key) < kKeyLeft;
}

}  // namespace

// Choosing

void CPresetListEditor::LoadCurrent() {
    const std::string name = presetList->GetProgramName();
    const bool loaded = presetList->LoadProgramFromFile(presetList->GetProgramPath().c_str());
    UpdateLists();
    if (loaded) return;
    ShowStatus("\"" + name + "\" holds no program of this instrument");
    Redraw();
}

bool CPresetListEditor::ChooseCategory(int index) {
    // Chosen again it would put the place at its first program, which does not sound.
    if (index == presetList->GetCurrentCat() || !presetList->SetCurrentCat(index)) return false;
    programList->SetTopItemID(0.0f);
    if (presetList->GetCurrentPrg() >= 0) {
        LoadCurrent();
    } else {
        UpdateLists();
        ShowStatus("No programs here yet");
    }
    return true;
}

bool CPresetListEditor::ChooseRow(int row) {
    FoundProgram chosen{presetList->GetCurrentCat(), row};
    if (!search.empty()) {
        if (row < 0 || row >= static_cast<int>(found.size())) return false;
        chosen = found[static_cast<std::size_t>(row)];
    }
    bool moved = chosen.category != presetList->GetCurrentCat() &&
                 presetList->SetCurrentCat(chosen.category);
    moved = presetList->SetCurrentPrg(chosen.program) || moved;
    // The place alone does not tell: a host's state or a reset leaves it where it was.
    const bool sounds = presetList->GetNameOfSound() == presetList->GetProgramName();
    if (presetList->GetCurrentPrg() != chosen.program || (!moved && sounds)) return false;
    LoadCurrent();
    return true;
}

void CPresetListEditor::MoveProgram(int by) {
    const int rows = programList->GetNumItems();
    if (rows == 0) return;
    const int row = programList->GetSelectedItemID();
    const int wanted = row < 0 ? 0 : std::clamp(row + by, 0, rows - 1);
    if (wanted == row || !ChooseRow(wanted)) return;
    programList->ShowSelectedItem();
    Redraw();
}

void CPresetListEditor::MoveCategory(int by) {
    if (!search.empty()) return;
    const int count = categoryList->GetNumItems();
    if (count == 0) return;
    if (!ChooseCategory(std::clamp(presetList->GetCurrentCat() + by, 0, count - 1))) return;
    categoryList->ShowSelectedItem();
    Redraw();
}

void CPresetListEditor::SetSearch(const std::string& text) {
    if (text == search) return;
    search = text;
    programList->SetTopItemID(0.0f);
    UpdateLists();
    if (search.empty()) programList->ShowSelectedItem();
    Redraw();
}

bool CPresetListEditor::EditSearch(int key) {
    const CWindowPort* const window = GetWindowPort();
    if (window != nullptr && window->GetModifiers().IsCommand()) return false;  // the host's
    std::string text = search;
    if (key == kKeyBackspace) {
        text.resize(utf8::Before(text, text.size()));
    } else if (IsCharacter(key) && !(key == ' ' && text.empty())) {
        text += utf8::Encode(static_cast<unsigned>(key));
    } else {
        return false;
    }
    SetSearch(text);
    return true;
}

// Saving

void CPresetListEditor::AskForName() {
    asking = Asking::name;
    const std::string name = presetList->GetNameOfSound();
    nameField->SetText(name == kNoProgramName ? "" : name.c_str());
    nameField->SelectAll();
    nameField->SetHint("Name of the program");
    ShowTools();
}

void CPresetListEditor::EndAsking() {
    asking = Asking::nothing;
    UpdateLists();
    ShowTools();
}

void CPresetListEditor::SaveUnderName() {
    const std::string name = nameField->GetText();
    if (name.empty()) return;
    if (name.find('/') != name.npos || name.front() == '.') {
        EndAsking();
        ShowStatus("A name has no \"/\" in it and no \".\" in front");
        return Redraw();
    }
    if (asking == Asking::name && presetList->WouldReplace(name)) {
        asking = Asking::mayReplace;
        ShowTools();
        return;
    }
    const bool saved = presetList->SaveProgramToFile(name.c_str());
    EndAsking();
    if (saved) {
        before = presetList->Remember();  // Escape goes no further back than what was saved
    } else {
        ShowStatus("\"" + name + "\" could not be saved here");
        Redraw();
    }
}

// Events

bool CPresetListEditor::ControlClicked(CControl*) {
    return true;
}

bool CPresetListEditor::ControlReleased(CControl* control) {
    const CWindowPort* const window = GetWindowPort();
    if (window == nullptr || !control->GetRect().IsPointInside(window->GetMousePos())) return true;
    if (control == closeButton) {
        Close();
    } else if (control == loadButton) {
        // While a name is asked for, this button looks for another place.
        const bool saves = asking != Asking::nothing;
        if (saves) EndAsking();
        saves ? presetList->SaveProgramToFile(nullptr) : presetList->LoadProgramFromFile(nullptr);
    } else if (control == saveButton) {
        asking == Asking::nothing ? AskForName() : SaveUnderName();
    }
    return true;
}

bool CPresetListEditor::ControlValueChanged(CControl* control, float value) {
    if (control == categoryList || control == programList) {
        const int row = value >= 0.0f ? static_cast<int>(std::min(value, 1e6f)) : -1;
        if (asking != Asking::nothing) EndAsking();
        if (control == programList) {
            ChooseRow(row);
        } else {
            if (!search.empty()) SetSearch({});
            ChooseCategory(row);
        }
        Redraw();
    } else if (control == nameField) {
        if (value == CControlTextField::kEntered) {
            SaveUnderName();
        } else if (asking == Asking::mayReplace) {
            asking = Asking::name;
            ShowTools();
        }
    }
    return true;
}

bool CPresetListEditor::MouseDoubleClick() {
    const CWindowPort* const window = GetWindowPort();
    if (window == nullptr || window->GetMouseButtonID() != kMouseLeft) return false;
    const CPoint mouse = window->GetMousePos();
    if (!GetRect().IsPointInside(mouse)) return false;
    const auto isHit = [mouse](const auto& control) {
        return !control->IsDisabled() && control->GetRect().IsPointInside(mouse);
    };
    const bool onRow =
        categoryList->FindItemUnderMouse() >= 0 || programList->FindItemUnderMouse() >= 0;
    if (!onRow && std::ranges::any_of(GetControls(), isHit))
        return CControlGroup::MouseDoubleClick();
    Close();
    return true;
}

bool CPresetListEditor::MouseDown() {
    const CWindowPort* const window = GetWindowPort();
    if (window != nullptr && !GetRect().IsPointInside(window->GetMousePos())) {
        Close();
        return true;
    }
    CControlGroup::MouseDown();
    return true;
}

bool CPresetListEditor::KeyDown(int key) {
    if (asking != Asking::nothing) {
        if (key != kKeyEscape) return CControlGroup::KeyDown(key);
        EndAsking();
        return true;
    }
    switch (static_cast<unsigned>(key)) {
        case kKeyEnter:
            Close();
            return true;
        case kKeyEscape:
            search.empty() ? GoBack() : SetSearch({});
            return true;
        case kKeyUp:
            MoveProgram(-1);
            return true;
        case kKeyDown:
            MoveProgram(1);
            return true;
        case kKeyPageUp:
            MoveProgram(-kPageRows);
            return true;
        case kKeyPageDown:
            MoveProgram(kPageRows);
            return true;
        case kKeyHome:
            MoveProgram(-programList->GetNumItems());
            return true;
        case kKeyEnd:
            MoveProgram(programList->GetNumItems());
            return true;
        case kKeyLeft:
            MoveCategory(-1);
            return true;
        case kKeyRight:
            MoveCategory(1);
            return true;
        default:
            return EditSearch(key);
    }
}

bool CPresetListEditor::TimerEvent() {
    if (presetList->GetLibraryRevision() != shownRevision) {
        UpdateLists();
        Redraw();
    }
    return CControlGroup::TimerEvent();
}

}  // namespace norava
