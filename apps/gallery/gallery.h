#pragma once

#include <memory>
#include <vector>

#include "gui/control_button.h"
#include "gui/control_list.h"
#include "gui/control_menu.h"
#include "gui/control_slider.h"
#include "gui/control_text_field.h"
#include "gui/window_port_standalone.h"

namespace norava {

// Every control of the toolkit, with and without pictures, in one window. All of them work; what
// was done last is written at the bottom.
class CGallery : public CWindowPortStandalone {
  public:
    static constexpr CSize kSize{640, 400};

    explicit CGallery(int scale);
    ~CGallery() override { Close(); }

    void DrawBackground(CRect part) override;
    bool ControlClicked(CControl* control) override;
    bool ControlReleased(CControl* control) override;
    bool ControlValueChanged(CControl* control, float value) override;
    bool GetParamText(CControl* control, char* text) override;

    // Those that a tour of the states wants to reach.
    CControlKnob* knob = nullptr;
    CControlSlider* fader = nullptr;
    CControlButton* button = nullptr;
    CControlButton* other = nullptr;
    CControlMenu* menu = nullptr;
    CControlMenu* longMenu = nullptr;
    CControlMenu* options = nullptr;
    CControlList* list = nullptr;
    CControlTextField* field = nullptr;

  private:
    template <typename Control>
    Control* Place(CRect rect, float value = 0.0f);
    CImage* Keep(std::unique_ptr<CImage> picture);
    void AddKnobs();
    void AddFaders();
    void AddButtons();
    void AddTexts();
    void AddMenus();
    void AddLists();
    void Report(const char* what, const CControl* control, float value);

    std::vector<std::unique_ptr<CImage>> pictures;
    CControlDisplay* status = nullptr;
    int nextId = 0;
};

}  // namespace norava
