#ifdef __linux__

#include "gui/platform/x11_keyboard.h"

#include <algorithm>
#include <iterator>

namespace norava::x11 {

namespace {

// Numbers of key symbols; those of Latin-1 are its characters.
constexpr xcb_keysym_t kFirstKeypad = 0xFF80, kLastKeypad = 0xFFBD;
constexpr xcb_keysym_t kKeypadCharacters =
    0xFFAA;                                    // from here on '*' .. '9', in the order of ASCII
constexpr xcb_keysym_t kUnicode = 0x01000000;  // plus the character

struct SymbolKey {
    xcb_keysym_t symbol;
    unsigned key;
};
constexpr SymbolKey kNamedKeys[] = {
    {0xFE20, kKeyTab},  // with shift
    {0xFF08, kKeyBackspace},
    {0xFF09, kKeyTab},
    {0xFF0D, kKeyEnter},
    {0xFF1B, kKeyEscape},
    {0xFF50, kKeyHome},
    {0xFF51, kKeyLeft},
    {0xFF52, kKeyUp},
    {0xFF53, kKeyRight},
    {0xFF54, kKeyDown},
    {0xFF55, kKeyPageUp},
    {0xFF56, kKeyPageDown},
    {0xFF57, kKeyEnd},
    {0xFFFF, kKeyDelete},
    // The same on the keypad.
    {0xFF80, ' '},
    {0xFF89, kKeyTab},
    {0xFF8D, kKeyEnter},
    {0xFF95, kKeyHome},
    {0xFF96, kKeyLeft},
    {0xFF97, kKeyUp},
    {0xFF98, kKeyRight},
    {0xFF99, kKeyDown},
    {0xFF9A, kKeyPageUp},
    {0xFF9B, kKeyPageDown},
    {0xFF9C, kKeyEnd},
    {0xFF9F, kKeyDelete},
    {0xFFBD, '='},
};

constexpr uint16_t kNumLock = XCB_MOD_MASK_2;
constexpr uint16_t kThirdLevel = XCB_MOD_MASK_5;

bool IsKeypad(xcb_keysym_t symbol) {
    return symbol >= kFirstKeypad && symbol <= kLastKeypad;
}

}  // namespace

Modifiers ModifiersOf(uint16_t state) {
    return {.control = (state & XCB_MOD_MASK_CONTROL) != 0,
            .shift = (state & XCB_MOD_MASK_SHIFT) != 0,
            .alt = (state & XCB_MOD_MASK_1) != 0};
}

// A server tells the layout of a key only to those who say that they know of it, and those hear of
// a change only when they ask to.
Keyboard::Keyboard(const Connection& server) : connection(server) {
    const Library::Keyboard& xkb = connection.call.xkb;
    if (!xkb.extension) return;
    const WritingScope scope;
    const auto* found = connection.call.get_extension_data(connection.raw, xkb.extension);
    if (!found || !found->present) return;
    const Owned<void> reply(xkb.useReply(connection.raw, xkb.use(connection.raw, 1, 0), nullptr));
    if (!reply) return;
    constexpr uint16_t kCoreKeyboard = 0x100, kNewKeyboard = 1, kMap = 2, kAllOfMap = 0xFF;
    xkb.selectEvents(connection.raw, kCoreKeyboard, kNewKeyboard | kMap, 0, kNewKeyboard | kMap,
                     kAllOfMap, kAllOfMap, nullptr);
    extensionEvent = found->first_event;
}

bool Keyboard::Handle(const xcb_generic_event_t& event) {
    constexpr int kSentByClient = 0x80;
    const int kind = event.response_type & ~kSentByClient;
    if (kind != XCB_MAPPING_NOTIFY && kind != extensionEvent) return false;
    mapping.reset();
    return true;
}

bool Keyboard::IsCapital(xcb_keysym_t symbol, xcb_keysym_t capital) const {
    const uint32_t small = FindCharacter(symbol);
    const uint32_t large = FindCharacter(capital);
    const bool isLetter = (small >= 'a' && small <= 'z') || small >= 0xC0;
    return isLetter && large != 0 && large != small;
}

// Columns of a key: two of the first layout, two of the second, then the third and fourth level of
// the first.
xcb_keysym_t Keyboard::FindSymbol(xcb_keycode_t code, uint16_t state) {
    const Library& call = connection.call;
    const xcb_setup_t* setup = call.get_setup(connection.raw);
    if (!mapping) {
        const WritingScope scope;
        const auto count = static_cast<uint8_t>(setup->max_keycode - setup->min_keycode + 1);
        const auto cookie = call.get_keyboard_mapping(connection.raw, setup->min_keycode, count);
        mapping.reset(call.get_keyboard_mapping_reply(connection.raw, cookie, nullptr));
    }
    if (!mapping || code < setup->min_keycode) return 0;
    const size_t columns = mapping->keysyms_per_keycode;
    const size_t first = static_cast<size_t>(code - setup->min_keycode) * columns;
    const auto length =
        static_cast<size_t>(call.get_keyboard_mapping_keysyms_length(mapping.get()));
    const xcb_keysym_t* symbols = call.get_keyboard_mapping_keysyms(mapping.get());
    const auto at = [&](size_t column) -> xcb_keysym_t {
        return column < columns && first + column < length ? symbols[first + column] : 0;
    };

    const bool second = (state >> 13 & 3) == 1 && at(2) != 0;
    const size_t base = second ? 2 : (state & kThirdLevel) != 0 && at(4) != 0 ? 4 : 0;
    const xcb_keysym_t plain = at(base);
    const xcb_keysym_t shifted = at(base + 1) ? at(base + 1) : plain;
    bool shift = (state & XCB_MOD_MASK_SHIFT) != 0;
    const bool isDigit = (state & kNumLock) != 0 && IsKeypad(shifted);
    if (isDigit || ((state & XCB_MOD_MASK_LOCK) != 0 && IsCapital(plain, shifted))) shift = !shift;
    return shift ? shifted : plain;
}

uint32_t Keyboard::FindCharacter(xcb_keysym_t symbol) const {
    if ((symbol >= 0x20 && symbol <= 0x7E) || (symbol >= 0xA0 && symbol <= 0xFF)) return symbol;
    constexpr uint32_t kLastCharacter = 0x10FFFF;
    if (symbol > kUnicode && symbol <= kUnicode + kLastCharacter) return symbol - kUnicode;
    return connection.call.characterOfKey ? connection.call.characterOfKey(symbol) : 0;
}

unsigned Keyboard::Translate(xcb_keycode_t code, uint16_t state) {
    const xcb_keysym_t symbol = FindSymbol(code, state);
    const auto* named = std::find_if(std::begin(kNamedKeys), std::end(kNamedKeys),
                                     [=](const SymbolKey& key) { return key.symbol == symbol; });
    if (named != std::end(kNamedKeys)) return named->key;
    if (symbol >= kKeypadCharacters && symbol < kLastKeypad)
        return '*' + (symbol - kKeypadCharacters);
    const uint32_t character = FindCharacter(symbol);
    return character < ' ' ? 0 : character;
}

}  // namespace norava::x11

#endif
