#pragma once

#include "gui/keys.h"
#include "gui/platform/x11_connection.h"

namespace norava::x11 {

// What the keys of the user's keyboard mean, in the layout that is in use.
class Keyboard {
  public:
    explicit Keyboard(const Connection& server);

    // A Key or a character; 0 for keys that mean nothing by themselves. The first call asks the
    // server.
    unsigned Translate(xcb_keycode_t code, uint16_t state);
    // True when the event was for it: the layout has changed.
    bool Handle(const xcb_generic_event_t& event);

  private:
    [[nodiscard]] xcb_keysym_t FindSymbol(xcb_keycode_t code, uint16_t state);
    [[nodiscard]] uint32_t FindCharacter(xcb_keysym_t symbol) const;
    [[nodiscard]] bool IsCapital(xcb_keysym_t symbol, xcb_keysym_t capital) const;

    const Connection& connection;
    Owned<xcb_get_keyboard_mapping_reply_t> mapping;
    int extensionEvent = -1;  // of whatever kind, while the server has the extension
};

Modifiers ModifiersOf(uint16_t state);

}  // namespace norava::x11
