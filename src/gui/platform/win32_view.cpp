#ifdef _WIN32

#include "gui/platform/win32_view.h"

#include <algorithm>
#include <cstdint>

#include "gui/platform/native_scale.h"

namespace norava::win32 {

namespace {

constexpr int64_t kLargest = 32767;
constexpr UINT_PTR kTimer = 1;
constexpr UINT kTimerMilliseconds = 15;  // the system rounds it to its own clock

HCURSOR Arrow() {
    return LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));
}

HINSTANCE ThisModule() {
    HMODULE module = nullptr;
    GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCWSTR>(&ThisModule), &module);
    return module;
}

// Each loaded copy of the module has a class of its own, which goes with the module.
ATOM WindowClass(WNDPROC receive) {
    static const ATOM registered = [receive] {
        const std::wstring name =
            L"NoravaWindow" + std::to_wstring(reinterpret_cast<uintptr_t>(&ThisModule));
        WNDCLASSEXW kind{};
        kind.cbSize = sizeof kind;
        kind.style = CS_DBLCLKS;
        kind.lpfnWndProc = receive;
        kind.hInstance = ThisModule();
        kind.hCursor = Arrow();
        kind.lpszClassName = name.c_str();
        return RegisterClassExW(&kind);  // no background: nothing flickers before we paint
    }();
    return registered;
}

CSize StoredSize(CSize size, int scale) {
    const auto side = [scale](int length) {
        return static_cast<int>(std::clamp<int64_t>(int64_t{length} * scale, 1, kLargest));
    };
    return {side(size.cx), side(size.cy)};
}

}  // namespace

std::unique_ptr<View> View::Open(PlatformEvents& listener, HWND parent, CSize size, int scale) {
    std::unique_ptr<View> view(new View(listener, parent, StoredSize(size, scale), scale));
    return view->Create() ? std::move(view) : nullptr;
}

View::View(PlatformEvents& listener, HWND parentWindow, CSize storedSize, int scaleFactor)
    : events(listener), parent(parentWindow), scale(scaleFactor), stored(storedSize) {}

bool View::Create() {
    const ATOM kind = WindowClass(&View::Receive);
    const DWORD style = parent ? WS_CHILD | WS_CLIPSIBLINGS
                               : WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX;
    const int place = parent ? 0 : CW_USEDEFAULT;
    window = CreateWindowExW(0, reinterpret_cast<LPCWSTR>(uintptr_t{kind}), L"Norava", style, place,
                             place, stored.cx, stored.cy, parent, nullptr, ThisModule(), nullptr);
    if (!window) return false;
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    const SIZE outer = OuterSize();
    SetWindowPos(window, nullptr, 0, 0, outer.cx, outer.cy,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    SetTimer(window, kTimer, kTimerMilliseconds, nullptr);
    oleStarted = SUCCEEDED(OleInitialize(nullptr));
    if (oleStarted) {
        drop = new DropTarget(events);
        RegisterDragDrop(window, drop);
    }
    ShowWindow(window, parent ? SW_SHOWNA : SW_SHOW);
    return true;
}

View::~View() {
    *alive = false;
    if (pointerHidden) TrackMouse(false, false);
    if (window) {
        if (keyboardWanted) WantKeyboard(false);
        KillTimer(window, kTimer);
        RevokeDragDrop(window);
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        DestroyWindow(window);
    }
    if (drop) {
        drop->Forget();
        drop->Release();
    }
    if (oleStarted) OleUninitialize();
}

SIZE View::OuterSize() const {
    RECT rect{0, 0, stored.cx, stored.cy};
    AdjustWindowRectEx(&rect, static_cast<DWORD>(GetWindowLongPtrW(window, GWL_STYLE)), FALSE,
                       static_cast<DWORD>(GetWindowLongPtrW(window, GWL_EXSTYLE)));
    return {rect.right - rect.left, rect.bottom - rect.top};
}

void View::Redraw(CRect part) {
    if (!window || part.IsEmpty()) return;
    const CRect whole({0, 0}, CSize(stored.cx / scale, stored.cy / scale));
    const CRect shown = part.GetIntersection(whole);
    const RECT rect{shown.left * scale, shown.top * scale, shown.GetRight() * scale,
                    shown.GetBottom() * scale};
    if (!shown.IsEmpty()) InvalidateRect(window, &rect, FALSE);
}

void View::Resize(CSize newSize) {
    stored = StoredSize(newSize, scale);
    if (!window) return;
    const SIZE outer = OuterSize();
    SetWindowPos(window, nullptr, 0, 0, outer.cx, outer.cy,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void View::SetTitle(const char* title) {
    if (window && !parent) SetWindowTextW(window, Wide(title).c_str());
}

void View::TrackMouse(bool on, bool hidePointer) {
    // The system's capture is taken with the button.
    const bool hide = on && hidePointer;
    if (hide == pointerHidden) return;
    pointerHidden = hide;
    if (hide) {
        GetCursorPos(&pointerStart);
        pointerLast = pointerStart;
        movementLeft = {};
        SetCursor(nullptr);
    } else {
        SetCursorPos(pointerStart.x, pointerStart.y);
        SetCursor(Arrow());
    }
}

void View::WantKeyboard(bool on) {
    if (on == keyboardWanted || !window) return;
    keyboardWanted = on;
    if (!parent) return;
    if (on) {
        const HWND before = SetFocus(window);
        if (before != window) focusBefore = before;
    } else if (GetFocus() == window) {
        SetFocus(focusBefore && IsWindow(focusBefore) ? focusBefore : parent);
        focusBefore = nullptr;
    }
}

void View::RunEvents() {
    // A host brings the messages by itself.
    if (parent) return;
    MSG message;
    const std::shared_ptr<bool> stillThere = alive;
    while (*stillThere && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

void View::WaitForEvents() {
    WaitMessage();  // the timer is a message too
}

void View::Paint() {
    PAINTSTRUCT painting;
    paintingOn = BeginPaint(window, &painting);
    const RECT& r = painting.rcPaint;
    const CPoint from = ToLogical({static_cast<int>(r.left), static_cast<int>(r.top)});
    const CPoint last = ToLogical({static_cast<int>(r.right) - 1, static_cast<int>(r.bottom) - 1});
    events.Paint(*this, {from.x, from.y, last.x - from.x + 1, last.y - from.y + 1});
    paintingOn = nullptr;
    EndPaint(window, &painting);
}

// Rows from the bottom, as the raster has them, and its order of the colours by their masks.
void View::ShowPixels(const uint32_t* words, CSize size, CRect clip) {
    if (!paintingOn) return;
    struct {
        BITMAPINFOHEADER header;
        DWORD masks[3];
    } info{};
    info.header.biSize = sizeof info.header;
    info.header.biWidth = size.cx;
    info.header.biHeight = size.cy;
    info.header.biPlanes = 1;
    info.header.biBitCount = 32;
    info.header.biCompression = BI_BITFIELDS;
    info.masks[0] = 0x000000FFu;
    info.masks[1] = 0x0000FF00u;
    info.masks[2] = 0x00FF0000u;
    SetDIBitsToDevice(paintingOn, clip.left, clip.top, static_cast<DWORD>(clip.width),
                      static_cast<DWORD>(clip.height), clip.left, size.cy - clip.GetBottom(), 0,
                      static_cast<UINT>(size.cy), words, reinterpret_cast<BITMAPINFO*>(&info),
                      DIB_RGB_COLORS);
}

CPoint View::ToLogical(CPoint at) const {
    const auto floored = [this](int value) {
        return value >= 0 ? value / scale : -((-value + scale - 1) / scale);
    };
    return {floored(at.x), floored(at.y)};
}

}  // namespace norava::win32

namespace norava {

std::unique_ptr<PlatformView> OpenNativeView(PlatformEvents& events, void* parent, CSize size,
                                             int scale) {
    return win32::View::Open(events, static_cast<HWND>(parent), size, scale);
}

// The host says how it wants its windows measured; what it is told counts for ours inside.
int GetNativeScale() {
    const HDC screen = GetDC(nullptr);
    if (!screen) return 1;
    const int density = GetDeviceCaps(screen, LOGPIXELSY);
    const int rows = GetDeviceCaps(screen, VERTRES);
    ReleaseDC(nullptr, screen);
    return ChooseScale(density, rows);
}

}  // namespace norava

#endif
