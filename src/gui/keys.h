#pragma once

namespace norava {

// Keys as the window port gets them: a Unicode character for what types text, else one of these.
enum Key : unsigned {
    kKeyBackspace = 0x08,
    kKeyTab = 0x09,
    kKeyEnter = 0x0D,
    kKeyEscape = 0x1B,
    kKeyDelete = 0x7F,
    // Above every Unicode character.
    kKeyLeft = 0x110000,
    kKeyRight,
    kKeyUp,
    kKeyDown,
    kKeyHome,
    kKeyEnd,
    kKeyPageUp,
    kKeyPageDown
};

// Mouse buttons.
enum MouseButton : int { kMouseLeft = 0, kMouseRight = 1, kMouseMiddle = 2 };

struct Modifiers {
    bool control = false;
    bool shift = false;
    bool alt = false;

    // A command to host or panel, not a character; AltGr, which types some, is both together.
    [[nodiscard]] bool IsCommand() const { return control && !alt; }
};

}  // namespace norava
