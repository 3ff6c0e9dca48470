#include <algorithm>
#include <utility>

#include "gui/control_button.h"
#include "gui/control_list.h"
#include "gui/control_text_field.h"
#include "gui/dialogs/message_box.h"
#include "gui/keys.h"
#include "gui/utf8.h"
#include "gui/window_port.h"
#include "presets/panel/preset_list_editor.h"

// What the user does in the browser.

namespace norava {

namespace {

constexpr int kPageRows = 10;

constexpr char kSaving[] = "Save Program";

std::string WithoutOuterBlanks(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == text.npos) return {};
    return text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

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
    ShowStatus("No program of this instrument: " + name);
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
    asksForName = true;
    const std::string name = presetList->GetNameOfSound();
    nameField->SetText(name == kNoProgramName ? "" : name.c_str());
    nameField->SelectAll();
    nameField->SetHint("Name of the program");
    ShowTools();
}

void CPresetListEditor::EndAsking() {
    asksForName = false;
    UpdateLists();
    ShowTools();
}

// What was typed stays until it is saved.
void CPresetListEditor::SaveUnderName() {
    CWindowPort* const window = GetWindowPort();
    const std::string name = WithoutOuterBlanks(nameField->GetText());
    if (name.empty() || window == nullptr) return;
    if (name.find('/') != name.npos || name.front() == '.') {
        CMessageBox::Tell(*window, kSaving, "A name has no \"/\" in it and no \".\" in front.");
    } else if (presetList->WouldReplace(name)) {
        CMessageBox::Ask(
            *window, kSaving, "There is a program of this name already:\n" + name + "\nReplace it?",
            {"Replace", "Cancel"},
            [this, name](int button) {
                if (button == 0) Save(name);
            },
            1);
    } else {
        Save(name);
    }
}

void CPresetListEditor::Save(const std::string& name) {
    if (presetList->SaveProgramToFile(name.c_str())) {
        EndAsking();
        before = presetList->Remember();  // Escape goes no further back than what was saved
    } else if (CWindowPort* const window = GetWindowPort()) {
        CMessageBox::Tell(*window, kSaving, "This program could not be saved here:\n" + name);
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
        const bool saves = asksForName;
        if (saves) EndAsking();
        saves ? presetList->SaveProgramToFile(nullptr) : presetList->LoadProgramFromFile(nullptr);
    } else if (control == saveButton) {
        asksForName ? SaveUnderName() : AskForName();
    }
    return true;
}

bool CPresetListEditor::ControlValueChanged(CControl* control, float value) {
    if (control == categoryList || control == programList) {
        const int row = value >= 0.0f ? static_cast<int>(std::min(value, 1e6f)) : -1;
        if (asksForName) EndAsking();
        if (control == programList) {
            ChooseRow(row);
        } else {
            if (!search.empty()) SetSearch({});
            ChooseCategory(row);
        }
        Redraw();
    } else if (control == nameField) {
        if (value == CControlTextField::kEntered) SaveUnderName();
    }
    return true;
}

bool CPresetListEditor::MouseDoubleClick() {
    // The second press of a double click that opened it was not meant for what came to lie there.
    if (std::exchange(isNew, false)) return true;
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
    isNew = false;
    const CWindowPort* const window = GetWindowPort();
    if (window != nullptr && !GetRect().IsPointInside(window->GetMousePos())) {
        Close();
        return true;
    }
    CControlGroup::MouseDown();
    return true;
}

bool CPresetListEditor::KeyDown(int key) {
    if (asksForName) {
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
