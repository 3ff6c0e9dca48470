#pragma once

#include <memory>
#include <span>
#include <vector>

#include "editor/instrument_link.h"
#include "editor/plugin_editor.h"
#include "editor/string_picture.h"

namespace norava {

class CControlButton;
class CControlDisplay;
class CControlKnob;
class CControlMenu;
class CControlSlider;
class CPresetListAboutBox;
class CPresetListEditor;
class NamePlate;
struct PanelControl;

// The instrument's panel: one control for each parameter, the program display with its arrows and
// menu, the moving strings, and over them the browser and the about box. Places and sizes come from
// panel_layout; pictures are bound when the window opens, so that an instance is made without
// loading any. User-interface thread.
class CNoravaEditor : public CPluginEditor {
  public:
    // `builtInPictures` stand for the folder "Graphics" where there is none.
    CNoravaEditor(InstrumentLinkMaker linkMaker, std::span<const BuiltInPicture> builtInPictures);
    ~CNoravaEditor() override;

    bool CanOpen() override;
    void CreateControls() override;
    void UpdateAllValues() override;
    void Connect(CPluginRenderer* newRenderer, CPluginWrapper* newWrapper) override;

    bool ControlReleased(CControl* control) override;
    bool ControlValueChanged(CControl* control, float value) override;
    bool GetParamText(CControl* control, char* text) override;
    bool TimerEvent() override;
    void DrawBackground(CRect part) override;
    bool DragEntered(const char* path) override;
    bool DropFile(const char* path) override;

    void ProgramChanged() override;
    void ShowBrowser() override;
    void ShowAboutBox() override;

    // The options menu: save, load or reset the program. Other items do nothing.
    void processProgramOption(int item);

  private:
    // Each makes a control, gives it its id and puts it in the window; `imageId` is bound later.
    CControlKnob* createKnob(int id, int x, int y, int imageId);
    CControlButton* createButton(int id, int x, int y, int imageId);
    CControlSlider* createFader(int id, CRect rect, int imageId);
    CControlMenu* createMenu(int id, int x, int y, int width);
    static void setMenuProfile(CControlMenu* menu);

    void CreateParameterControl(const PanelControl& row);
    void CreateProgramControls();
    void CreateNamePlate();
    bool ImportPictures();
    void BindPictures();
    void MakePanels();
    void StepProgram(bool forward);
    void Repaint(CRect part);
    void FollowDampers();
    void MoveStrings();

    const InstrumentLinkMaker makeLink;
    std::unique_ptr<InstrumentLink> link;  // null while there is no renderer
    StringPicture strings;
    CControlDisplay* programDisplay = nullptr;
    NamePlate* namePlate = nullptr;
    CPresetListEditor* browser = nullptr;
    CPresetListAboutBox* aboutBox = nullptr;
};

}  // namespace norava
