#pragma once

#include <optional>

#include "gui/geometry.h"
#include "gui/platform/x11_connection.h"

namespace norava::x11 {

// The pointer while a knob is dragged: nobody sees it, its movements go on past the edge of the
// screen, and in the end it is where it was. All in stored pixels of the screen.
class HiddenPointer {
  public:
    HiddenPointer(const Connection& server, xcb_window_t target)
        : connection(server), window(target) {}
    ~HiddenPointer() { Show(); }
    HiddenPointer(const HiddenPointer&) = delete;
    HiddenPointer& operator=(const HiddenPointer&) = delete;

    void Hide(CPoint pointer);
    void Show();
    [[nodiscard]] bool IsHidden() const { return hidden; }
    // Whether the event was on its way when the pointer was put somewhere else: where it says the
    // pointer is means nothing then.
    [[nodiscard]] bool IsOutdated(uint32_t sequence);
    // The movement that an event brings while hidden.
    CSize Follow(CPoint pointer, uint32_t sequence);

  private:
    void PutBack();
    xcb_cursor_t GetNoCursor();

    const Connection& connection;
    const xcb_window_t window;
    xcb_cursor_t noCursor = 0;
    bool hidden = false;
    CPoint start;
    CPoint last;
    std::optional<uint32_t> putBack;  // number of the request that last moved the pointer
};

}  // namespace norava::x11
