#include "presets/panel/preset_list_editor.h"

#include <algorithm>

#include "files/file_system.h"
#include "gui/control_button.h"
#include "gui/control_display.h"
#include "gui/control_list.h"
#include "gui/control_text_field.h"
#include "gui/dialogs/dialog.h"
#include "gui/keys.h"
#include "gui/label.h"
#include "gui/window_port.h"

namespace norava {

namespace {

constexpr CColor kText(246, 234, 211);
constexpr CColor kFrame(218, 195, 150);
constexpr CColor kFieldBackground(25, 28, 36);

// From the panel's left top.
constexpr CPoint kLoadPlace{20, 36};
constexpr CSize kButtonSize{60, 22};
constexpr int kToolStep = 65;
constexpr CSize kDisplaySize{330, 22};
constexpr int kCloseFromRight = 30;
constexpr CRect kCloseRect{0, 8, 20, 16};
constexpr int kListTop = 84;
constexpr int kListMargin = 20;
constexpr int kListGap = 10;
constexpr int kHeadingTop = 66;
constexpr int kHeadingHeight = 16;
constexpr int kPageRows = 10;

bool IsCharacter(int key) {
    return key >= 0x20 && key != kKeyDelete && static_cast<unsigned>(key) < kKeyLeft;
}

void AppendUtf8(std::string& text, int character) {
    const auto c = static_cast<unsigned>(character);
    const auto put = [&text](unsigned byte) { text += static_cast<char>(byte); };
    if (c < 0x80) return put(c);
    if (c < 0x800) {
        put(0xC0 | c >> 6);
    } else {
        if (c < 0x10000) {
            put(0xE0 | c >> 12);
        } else {
            put(0xF0 | c >> 18);
            put(0x80 | (c >> 12 & 0x3F));
        }
        put(0x80 | (c >> 6 & 0x3F));
    }
    put(0x80 | (c & 0x3F));
}

void RemoveLastCharacter(std::string& text) {
    while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xC0) == 0x80)
        text.pop_back();
    if (!text.empty()) text.pop_back();
}

std::string Row(int index, std::string_view name) {
    return std::to_string(index + 1) + ". " + std::string(name);
}

}  // namespace

CPresetListEditor::CPresetListEditor(CPresetList* list) : presetList(list) {
    CControlGroup::Disable(true);
}

void CPresetListEditor::CreateControls(CSize windowSize) {
    const int width = std::min(windowSize.cx, kWidth);
    const CRect panel((windowSize.cx - width) / 2, 0, width, windowSize.cy);
    SetRect(panel);

    const int inner = panel.width - 2 * kListMargin;
    const int listWidth = (inner - kListGap) / 2;
    const int listHeight = panel.height - kListTop - kListMargin;
    const auto addList = [&](int left) {
        auto* const list = Add<CControlList>();
        list->SetRect(panel.left + left, panel.top + kListTop, listWidth, listHeight);
        return list;
    };
    categoryList = addList(kListMargin);
    programList = addList(panel.width - kListMargin - listWidth);

    const auto addButton = [&](CPoint place, CSize size, const char* text) {
        auto* const button = Add<CControlButton>();
        button->SetRect(panel.left + place.x, panel.top + place.y, size);
        button->SetTextColor(kText);
        button->SetText(text);
        return button;
    };
    CPoint place = kLoadPlace;
    loadButton = addButton(place, kButtonSize, "Load");
    place.x += kToolStep;
    saveButton = addButton(place, kButtonSize, "Save");
    place.x += kToolStep;
    display = Add<CControlDisplay>();
    display->SetRect(panel.left + place.x, panel.top + place.y, kDisplaySize);
    display->SetTextColor(kText);
    display->SetBackgroundColor(kFieldBackground);
    display->SetBackgroundSelfDrawn();
    display->SetAlignLeft();
    display->SetTextRect(CRect({10, 0}, CSize(kDisplaySize.cx - 20, kDisplaySize.cy)));
    nameField = Add<CControlTextField>();
    nameField->SetRect(display->GetRect());
    nameField->Disable(true);
    closeButton =
        addButton({panel.width - kCloseFromRight, kCloseRect.top}, kCloseRect.GetSize(), "x");
}

// What is shown

void CPresetListEditor::UpdateLists() {
    if (categoryList == nullptr) return;
    shownRevision = presetList->GetLibraryRevision();
    const auto library = presetList->GetLibrary();
    const auto& categories = library->Categories();
    found = SearchLibrary(*library, search);

    const int topCategory = categoryList->GetTopItemID();
    categoryList->DeleteAllItems();
    for (std::size_t i = 0; i < categories.size(); ++i)
        categoryList->AddItem(Row(static_cast<int>(i), categories[i].Name()).c_str());
    categoryList->SetTopItemID(static_cast<float>(topCategory));

    const int topProgram = programList->GetTopItemID();
    programList->DeleteAllItems();
    if (!search.empty()) {
        for (const FoundProgram& hit : found) {
            const auto& category = categories[static_cast<std::size_t>(hit.category)];
            const auto& program = category.programs[static_cast<std::size_t>(hit.program)];
            const std::string row =
                std::string(program.Name()) + "  -  " + std::string(category.Name());
            programList->AddItem(row.c_str());
        }
    } else if (const auto* const category = library->Category(presetList->GetCurrentCat())) {
        for (std::size_t i = 0; i < category->programs.size(); ++i)
            programList->AddItem(Row(static_cast<int>(i), category->programs[i].Name()).c_str());
    }
    programList->SetTopItemID(static_cast<float>(topProgram));
    ShowSelection();
}

void CPresetListEditor::ShowSelection() {
    const int category = presetList->GetCurrentCat();
    const int program = presetList->GetCurrentPrg();
    categoryList->SetValue(static_cast<float>(category));
    int row = program;
    if (!search.empty()) {
        const auto hit = std::ranges::find(found, FoundProgram{category, program});
        row = hit == found.end() ? -1 : static_cast<int>(hit - found.begin());
    }
    programList->SetValue(static_cast<float>(row));
    if (search.empty()) {
        ShowStatus(presetList->GetProgramName());
    } else {
        ShowStatus("Search: " + search + (found.empty() ? "   (nothing found)" : ""));
    }
}

void CPresetListEditor::ShowStatus(const std::string& text) {
    display->SetText(text.c_str());
}

void CPresetListEditor::ShowTools() {
    const bool asks = asking != Asking::nothing;
    nameField->Disable(!asks);
    display->Disable(asks);
    loadButton->SetText(asks ? "Other..." : "Load");
    saveButton->SetText(asking == Asking::mayReplace ? "Replace" : "Save");
    if (asks) {
        nameField->GrabFocus();
    } else {
        programList->GrabFocus();
    }
    Redraw();
}

void CPresetListEditor::Redraw() {
    CWindowPort* const window = GetWindowPort();
    if (window == nullptr || IsDisabled()) return;
    DrawToBuffer();
    window->UpdateScreen(GetRect());
}

// Opening and closing

void CPresetListEditor::Open() {
    CWindowPort* const window = GetWindowPort();
    if (window == nullptr || !IsDisabled() || categoryList == nullptr) return;
    before = presetList->Remember();
    search.clear();
    asking = Asking::nothing;
    Disable(false);
    SetSuper(true);
    UpdateLists();
    categoryList->ShowSelectedItem();
    programList->ShowSelectedItem();
    ShowTools();
}

void CPresetListEditor::OpenToSave() {
    Open();
    if (!IsDisabled()) AskForName();
}

void CPresetListEditor::Close() {
    if (IsDisabled()) return;
    CWindowPort* const window = GetWindowPort();
    SetSuper(false);
    Disable(true);
    before.reset();
    search.clear();
    asking = Asking::nothing;
    if (window == nullptr) return;
    window->DrawToBuffer();
    window->UpdateScreen();
}

void CPresetListEditor::GoBack() {
    const auto start = std::move(before);
    Close();
    if (start) presetList->Return(*start);
}

void CPresetListEditor::WindowCloses() {
    Close();
}

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
    if (!presetList->SetCurrentCat(index)) return false;
    programList->SetTopItemID(0.0f);
    LoadCurrent();
    return true;
}

bool CPresetListEditor::ChooseRow(int row) {
    if (search.empty()) {
        if (!presetList->SetCurrentPrg(row)) return false;
    } else {
        if (row < 0 || row >= static_cast<int>(found.size())) return false;
        const FoundProgram hit = found[static_cast<std::size_t>(row)];
        const bool moved = presetList->SetCurrentCat(hit.category);
        if (!presetList->SetCurrentPrg(hit.program) && !moved) return false;
    }
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
    std::string text = search;
    if (key == kKeyBackspace) {
        RemoveLastCharacter(text);
    } else if (IsCharacter(key) && !(key == ' ' && text.empty())) {
        AppendUtf8(text, key);
    } else {
        return false;
    }
    SetSearch(text);
    return true;
}

// Saving

void CPresetListEditor::AskForName() {
    asking = Asking::name;
    nameField->SetText(presetList->GetProgramName().c_str());
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

void CPresetListEditor::DrawBackground(CRect part) {
    CGraphicBuffer* const buffer = GetGraphicBuffer();
    if (buffer == nullptr || IsDisabled()) return;
    const CRect panel = GetRect();
    const PaintScope scope(buffer, part.GetIntersection(panel));
    if (!scope) return;
    DrawPlate(*buffer, panel, "Presets Library");
    const auto heading = [&](const char* text, const CControl* list) {
        DrawLabel(*buffer, text,
                  CRect(list->GetRect().left, kHeadingTop, list->GetRect().width, kHeadingHeight),
                  {kFrame, TextAlign::left, true});
    };
    if (categoryList == nullptr) return;
    heading("Program Bank", categoryList);
    heading(search.empty() ? "Program Name" : "Found", programList);
}

}  // namespace norava
