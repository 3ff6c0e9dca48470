#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "gui/control_group.h"
#include "presets/library_search.h"
#include "presets/preset_list.h"

namespace norava {

class CControlButton;
class CControlDisplay;
class CControlList;
class CControlTextField;

// The browser of programs: two lists side by side, over the instrument's window and modal while it
// shows. Choosing a row loads it at once. Typing searches all categories; the arrow keys move
// through programs and categories; Enter keeps what sounds; Escape ends the search, and then goes
// back to what sounded when the browser opened. Made once, kept by the window's owner, attached to
// the window as long as that is there. User-interface thread.
class CPresetListEditor : public CControlGroup {
  public:
    static constexpr int kWidth = 500;

    // `presetList` outlives the panel.
    explicit CPresetListEditor(CPresetList* presetList);

    // Makes the controls for a window of that size. Once, after the group was attached.
    void CreateControls(CSize windowSize);
    // Fills both lists from the library; the rows that were seen stay in view.
    void UpdateLists();
    void Open();
    // Opens with the question for the name under which to save.
    void OpenToSave();
    // Keeps what sounds.
    void Close();

    bool ControlClicked(CControl* control) override;
    bool ControlReleased(CControl* control) override;
    bool ControlValueChanged(CControl* control, float value) override;
    bool MouseDoubleClick() override;
    bool MouseDown() override;
    bool KeyDown(int key) override;
    bool TimerEvent() override;
    // While it shows, whatever was clicked last.
    [[nodiscard]] bool WantsKeys() const override { return !IsDisabled(); }
    void WindowCloses() override;
    void DrawBackground(CRect part) override;

  private:
    void ShowSelection();
    void ShowStatus(const std::string& text);
    void ShowTools();
    void Redraw();
    bool ChooseCategory(int index);
    bool ChooseRow(int row);
    void LoadCurrent();
    void MoveProgram(int by);
    void MoveCategory(int by);
    void SetSearch(const std::string& text);
    bool EditSearch(int key);
    void AskForName();
    void EndAsking();
    void SaveUnderName();
    void Save(const std::string& name);
    void GoBack();

    CPresetList* const presetList;
    CControlList* categoryList = nullptr;
    CControlList* programList = nullptr;
    CControlButton* loadButton = nullptr;
    CControlButton* saveButton = nullptr;
    CControlDisplay* display = nullptr;
    CControlTextField* nameField = nullptr;
    CControlButton* closeButton = nullptr;

    bool asksForName = false;  // in the tool bar
    bool isNew = false;        // nothing was pressed since it opened
    std::string search;
    std::vector<FoundProgram> found;            // the program list's rows while there is a search
    std::optional<CPresetList::Moment> before;  // the browser opened
    std::uint32_t shownRevision = 0;
};

}  // namespace norava
