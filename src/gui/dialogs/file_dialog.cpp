#include "gui/dialogs/file_dialog.h"

#include <algorithm>

#include "files/file_system.h"
#include "files/natural_order.h"
#include "gui/control_button.h"
#include "gui/control_list.h"
#include "gui/control_menu.h"
#include "gui/control_text_field.h"
#include "gui/dialogs/message_box.h"
#include "gui/label.h"

namespace norava {

namespace {

using file_system::EntryKind;

constexpr CSize kSize{520, 420};
constexpr CColor kText(246, 234, 211);
constexpr CColor kHint(190, 172, 139);
constexpr int kFieldHeight = 22;
constexpr int kPathTop = 40;
constexpr int kUpWidth = 44;
constexpr int kListTop = 70;
constexpr int kListHeight = 240;
constexpr int kNameTop = 318;
constexpr int kNameLeft = 70;
constexpr int kStatusTop = 348;
constexpr int kButtonTop = 384;
constexpr int kButtonStep = 92;
constexpr int kFilterWidth = 160;
// More could not be used, and a folder of a million files must not stop the window.
constexpr std::size_t kMaxEntries = 1024;

std::string ParentOf(const std::string& folder) {
    const std::size_t slash = folder.rfind('/');
    if (slash == folder.npos) return folder;
    return slash == 0 ? "/" : folder.substr(0, slash);
}

}  // namespace

CFileDialog::CFileDialog(const FileDialogRequest& wanted, Chosen action)
    : CDialog(wanted.title, kSize), request(wanted), answered(std::move(action)) {}

bool CFileDialog::Ask(CWindowPort& window, const FileDialogRequest& request, Chosen chosen) {
    if (!window.IsOpen()) return false;
    if (SystemPanels* const panels = window.GetView()->GetPanels())
        return panels->AskForFile(request, std::move(chosen));
    return Show(window, std::make_unique<CFileDialog>(request, std::move(chosen))) != nullptr;
}

void CFileDialog::CreateControls() {
    const int width = kSize.cx - 2 * kMargin;
    pathField = Add<CControlTextField>();
    pathField->SetRect(Inside(kMargin, kPathTop, width - kUpWidth - 8, kFieldHeight));
    upButton =
        AddButton(Inside(kMargin + width - kUpWidth, kPathTop, kUpWidth, kFieldHeight), "Up");
    list = Add<CControlList>();
    list->SetRect(Inside(kMargin, kListTop, width, kListHeight));
    nameField = Add<CControlTextField>();
    nameField->SetRect(Inside(kNameLeft, kNameTop, kSize.cx - kMargin - kNameLeft, kFieldHeight));

    const auto button = [this](int fromRight, const char* text) {
        const int left =
            kSize.cx - kMargin - kButtonStep * fromRight + kButtonStep - kButtonSize.cx;
        return AddButton(Inside(left, kButtonTop, kButtonSize.cx, kButtonSize.cy), text);
    };
    chooseButton = button(1, request.save ? "Save" : "Load");
    cancelButton = button(2, "Cancel");
    if (request.save) {
        folderButton =
            AddButton(Inside(kMargin, kButtonTop, kButtonSize.cx, kButtonSize.cy), "New Folder");
    } else if (!request.extensions.empty()) {
        filter = Add<CControlMenu>();
        filter->SetBackgroundSelfDrawn();
        filter->SetRect(Inside(kMargin, kButtonTop, kFilterWidth, kButtonSize.cy));
        filter->AddTextItem(request.typeName.c_str());
        filter->AddTextItem("All Files");
        filter->SetValue(0.0f);
    }

    std::string start = request.folder;
    while (start.size() > 1 && file_system::KindOf(start.c_str()) != EntryKind::folder)
        start = start.find('/') == start.npos ? "/" : ParentOf(start);
    GoTo(start.empty() ? "/" : start);
    if (request.save) {
        nameField->SetText(request.suggestedName.c_str());
        nameField->SelectAll();
    } else {
        const std::string suggested = FindFile(InFolder(request.suggestedName));
        SelectRow(suggested.substr(suggested.rfind('/') + 1));
    }
}

CControl* CFileDialog::FirstFocus() {
    return request.save ? static_cast<CControl*>(nameField) : list;
}

// The folder

void CFileDialog::GoTo(const std::string& newFolder) {
    folder = newFolder;
    while (folder.size() > 1 && folder.back() == '/')
        folder.pop_back();
    pathField->SetText(folder.c_str());
    status.clear();
    if (!request.save) nameField->SetText("");  // a file of the folder before
    ListFolder();
    list->SetValue(-1.0f);
    list->SetTopItemID(0.0f);
    Redraw();
}

void CFileDialog::GoUp() {
    const std::string left = folder.substr(folder.rfind('/') + 1);
    GoTo(ParentOf(folder));
    SelectRow(left);
    Redraw();
}

void CFileDialog::SelectRow(const std::string& name) {
    const auto row = std::ranges::find(entries, name, &Entry::name);
    if (row == entries.end()) return;
    list->SetValue(static_cast<float>(row - entries.begin()));
    list->ShowSelectedItem();
    if (!row->isFolder) nameField->SetText(name.c_str());
}

void CFileDialog::ListFolder() {
    entries.clear();
    const auto listing =
        file_system::ListFolder(folder.c_str(), [this](const char* name, EntryKind kind) {
            const bool isFolder = kind == EntryKind::folder;
            const bool fits = showsAll || HasWantedExtension(name);
            const bool wanted = isFolder || (kind == EntryKind::file && fits);
            if (wanted && name[0] != '.') entries.push_back({name, isFolder});
            return entries.size() < kMaxEntries;
        });
    if (listing != file_system::Listing::done) status = "This folder cannot be read.";
    if (entries.size() >= kMaxEntries) status = "Only a part of this large folder is shown.";
    std::ranges::sort(entries, [](const Entry& a, const Entry& b) {
        return a.isFolder != b.isFolder ? a.isFolder : CompareNaturally(a.name, b.name) < 0;
    });
    list->DeleteAllItems();
    for (const Entry& entry : entries)
        list->AddItem((entry.isFolder ? entry.name + "/" : entry.name).c_str());
}

void CFileDialog::ShowAll(bool all) {
    showsAll = all;
    GoTo(folder);
    list->GrabFocus();
}

bool CFileDialog::HasWantedExtension(const std::string& name) const {
    return request.extensions.empty() ||
           std::ranges::any_of(request.extensions, [&name](const std::string& extension) {
               return name.ends_with('.' + extension);
           });
}

std::string CFileDialog::InFolder(const std::string& name) const {
    if (name.starts_with('/')) return name;
    return folder == "/" ? "/" + name : folder + '/' + name;
}

std::string CFileDialog::FindFile(const std::string& path) const {
    if (file_system::KindOf(path.c_str()) == EntryKind::file) return path;
    for (const std::string& extension : request.extensions)
        if (file_system::KindOf((path + '.' + extension).c_str()) == EntryKind::file)
            return path + '.' + extension;
    return {};
}

void CFileDialog::AskForFolder() {
    CWindowPort* const window = GetWindowPort();
    if (window == nullptr) return;
    CMessageBox::AskForText(
        *window, "New Folder", "Name of the new folder in " + folder + ":", "Create",
        [this](const std::string& name) {
            const std::string path = InFolder(name);
            if (name.find('/') == name.npos && file_system::MakeFolder(path.c_str())) {
                GoTo(path);
            } else {
                ShowStatus("The folder could not be made.");
            }
        });
}

// The answer

void CFileDialog::ShowStatus(const std::string& text) {
    status = text;
    Redraw();
}

void CFileDialog::ChooseRow(int row) {
    if (row < 0 || row >= static_cast<int>(entries.size())) return;
    const Entry entry = entries[static_cast<std::size_t>(row)];
    if (entry.isFolder) {
        GoTo(InFolder(entry.name));
    } else {
        Choose(InFolder(entry.name));
    }
}

void CFileDialog::Choose(const std::string& path) {
    const EntryKind kind = file_system::KindOf(path.c_str());
    if (kind == EntryKind::folder) return GoTo(path);
    if (!request.save) {
        const std::string found = FindFile(path);
        if (!found.empty()) return Finish(found);
        return ShowStatus("There is no such file.");
    }
    const bool named = HasWantedExtension(path) || request.extensions.empty();
    const std::string full = named ? path : path + '.' + request.extensions.front();
    const EntryKind there = file_system::KindOf(full.c_str());
    if (there == EntryKind::none) return Finish(full);
    CWindowPort* const window = GetWindowPort();
    if (there != EntryKind::file || window == nullptr) return ShowStatus("This name is taken.");
    CMessageBox::Ask(
        *window, request.title,
        "There is a file of this name already:\n" + full.substr(full.rfind('/') + 1) +
            "\nReplace it?",
        {"Replace", "Cancel"},
        [this, full](int button) {
            if (button == 0) Finish(full);
        },
        1);
}

void CFileDialog::Finish(const std::string& path) {
    const Chosen chosen = answered;
    End([chosen, path] { chosen(path); });
}

void CFileDialog::Accept() {
    const std::string name = nameField->GetText();
    if (!name.empty()) return Choose(InFolder(name));
    ChooseRow(list->GetSelectedItemID());
}

// Events

void CFileDialog::ButtonPressed(CControl* button) {
    if (button == cancelButton) {
        Cancel();
    } else if (button == upButton) {
        GoUp();
    } else if (button == folderButton) {
        AskForFolder();
    } else if (button == chooseButton) {
        Accept();
    }
}

bool CFileDialog::ControlValueChanged(CControl* control, float value) {
    if (control == list) {
        const bool inside = value >= 0.0f && value < static_cast<float>(entries.size());
        if (!inside) return true;
        const Entry& entry = entries[static_cast<std::size_t>(value)];
        nameField->SetText(entry.isFolder ? "" : entry.name.c_str());
        RedrawControl(nameField, true);
    } else if (control == filter) {
        ShowAll(value > 0.5f);
    } else if (control == nameField && value == CControlTextField::kEntered) {
        Accept();
    } else if (control == pathField && value == CControlTextField::kEntered) {
        const std::string path = InFolder(pathField->GetText());
        // A file to be written is named below.
        const bool mayBeFile = !request.save;
        if (mayBeFile || file_system::KindOf(path.c_str()) == EntryKind::folder) {
            Choose(path);
        } else {
            ShowStatus("There is no such folder.");
        }
    }
    return true;
}

bool CFileDialog::MouseDoubleClick() {
    const int row = list->FindItemUnderMouse();
    if (row < 0) return CControlGroup::MouseDoubleClick();
    ChooseRow(row);
    return true;
}

bool CFileDialog::KeyDown(int key) {
    if (list->IsFocused()) {
        if (key == kKeyEnter) {
            ChooseRow(list->GetSelectedItemID());
            return true;
        }
        if (key == kKeyBackspace) {
            GoUp();
            return true;
        }
    }
    if (key == kKeyTab) {
        CControl* const order[] = {pathField, list, nameField, pathField};
        const auto* const now =
            std::ranges::find_if(order, [](const CControl* c) { return c->IsFocused(); });
        (now < std::end(order) - 1 ? now[1] : order[0])->GrabFocus();
        Redraw();
        return true;
    }
    return CDialog::KeyDown(key);
}

std::string CFileDialog::TypeText() const {
    std::string text = request.typeName;
    for (const std::string& extension : request.extensions) {
        text += &extension == &request.extensions.front() ? "  (" : ", ";
        text += "*.";
        text += extension;
    }
    return request.extensions.empty() ? text : text + ")";
}

void CFileDialog::DrawBackground(CRect part) {
    CDialog::DrawBackground(part);
    CGraphicBuffer* const buffer = GetGraphicBuffer();
    if (buffer == nullptr) return;
    const PaintScope scope(buffer, part.GetIntersection(GetRect()));
    if (!scope) return;
    DrawLabel(*buffer, "Name", Inside(kMargin, kNameTop, kNameLeft - kMargin, kFieldHeight),
              {kText, TextAlign::left, false});
    DrawLabel(*buffer, status.empty() ? TypeText() : status,
              Inside(kMargin, kStatusTop, kSize.cx - 2 * kMargin, kFieldHeight),
              {status.empty() ? kHint : kText, TextAlign::left, false});
}

}  // namespace norava
