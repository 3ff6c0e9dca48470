// A window with something of everything that a system has to bring: linked for systems on which the
// tests themselves do not run, and run there by hand.
#include <cstdio>

#include "gui/control_button.h"
#include "gui/dialogs/file_dialog.h"
#include "gui/dialogs/message_box.h"
#include "gui/window_port_standalone.h"

namespace {

class Window : public norava::CWindowPortStandalone {
  public:
    Window() : CWindowPortStandalone(norava::GetNativeScale()) {
        SetSize(300, 200);
        SetTitle("A window");
        auto* const button = GetRootControlGroup()->Add<norava::CControlButton>();
        button->SetRect(100, 80, 100, 30);
        button->SetText("Load");
    }
    bool ControlClicked(norava::CControl*) override { return true; }
    bool ControlReleased(norava::CControl*) override {
        return norava::CFileDialog::Ask(*this, {.title = "Load"}, [this](const std::string& path) {
            norava::CMessageBox::Tell(*this, "Load", path);
        });
    }
    bool DragEntered(const char*) override { return true; }
    bool DropFile(const char* path) override { return std::puts(path) >= 0; }
};

}  // namespace

int main() {
    Window window;
    if (!window.Open()) return 1;
    window.Run();
    return 0;
}
