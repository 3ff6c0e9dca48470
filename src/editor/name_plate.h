#pragma once

#include <functional>

#include "gui/control_menu.h"

namespace norava {

// The lettering of the panel's maker: a click tells about the instrument, a right click opens the
// menu of zoom factors. Its picture is part of the background.
class NamePlate : public CControlMenu {
  public:
    explicit NamePlate(std::function<void()> clickAction);

    // Marks the factor that is in use, 1 .. 3.
    void SetZoom(int factor);

    void DrawToBuffer() override { DrawBackground(); }
    bool MouseDown() override;
    bool MouseUp() override;

  protected:
    [[nodiscard]] bool OpensWith(int button) const override { return button == kMouseRight; }
    [[nodiscard]] int GetLeastListWidth() const override { return 0; }  // it is no field

  private:
    const std::function<void()> onClick;
    bool clicked = false;
};

}  // namespace norava
