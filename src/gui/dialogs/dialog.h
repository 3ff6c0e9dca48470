#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "gui/control_group.h"
#include "gui/window_port.h"

namespace norava {

class CControlButton;

// The plate of a modal panel: black edge, gold frame, title bar. Inside the buffer's clip; a part
// of it looks the same as the whole.
void DrawPlate(CGraphicBuffer& buffer, CRect plate, const std::string& title);

// A modal group in the middle of its window, which owns it. Whoever shows it goes on at once; the
// answer comes as a call, after the dialog has left the window, or never when it is cancelled or
// the window closes. User-interface thread.
class CDialog : public CControlGroup {
  public:
    bool ControlClicked(CControl*) override { return true; }
    bool ControlReleased(CControl* control) override;
    bool MouseDown() override;
    bool KeyDown(int key) override;
    void WindowCloses() override;
    // Enter and Escape are for the dialog whatever has the focus in it.
    [[nodiscard]] bool WantsKeys() const override { return true; }
    void DrawBackground(CRect part) override;

    // Attaches the dialog and makes it modal. Null for a window that is not open.
    template <typename Dialog>
    static Dialog* Show(CWindowPort& window, std::unique_ptr<Dialog> dialog) {
        if (!window.IsOpen()) return nullptr;
        Dialog* const shown = dialog.get();
        window.AttachControlGroup(std::move(dialog));
        shown->Begin(window);
        return shown;
    }

  protected:
    CDialog(std::string dialogTitle, CSize dialogSize)
        : title(std::move(dialogTitle)), size(dialogSize) {}

    virtual void CreateControls() = 0;
    // Which control has the keys first, and again after a button was pressed.
    virtual CControl* FirstFocus() = 0;
    virtual void ButtonPressed(CControl* button) = 0;
    // Enter and Escape, which no control has used.
    virtual void Accept() = 0;
    virtual void Cancel() { End({}); }

    // Leaves the window, then makes the call. Nothing of the dialog may be touched after it.
    void End(const std::function<void()>& then);
    void Redraw();
    // A place inside, from the plate's left top.
    [[nodiscard]] CRect Inside(int left, int top, int width, int height) const;
    CControlButton* AddButton(CRect place, const char* text);

    static constexpr int kTitleHeight = 30;
    static constexpr int kMargin = 16;
    static constexpr CSize kButtonSize{84, 22};

  private:
    void Begin(CWindowPort& window);

    std::string title;
    CSize size;
    CControl* focusBefore = nullptr;
};

}  // namespace norava
