#pragma once

#include <functional>
#include <string>
#include <vector>

#include "gui/dialogs/dialog.h"
#include "gui/platform/system_panels.h"

namespace norava {

class CControlList;
class CControlMenu;
class CControlTextField;

// Asks for a file: folders and files of the wanted kinds in one list, the folder's path above it,
// the name below. Typing finds a row, Enter and a double click go into folders and choose files.
// Replacing a file is asked first.
class CFileDialog : public CDialog {
  public:
    // The full path; the file exists when it is to be loaded.
    using Chosen = FileChosen;
    // Where the system has a panel for it, that is shown. False for a window that is not open. Not
    // called when the user cancels.
    static bool Ask(CWindowPort& window, const FileDialogRequest& request, Chosen chosen);

    CFileDialog(const FileDialogRequest& wanted, Chosen action);

    bool ControlValueChanged(CControl* control, float value) override;
    bool MouseDoubleClick() override;
    bool KeyDown(int key) override;
    void DrawBackground(CRect part) override;

  protected:
    void CreateControls() override;
    CControl* FirstFocus() override;
    void ButtonPressed(CControl* button) override;
    void Accept() override;

  private:
    struct Entry {
        std::string name;  // with extension
        bool isFolder = false;
    };

    void GoTo(const std::string& newFolder);
    void GoUp();
    void ListFolder();
    // Nothing when it is not there.
    void SelectRow(const std::string& name);
    void ShowStatus(const std::string& text);
    void ChooseRow(int row);
    // What is typed or selected: a folder is gone into, a file is the answer.
    void Choose(const std::string& path);
    void Finish(const std::string& path);
    void AskForFolder();
    void ShowAll(bool all);
    [[nodiscard]] bool HasWantedExtension(const std::string& name) const;
    [[nodiscard]] std::string InFolder(const std::string& name) const;
    // The path of the file to load, which may leave out its extension; empty when there is none.
    [[nodiscard]] std::string FindFile(const std::string& path) const;
    [[nodiscard]] std::string TypeText() const;

    const FileDialogRequest request;
    const Chosen answered;
    std::string folder;
    std::vector<Entry> entries;
    std::string status;
    CControlTextField* pathField = nullptr;
    CControlTextField* nameField = nullptr;
    CControlList* list = nullptr;
    CControlMenu* filter = nullptr;  // while there is something to choose
    bool showsAll = false;
    CControl* upButton = nullptr;
    CControl* folderButton = nullptr;
    CControl* cancelButton = nullptr;
    CControl* chooseButton = nullptr;
};

}  // namespace norava
