#ifdef __linux__

#include "gui/platform/x11_view.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace norava::x11 {

namespace {

constexpr int kLargestWindow = 32767;
constexpr uint32_t kEvents = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                             XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                             XCB_EVENT_MASK_POINTER_MOTION | XCB_EVENT_MASK_ENTER_WINDOW |
                             XCB_EVENT_MASK_LEAVE_WINDOW | XCB_EVENT_MASK_FOCUS_CHANGE;
constexpr uint32_t kKeyEvents = XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE;

CSize StoredSize(CSize size, int scale) {
    const auto side = [scale](int length) {
        return static_cast<int>(std::clamp<int64_t>(int64_t{length} * scale, 1, kLargestWindow));
    };
    return {side(size.cx), side(size.cy)};
}

}  // namespace

std::unique_ptr<View> View::Open(PlatformEvents& listener, xcb_window_t parent, CSize size,
                                 int scale) {
    std::unique_ptr<Connection> server = Connection::Open();
    if (!server) return nullptr;
    const xcb_window_t window = server->call.generate_id(server->raw);
    if (!Create(*server, window, parent, StoredSize(size, scale))) return nullptr;
    return std::unique_ptr<View>(
        new View(std::move(server), window, listener, parent, size, scale));
}

// Without a background the server clears nothing before we paint, and what is there already keeps
// its place when the size changes: nothing flickers.
bool View::Create(const Connection& server, xcb_window_t window, xcb_window_t parent,
                  CSize stored) {
    const WritingScope scope;
    const Library& call = server.call;
    const xcb_screen_t& screen = server.GetScreen();
    const PixelLayout& layout = server.GetLayout();
    // A window of another kind than its parent needs a border and a colour map of its own.
    const xcb_colormap_t colours = call.generate_id(server.raw);
    call.create_colormap(server.raw, XCB_COLORMAP_ALLOC_NONE, colours, screen.root, layout.visual);
    constexpr uint32_t kSet = XCB_CW_BACK_PIXMAP | XCB_CW_BORDER_PIXEL | XCB_CW_BIT_GRAVITY |
                              XCB_CW_EVENT_MASK | XCB_CW_COLORMAP;
    const uint32_t values[] = {XCB_BACK_PIXMAP_NONE, 0, XCB_GRAVITY_NORTH_WEST, kEvents, colours};
    const auto cookie = call.create_window_checked(
        server.raw, layout.depth, window, parent ? parent : screen.root, 0, 0,
        static_cast<uint16_t>(stored.cx), static_cast<uint16_t>(stored.cy), 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, layout.visual, kSet, values);
    const Owned<xcb_generic_error_t> error(call.request_check(server.raw, cookie));
    return !error && !server.HasFailed();
}

View::View(std::unique_ptr<Connection> server, xcb_window_t ownWindow, PlatformEvents& listener,
           xcb_window_t parentWindow, CSize viewSize, int scaleFactor)
    : events(listener),
      connection(std::move(server)),
      parent(parentWindow),
      window(ownWindow),
      scale(scaleFactor),
      stored(StoredSize(viewSize, scaleFactor)),
      picture(*connection, window),
      keyboard(*connection),
      pointer(*connection, window),
      drop(*connection, window, events) {
    const WritingScope scope;
    picture.Resize(stored);
    drop.Announce();
    if (parent) {
        // Version 0, to be mapped: hosts that look for it show the window then.
        const xcb_atom_t info = connection->GetAtoms().xembedInfo;
        connection->SetWords(window, info, info, {0, 1});
    } else {
        DescribeOwnWindow();
    }
    connection->call.map_window(connection->raw, window);
    connection->call.flush(connection->raw);
}

View::~View() {
    const WritingScope scope;
    pointer.Show();
    if (keyboardWanted) GiveFocusBack();
    if (window) connection->call.destroy_window(connection->raw, window);
}

void View::DescribeOwnWindow() const {
    const Atoms& atoms = connection->GetAtoms();
    constexpr std::string_view kClass("norava\0Norava\0", 14);
    connection->SetText(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, kClass);
    connection->SetWords(window, atoms.wmProtocols, XCB_ATOM_ATOM,
                         {atoms.wmDeleteWindow, atoms.netWmPing});
    connection->SetWords(window, atoms.netWmPid, XCB_ATOM_CARDINAL,
                         {static_cast<uint32_t>(getpid())});
    connection->SetWords(window, atoms.netWmWindowType, XCB_ATOM_ATOM,
                         {atoms.netWmWindowTypeNormal});
    FixSize();
    SelectEvents(true);
}

// The size is the program's: the same smallest and largest one.
void View::FixSize() const {
    constexpr uint32_t kSmallestAndLargest = 1u << 4 | 1u << 5;
    const auto width = static_cast<uint32_t>(stored.cx);
    const auto height = static_cast<uint32_t>(stored.cy);
    connection->SetWords(
        window, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS,
        {kSmallestAndLargest, 0, 0, 0, 0, width, height, width, height, 0, 0, 0, 0, 0, 0, 0, 0, 0});
}

// A window that asks for keys gets them even without the focus, when the mouse is over it. So a
// host's window is asked only while something wants them: the shortcuts of the host stay its own.
void View::SelectEvents(bool keys) const {
    const WritingScope scope;
    const uint32_t mask = kEvents | (keys ? kKeyEvents : 0u);
    connection->call.change_window_attributes(connection->raw, window, XCB_CW_EVENT_MASK, &mask);
}

void View::SetTitle(const char* title) {
    if (parent || !window) return;
    const Atoms& atoms = connection->GetAtoms();
    connection->SetText(window, XCB_ATOM_WM_NAME, atoms.utf8String, title);
    connection->SetText(window, atoms.netWmName, atoms.utf8String, title);
}

void View::Resize(CSize newSize) {
    const CSize newStored = StoredSize(newSize, scale);
    if (!window || newStored == stored) return;
    const WritingScope scope;
    stored = newStored;
    if (!parent) FixSize();
    const uint32_t sides[] = {static_cast<uint32_t>(stored.cx), static_cast<uint32_t>(stored.cy)};
    connection->call.configure_window(connection->raw, window,
                                      XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, sides);
    picture.Resize(stored);
}

void* View::GetNativeHandle() {
    return reinterpret_cast<void*>(uintptr_t{window});
}

void View::TrackMouse(bool on, bool hidePointer) {
    // A drag gets its events wherever the mouse is: the server sees to it while a button is down.
    if (on && hidePointer) {
        movementLeft = {};
        pointer.Hide(mouseOnScreen);
    } else {
        pointer.Show();
    }
}

void View::WantKeyboard(bool on) {
    if (on == keyboardWanted || !window) return;
    keyboardWanted = on;
    if (!parent) return;
    SelectEvents(on);
    if (on)
        TakeFocus();
    else
        GiveFocusBack();
}

void View::TakeFocus() {
    if (hasFocus) return;
    const WritingScope scope;
    const Library& call = connection->call;
    const Owned<xcb_get_input_focus_reply_t> reply(call.get_input_focus_reply(
        connection->raw, call.get_input_focus(connection->raw), nullptr));
    if (reply && reply->focus != window) focusBefore = reply->focus;
    call.set_input_focus(connection->raw, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
}

void View::GiveFocusBack() {
    const xcb_window_t before = std::exchange(focusBefore, 0);
    // Somebody else has taken it meanwhile: it is theirs.
    if (!parent || !before || !hasFocus) return;
    const WritingScope scope;
    connection->call.set_input_focus(connection->raw, XCB_INPUT_FOCUS_PARENT, before,
                                     XCB_CURRENT_TIME);
}

void View::RunEvents() {
    if (lost) return;
    while (const Event event = TakeEvent()) {
        Handle(*event);
        if (lost) return;
    }
    if (connection->HasFailed()) {
        LoseWindow();
        return;
    }
    if (ticks.TakeDue()) events.Tick();
    ShowDamage();
    connection->Flush();
}

void View::WaitForEvents() {
    if (lost) return;
    connection->Flush();
    // Reading answers may have put events into the queue, which no file descriptor tells.
    if (!next) next.reset(connection->call.poll_for_event(connection->raw));
    if (next || connection->HasFailed()) return;
    pollfd server{connection->call.get_file_descriptor(connection->raw), POLLIN, 0};
    poll(&server, 1, static_cast<int>(ticks.TimeLeft().count()));
}

void View::ShowDamage() {
    if (picture.IsBusy() || damage.IsEmpty() || !window) return;
    for (const CRect part : damage.Take())
        events.Paint(*this, part);
}

void View::ShowPixels(const uint32_t* words, CSize size, CRect clip) {
    picture.Show(words, size, clip);
}

void View::LoseWindow() {
    if (lost) return;
    lost = true;
    window = 0;
    events.ViewLost();
}

CPoint View::ToLogical(int x, int y) const {
    const auto floored = [this](int value) {
        return value >= 0 ? value / scale : -((-value + scale - 1) / scale);
    };
    return {floored(x), floored(y)};
}

}  // namespace norava::x11

namespace norava {

std::unique_ptr<PlatformView> OpenNativeView(PlatformEvents& events, void* parent, CSize size,
                                             int scale) {
    const auto window = static_cast<xcb_window_t>(reinterpret_cast<uintptr_t>(parent));
    return x11::View::Open(events, window, size, scale);
}

int GetNativeScale() {
    const auto server = x11::Connection::Open();
    return server ? server->GetScale() : 1;
}

}  // namespace norava

#endif
