#ifdef _WIN32

#include <windowsx.h>

#include <cstdlib>
#include <cwctype>
#include <utility>

#include "gui/platform/win32_view.h"

namespace norava::win32 {

namespace {

constexpr UINT kRunPosted = WM_APP + 1;
constexpr int kRoamPixels = 100;
constexpr int kEdgePixels = 64;

CPoint PointOf(LPARAM value) {
    return {GET_X_LPARAM(value), GET_Y_LPARAM(value)};
}

bool IsDown(int virtualKey) {
    return (static_cast<unsigned>(GetKeyState(virtualKey)) & 0x8000u) != 0;
}

// 0 for keys that type a character, or mean nothing here.
unsigned NamedKey(WPARAM virtualKey) {
    switch (virtualKey) {
        case VK_BACK:
            return kKeyBackspace;
        case VK_TAB:
            return kKeyTab;
        case VK_RETURN:
            return kKeyEnter;
        case VK_ESCAPE:
            return kKeyEscape;
        case VK_DELETE:
            return kKeyDelete;
        case VK_LEFT:
            return kKeyLeft;
        case VK_RIGHT:
            return kKeyRight;
        case VK_UP:
            return kKeyUp;
        case VK_DOWN:
            return kKeyDown;
        case VK_HOME:
            return kKeyHome;
        case VK_END:
            return kKeyEnd;
        case VK_PRIOR:
            return kKeyPageUp;
        case VK_NEXT:
            return kKeyPageDown;
        default:
            return 0;
    }
}

// With CTRL a key types no letter, so it is asked which one it carries.
unsigned KeyOf(WPARAM virtualKey) {
    if (const unsigned named = NamedKey(virtualKey)) return named;
    if (!IsDown(VK_CONTROL) || IsDown(VK_MENU)) return 0;
    const UINT character = MapVirtualKeyW(static_cast<UINT>(virtualKey), MAPVK_VK_TO_CHAR);
    const bool dead = (character & 0x80000000u) != 0;
    return dead ? 0
                : static_cast<unsigned>(std::towlower(static_cast<wint_t>(character & 0xFFFFu)));
}

// Whether a hidden pointer has gone far from where it began, or near an edge of that screen, which
// would stop it.
bool HasRoamed(POINT start, POINT now) {
    if (now.x == start.x && now.y == start.y) return false;
    MONITORINFO screen{};
    screen.cbSize = sizeof screen;
    GetMonitorInfoW(MonitorFromPoint(start, MONITOR_DEFAULTTONEAREST), &screen);
    InflateRect(&screen.rcMonitor, -kEdgePixels, -kEdgePixels);
    return std::abs(now.x - start.x) > kRoamPixels || std::abs(now.y - start.y) > kRoamPixels ||
           PtInRect(&screen.rcMonitor, now) == 0;
}

}  // namespace

Modifiers ModifiersNow() {
    return {.control = IsDown(VK_CONTROL), .shift = IsDown(VK_SHIFT), .alt = IsDown(VK_MENU)};
}

LRESULT CALLBACK View::Receive(HWND window, UINT message, WPARAM word, LPARAM value) {
    auto* const view = reinterpret_cast<View*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (view)
        if (const std::optional<LRESULT> answer = view->Handle(message, word, value))
            return *answer;
    return DefWindowProcW(window, message, word, value);
}

std::optional<LRESULT> View::Handle(UINT message, WPARAM word, LPARAM value) {
    switch (message) {
        case WM_PAINT:
            Paint();
            return 0;
        case WM_ERASEBKGND:
            return 1;
        case WM_TIMER:
            if (ticks.TakeDue()) events.Tick();
            return 0;
        case WM_SETCURSOR:
            if (!pointerHidden) return std::nullopt;
            SetCursor(nullptr);
            return 1;
        case WM_CAPTURECHANGED:
            // Given back with the last button, or taken away by somebody else.
            if (std::exchange(buttonsDown, 0u) != 0) events.MouseTakenAway();
            return 0;
        case WM_SETFOCUS:
            events.FocusChanged(true);
            return 0;
        case WM_KILLFOCUS:
            events.FocusChanged(false);
            return 0;
        case WM_GETDLGCODE:
            return keyboardWanted ? DLGC_WANTALLKEYS | DLGC_WANTCHARS : DLGC_STATIC;
        case WM_CLOSE:
            events.CloseRequested();
            return 0;
        case WM_NCDESTROY:
            // With the host's window: this one is not ours to destroy any more.
            SetWindowLongPtrW(window, GWLP_USERDATA, 0);
            window = nullptr;
            events.ViewLost();
            return 0;
        case kRunPosted:
            RunPosted();
            return 0;
        default:
            break;
    }
    if (message >= WM_MOUSEFIRST && message <= WM_MOUSELAST)
        return HandleMouse(message, word, value);
    if (message == WM_MOUSELEAVE) {
        mouseIsInside = false;
        if (buttonsDown == 0) MoveMouse({-1, -1});
        return 0;
    }
    return HandleKey(message, word, value);
}

std::optional<LRESULT> View::HandleMouse(UINT message, WPARAM word, LPARAM value) {
    const CPoint at = ToLogical(PointOf(value));
    switch (message) {
        case WM_MOUSEMOVE:
            if (!std::exchange(mouseIsInside, true)) {
                TRACKMOUSEEVENT leave{sizeof leave, TME_LEAVE, window, 0};
                TrackMouseEvent(&leave);
            }
            pointerHidden ? FollowHiddenPointer() : MoveMouse(at);
            return 0;
        case WM_LBUTTONDOWN:
            Press(kMouseLeft, at, false);
            return 0;
        case WM_LBUTTONDBLCLK:
            Press(kMouseLeft, at, true);
            return 0;
        case WM_RBUTTONDOWN:
            Press(kMouseRight, at, false);
            return 0;
        case WM_RBUTTONDBLCLK:
            Press(kMouseRight, at, true);
            return 0;
        case WM_MBUTTONDOWN:
            Press(kMouseMiddle, at, false);
            return 0;
        case WM_MBUTTONDBLCLK:
            Press(kMouseMiddle, at, true);
            return 0;
        case WM_LBUTTONUP:
            Release(kMouseLeft, at);
            return 0;
        case WM_RBUTTONUP:
            Release(kMouseRight, at);
            return 0;
        case WM_MBUTTONUP:
            Release(kMouseMiddle, at);
            return 0;
        case WM_MOUSEWHEEL:
        case WM_MOUSEHWHEEL: {
            // Where the wheel is turned comes in pixels of the screen.
            POINT place{GET_X_LPARAM(value), GET_Y_LPARAM(value)};
            ScreenToClient(window, &place);
            const float notches =
                static_cast<float>(GET_WHEEL_DELTA_WPARAM(word)) / float{WHEEL_DELTA};
            const bool sideways = message == WM_MOUSEHWHEEL;
            const CPoint to = ToLogical({static_cast<int>(place.x), static_cast<int>(place.y)});
            const bool used = events.MouseWheel(to, sideways ? notches : 0.0f,
                                                sideways ? 0.0f : notches, ModifiersNow());
            return used ? std::optional<LRESULT>(0) : std::nullopt;
        }
        default:
            return std::nullopt;
    }
}

void View::Press(int button, CPoint at, bool isDouble) {
    if (buttonsDown == 0) SetCapture(window);
    buttonsDown |= 1u << static_cast<unsigned>(button);
    if (!pointerHidden) mouse = at;
    const std::shared_ptr<bool> stillThere = alive;
    events.MousePressed(mouse, button, ModifiersNow(), isDouble);
    // The host may have taken the keyboard since the text field that wants it was opened.
    if (*stillThere && window && parent && keyboardWanted && GetFocus() != window) SetFocus(window);
}

void View::Release(int button, CPoint at) {
    if (!pointerHidden) mouse = at;
    buttonsDown &= ~(1u << static_cast<unsigned>(button));
    if (buttonsDown == 0 && GetCapture() == window) ReleaseCapture();
    events.MouseReleased(mouse, button, ModifiersNow());
}

void View::MoveMouse(CPoint at) {
    mouse = at;
    events.MouseMoved(at, ModifiersNow());
}

// The system tells where the pointer is when it is asked, so no old places come after it was put
// back.
void View::FollowHiddenPointer() {
    POINT now;
    if (!GetCursorPos(&now)) return;
    const CSize sum(movementLeft.cx + static_cast<int>(now.x - pointerLast.x),
                    movementLeft.cy + static_cast<int>(now.y - pointerLast.y));
    const CSize whole(sum.cx / scale, sum.cy / scale);
    movementLeft = CSize(sum.cx - whole.cx * scale, sum.cy - whole.cy * scale);
    pointerLast = now;
    if (HasRoamed(pointerStart, now) && SetCursorPos(pointerStart.x, pointerStart.y))
        pointerLast = pointerStart;
    if (whole != CSize()) events.MouseMovedBy(whole, ModifiersNow());
}

std::optional<LRESULT> View::HandleKey(UINT message, WPARAM word, LPARAM value) {
    const bool down = message == WM_KEYDOWN || message == WM_SYSKEYDOWN;
    const bool up = message == WM_KEYUP || message == WM_SYSKEYUP;
    if (message == WM_CHAR) return TypeCharacter(static_cast<wchar_t>(word), value);
    if (!down && !up) return std::nullopt;
    const HWND host = parent;
    const unsigned key = KeyOf(word);
    const bool typesText =
        key == 0 && MapVirtualKeyW(static_cast<UINT>(word), MAPVK_VK_TO_CHAR) != 0;
    if (typesText) return std::nullopt;  // comes as a character
    const bool used = key != 0 && (down ? events.KeyPressed(key, ModifiersNow())
                                        : events.KeyReleased(key, ModifiersNow()));
    if (used) return 0;
    if (host) PostMessageW(host, message, word, value);
    return std::nullopt;
}

LRESULT View::TypeCharacter(wchar_t unit, LPARAM value) {
    constexpr unsigned kFirstText = 0x20;
    auto character = static_cast<unsigned>(unit);
    if (IS_HIGH_SURROGATE(unit)) {
        firstHalf = unit;
        return 0;
    }
    if (IS_LOW_SURROGATE(unit)) {
        const unsigned high = std::exchange(firstHalf, L'\0');
        if (high == 0) return 0;
        character = 0x10000u + ((high - 0xD800u) << 10) + (character - 0xDC00u);
    }
    // Enter, Escape and those with CTRL came as keys.
    if (character < kFirstText || character == kKeyDelete) return 0;
    const HWND host = parent;
    const std::shared_ptr<bool> stillThere = alive;
    const bool used = events.KeyPressed(character, ModifiersNow());
    if (used && *stillThere) events.KeyReleased(character, ModifiersNow());
    if (!used && host) PostMessageW(host, WM_CHAR, static_cast<WPARAM>(unit), value);
    return 0;
}

void View::Post(std::function<void()> action) {
    posted = std::move(action);
    PostMessageW(window, kRunPosted, 0, 0);
}

void View::RunPosted() {
    const std::function<void()> action = std::exchange(posted, nullptr);
    if (action) action();
}

}  // namespace norava::win32

#endif
