#pragma once

#include "gui/platform/platform_view.h"

namespace norava {

class CWindowPort;
struct DispatchState;

// Turns what a view reports into the state and the calls of its window port. Outlives the port as
// long as the view may still call, and does nothing then.
class WindowEvents final : public PlatformEvents {
  public:
    explicit WindowEvents(DispatchState& portState) : state(portState) {}

    void MouseMoved(CPoint to, Modifiers keys) override;
    void MouseMovedBy(CSize distance, Modifiers keys) override;
    void MousePressed(CPoint at, int button, Modifiers keys, bool isDoubleClick) override;
    void MouseReleased(CPoint at, int button, Modifiers keys) override;
    bool MouseWheel(CPoint at, float right, float up, Modifiers keys) override;
    bool KeyPressed(unsigned key, Modifiers keys) override;
    bool KeyReleased(unsigned key, Modifiers keys) override;
    void FocusChanged(bool hasFocus) override;
    void MouseTakenAway() override;
    bool FileEntered(const char* path) override;
    void FileLeft(const char* path) override;
    bool FileDropped(const char* path) override;
    void Tick() override;
    void Paint(PixelTarget& target, CRect part) override;
    void CloseRequested() override;
    void ViewLost() override;

  private:
    static void SetMouse(CWindowPort& port, CPoint to, Modifiers keys);
    // Calls use(port, dispatch) while there is a port; false without one.
    template <typename Use>
    bool WithPort(const Use& use);

    DispatchState& state;
};

}  // namespace norava
