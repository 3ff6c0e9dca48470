#include "presets/panel/preset_list_editor.h"

#include <algorithm>

#include "gui/control_button.h"
#include "gui/control_display.h"
#include "gui/control_list.h"
#include "gui/control_text_field.h"
#include "gui/dialogs/dialog.h"
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
constexpr CPoint kListInset{4, 4};
constexpr int kHeadingTop = 66;
constexpr int kHeadingHeight = 16;

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
        list->SetTextInset(kListInset);
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
        ShowStatus(presetList->GetNameOfSound());
    } else {
        ShowStatus("Search: " + search + (found.empty() ? "   (nothing found)" : ""));
    }
}

void CPresetListEditor::ShowStatus(const std::string& text) {
    display->SetText(text.c_str());
}

void CPresetListEditor::ShowTools() {
    nameField->Disable(!asksForName);
    display->Disable(asksForName);
    loadButton->SetText(asksForName ? "Other..." : "Load");
    if (asksForName) {
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
    asksForName = false;
    isNew = true;
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
    asksForName = false;
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
