#pragma once

#include <memory>
#include <optional>
#include <string>

#include "gui/platform/damage.h"
#include "gui/platform/platform_view.h"
#include "gui/platform/tick_clock.h"
#include "gui/platform/x11_connection.h"
#include "gui/platform/x11_drop.h"
#include "gui/platform/x11_hidden_pointer.h"
#include "gui/platform/x11_keyboard.h"
#include "gui/platform/x11_picture.h"

namespace norava::x11 {

using Event = Owned<xcb_generic_event_t>;

// A window of the X Window System, inside the host's or with no parent by itself. The windows of
// the server are in stored pixels, everything that is reported in logical ones.
class View final : public PlatformView, private PixelTarget {
  public:
    static std::unique_ptr<View> Open(PlatformEvents& listener, xcb_window_t parent, CSize size,
                                      int scale);
    ~View() override;

    void Redraw(CRect part) override { damage.Add(part); }
    void Resize(CSize newSize) override;
    [[nodiscard]] std::optional<CPoint> GetMouseLocation() override { return mouse; }
    void TrackMouse(bool on, bool hidePointer) override;
    void WantKeyboard(bool on) override;
    void RunEvents() override;
    void WaitForEvents() override;
    void SetTitle(const char* title) override;
    [[nodiscard]] void* GetNativeHandle() override;

  private:
    struct Press {
        int button = -1;
        CPoint at;  // stored pixels
        xcb_timestamp_t time = 0;
    };

    View(std::unique_ptr<Connection> server, xcb_window_t ownWindow, PlatformEvents& listener,
         xcb_window_t parentWindow, CSize viewSize, int scaleFactor);
    [[nodiscard]] static bool Create(const Connection& server, xcb_window_t window,
                                     xcb_window_t parent, CSize stored);
    void DescribeOwnWindow() const;
    void FixSize() const;
    void SelectEvents(bool keys) const;

    [[nodiscard]] Event TakeEvent();
    void Handle(const xcb_generic_event_t& event);
    void HandleStructure(const xcb_generic_event_t& event);
    void MousePressed(const xcb_button_press_event_t& event);
    void MouseReleased(const xcb_button_release_event_t& event);
    void MouseMoved(const xcb_motion_notify_event_t& event, uint32_t sequence);
    void MouseCrossed(const xcb_enter_notify_event_t& event, bool entered);
    void KeyPressed(const xcb_key_press_event_t& event, bool sentByHost);
    void KeyReleased(const xcb_key_release_event_t& event, bool sentByHost);
    void FocusChanged(const xcb_focus_in_event_t& event, bool hasFocusNow);
    void HandleMessage(const xcb_client_message_event_t& message);
    void PassToHost(const xcb_key_press_event_t& event) const;
    void TakeFocus();
    void GiveFocusBack();
    void LoseWindow();

    void ShowDamage();
    void ShowPixels(const uint32_t* words, CSize size, CRect clip) override;
    [[nodiscard]] CPoint ToLogical(int x, int y) const;
    [[nodiscard]] CSize ToLogicalSize() const { return {stored.cx / scale, stored.cy / scale}; }

    PlatformEvents& events;
    const std::unique_ptr<Connection> connection;
    const xcb_window_t parent;  // 0: a window of its own
    xcb_window_t window;        // 0 once it is gone
    const int scale;
    CSize stored;
    Picture picture;
    Keyboard keyboard;
    HiddenPointer pointer;
    DropTarget drop;
    Damage damage;  // logical
    TickClock ticks;
    Event next;  // taken from the queue to see what follows another

    CPoint mouse{-1, -1};
    CPoint mouseOnScreen;  // stored pixels
    CSize movementLeft;    // of a hidden pointer, less than a logical pixel
    Press lastPress;
    unsigned buttonsDown = 0;
    xcb_window_t focusBefore = 0;
    bool keyboardWanted = false;
    bool hasFocus = false;
    bool lost = false;
};

}  // namespace norava::x11
