#include "editor/host_keys.h"

#include <array>

namespace norava {

namespace {

// By the interface's number of the key, from 1 on.
constexpr std::array<unsigned, 22> kVirtualKeys = {
    kKeyBackspace, kKeyTab,  0,      kKeyEnter, 0,        kKeyEscape, ' ',          0, kKeyEnd,
    kKeyHome,      kKeyLeft, kKeyUp, kKeyRight, kKeyDown, kKeyPageUp, kKeyPageDown, 0, 0,
    kKeyEnter,     0,        0,      kKeyDelete};

// What a host that sends the keysyms of X11 puts in place of a character.
unsigned KeyFromKeysym(int keysym) {
    switch (keysym) {
        case 0xFF08:
            return kKeyBackspace;
        case 0xFF09:
            return kKeyTab;
        case 0xFF0D:
        case 0xFF8D:
            return kKeyEnter;
        case 0xFF1B:
            return kKeyEscape;
        case 0xFF50:
            return kKeyHome;
        case 0xFF51:
            return kKeyLeft;
        case 0xFF52:
            return kKeyUp;
        case 0xFF53:
            return kKeyRight;
        case 0xFF54:
            return kKeyDown;
        case 0xFF55:
            return kKeyPageUp;
        case 0xFF56:
            return kKeyPageDown;
        case 0xFF57:
            return kKeyEnd;
        case 0xFFFF:
            return kKeyDelete;
        default:
            return 0;
    }
}

}  // namespace

unsigned KeyFromHost(const EditorKey& key) {
    if (key.virtualKey > 0) {
        const auto index = static_cast<std::size_t>(key.virtualKey) - 1;
        if (index < kVirtualKeys.size() && kVirtualKeys[index] != 0) return kVirtualKeys[index];
    }
    // The keypad has numbers of its own, and its characters with them.
    if (key.character > 0xFF) return KeyFromKeysym(key.character);
    return key.character > 0 ? static_cast<unsigned>(key.character) : 0;
}

Modifiers ModifiersFromHost(const EditorKey& key) {
    constexpr unsigned kShift = 1, kAlt = 2, kCommand = 4, kControl = 8;
    return {.control = (key.modifiers & (kCommand | kControl)) != 0,
            .shift = (key.modifiers & kShift) != 0,
            .alt = (key.modifiers & kAlt) != 0};
}

}  // namespace norava
