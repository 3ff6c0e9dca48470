#pragma once

#include "gui/control_group.h"

namespace norava {

// A picture with the plug-in's name and version over the window; any click or key closes it.
// User-interface thread.
class CPresetListAboutBox : public CControlGroup {
  public:
    CPresetListAboutBox();

    // The picture may be null: the text then stands on a plain plate.
    void SetPicture(CImage* newPicture, CRect place);
    void Open();
    void Close();

    bool MouseDown() override;
    bool KeyDown(int key) override;
    bool LostFocus() override;
    void WindowCloses() override;
    [[nodiscard]] bool WantsKeys() const override { return !IsDisabled(); }
    void DrawBackground(CRect part) override;

  private:
    CImage* picture = nullptr;
};

}  // namespace norava
