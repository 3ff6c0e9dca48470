#pragma once

#include <memory>
#include <optional>

#include "gui/geometry.h"
#include "gui/keys.h"
#include "gui/pixel_target.h"

// All that the toolkit needs of a window system. Positions and sizes are logical pixels; everything
// happens on the user-interface thread. A view tells its window what happens:
namespace norava {
class SystemPanels;

class PlatformEvents {
  public:
    virtual ~PlatformEvents() = default;
    virtual void MouseMoved(CPoint to, Modifiers keys) = 0;
    virtual void MouseMovedBy(CSize distance, Modifiers keys) = 0;  // while the pointer is hidden
    virtual void MousePressed(CPoint at, int button, Modifiers keys, bool isDoubleClick) = 0;
    virtual void MouseReleased(CPoint at, int button, Modifiers keys) = 0;
    virtual bool MouseWheel(CPoint at, float right, float up, Modifiers keys) = 0;
    // False: nobody used the key, the host may have it.
    virtual bool KeyPressed(unsigned key, Modifiers keys) = 0;
    virtual bool KeyReleased(unsigned key, Modifiers keys) = 0;
    virtual void FocusChanged(bool hasFocus) = 0;
    virtual void MouseTakenAway() = 0;               // by the system, in the middle of a drag
    virtual bool FileEntered(const char* path) = 0;  // false: cannot be dropped here
    virtual void FileLeft(const char* path) = 0;
    virtual bool FileDropped(const char* path) = 0;
    virtual void Tick() = 0;  // 30 times a second
    virtual void Paint(PixelTarget& target, CRect part) = 0;
    virtual void CloseRequested() = 0;  // by the user, of a window of its own
    virtual void ViewLost() = 0;        // the parent window or the whole display has gone
};

// The window tells its view what to do. Deleting the view removes it from the screen; an event that
// it reports may do so before the call returns, except inside RunEvents.
class PlatformView {
  public:
    virtual ~PlatformView() = default;
    virtual void Redraw(CRect part) = 0;  // answered by Paint, at once or soon
    virtual void Resize(CSize size) = 0;
    [[nodiscard]] virtual std::optional<CPoint> GetMouseLocation() = 0;
    // While on, events go on outside the view; the hidden pointer returns to where it was.
    virtual void TrackMouse(bool on, bool hidePointer) = 0;
    virtual void WantKeyboard(bool on) = 0;
    virtual void RunEvents() = 0;      // from the host's idle call
    virtual void WaitForEvents() = 0;  // in a loop of our own: until RunEvents has something to do
    virtual void SetTitle(const char* title) = 0;  // of a window of its own
    [[nodiscard]] virtual void* GetNativeHandle() = 0;
    [[nodiscard]] virtual SystemPanels* GetPanels() { return nullptr; }  // where there are any
};

// This system's view in a parent window, or with none as a window of its own. Null on failure.
std::unique_ptr<PlatformView> OpenNativeView(PlatformEvents&, void* parent, CSize, int scale);
int GetNativeScale();  // whole stored pixels a logical pixel, as the screen wants it

}  // namespace norava
