#ifdef __linux__

#include <cstdlib>
#include <utility>

#include "gui/platform/x11_view.h"

namespace norava::x11 {

namespace {

constexpr uint8_t kSentByClient = 0x80;

template <typename T>
const T& As(const xcb_generic_event_t& event) {
    return reinterpret_cast<const T&>(event);
}

uint8_t KindOf(const xcb_generic_event_t& event) {
    return static_cast<uint8_t>(event.response_type & ~kSentByClient);
}

bool IsMotion(const xcb_generic_event_t* event) {
    return event && KindOf(*event) == XCB_MOTION_NOTIFY;
}

// A key that is held down comes as pairs of up and down at the same time.
bool IsRepeat(const xcb_generic_event_t& released, const xcb_generic_event_t* following) {
    if (!following || KindOf(*following) != XCB_KEY_PRESS) return false;
    const auto& up = As<xcb_key_release_event_t>(released);
    const auto& down = As<xcb_key_press_event_t>(*following);
    return up.detail == down.detail && up.time == down.time;
}

// -1 for buttons that mean nothing here.
int ButtonOf(xcb_button_t number) {
    switch (number) {
        case 1:
            return kMouseLeft;
        case 2:
            return kMouseMiddle;
        case 3:
            return kMouseRight;
        default:
            return -1;
    }
}

// The four directions of the wheel come as buttons.
CSize WheelOf(xcb_button_t number) {
    switch (number) {
        case 4:
            return {0, 1};
        case 5:
            return {0, -1};
        case 6:
            return {-1, 0};
        case 7:
            return {1, 0};
        default:
            return {0, 0};
    }
}

unsigned BitOf(int button) {
    return 1u << static_cast<unsigned>(button);
}

}  // namespace

Event View::TakeEvent() {
    Event event = std::move(next);
    if (!event) event.reset(connection->call.poll_for_event(connection->raw));
    if (!event) return nullptr;
    const auto look = [this] {
        next.reset(connection->call.poll_for_queued_event(connection->raw));
    };
    look();
    // Of movements that wait only where they lead to counts, except that places from before the
    // pointer was moved by us must not be mixed with those after.
    while (IsMotion(event.get()) && IsMotion(next.get()) && !pointer.IsHidden()) {
        event = std::move(next);
        look();
    }
    if (KindOf(*event) == XCB_KEY_RELEASE && IsRepeat(*event, next.get())) event = std::move(next);
    return event;
}

void View::Handle(const xcb_generic_event_t& event) {
    const bool sent = (event.response_type & kSentByClient) != 0;
    if (const Picture::Event answer = picture.Handle(event); answer != Picture::Event::other) {
        if (answer == Picture::Event::failed) damage.Add(CRect({0, 0}, ToLogicalSize()));
        return;
    }
    if (keyboard.Handle(event)) return;
    switch (KindOf(event)) {
        case XCB_BUTTON_PRESS:
            MousePressed(As<xcb_button_press_event_t>(event));
            break;
        case XCB_BUTTON_RELEASE:
            MouseReleased(As<xcb_button_release_event_t>(event));
            break;
        case XCB_MOTION_NOTIFY:
            MouseMoved(As<xcb_motion_notify_event_t>(event), event.full_sequence);
            break;
        case XCB_ENTER_NOTIFY:
            MouseCrossed(As<xcb_enter_notify_event_t>(event), true);
            break;
        case XCB_LEAVE_NOTIFY:
            MouseCrossed(As<xcb_enter_notify_event_t>(event), false);
            break;
        case XCB_KEY_PRESS:
            KeyPressed(As<xcb_key_press_event_t>(event), sent);
            break;
        case XCB_KEY_RELEASE:
            KeyReleased(As<xcb_key_release_event_t>(event), sent);
            break;
        case XCB_FOCUS_IN:
            FocusChanged(As<xcb_focus_in_event_t>(event), true);
            break;
        case XCB_FOCUS_OUT:
            FocusChanged(As<xcb_focus_in_event_t>(event), false);
            break;
        case XCB_CLIENT_MESSAGE:
            HandleMessage(As<xcb_client_message_event_t>(event));
            break;
        case XCB_SELECTION_NOTIFY:
            drop.Handle(As<xcb_selection_notify_event_t>(event));
            break;
        default:
            HandleStructure(event);
            break;
    }
}

void View::HandleStructure(const xcb_generic_event_t& event) {
    switch (KindOf(event)) {
        case XCB_EXPOSE: {
            const auto& exposed = As<xcb_expose_event_t>(event);
            const CPoint from = ToLogical(exposed.x, exposed.y);
            const CPoint last =
                ToLogical(exposed.x + exposed.width - 1, exposed.y + exposed.height - 1);
            damage.Add({from.x, from.y, last.x - from.x + 1, last.y - from.y + 1});
            break;
        }
        case XCB_MAP_NOTIFY:
            damage.Add(CRect({0, 0}, ToLogicalSize()));
            break;
        case XCB_UNMAP_NOTIFY:
            if (std::exchange(buttonsDown, 0u) != 0) events.MouseTakenAway();
            break;
        case XCB_DESTROY_NOTIFY:
            // Also tells of windows inside this one.
            if (As<xcb_destroy_notify_event_t>(event).window == window) LoseWindow();
            break;
        default:
            break;
    }
}

void View::MousePressed(const xcb_button_press_event_t& event) {
    constexpr xcb_timestamp_t kDoubleClickMilliseconds = 400;
    constexpr int kDoubleClickPixels = 4;
    const Modifiers keys = ModifiersOf(event.state);
    if (!pointer.IsHidden()) {
        mouse = ToLogical(event.event_x, event.event_y);
        mouseOnScreen = {event.root_x, event.root_y};
    }
    if (const CSize wheel = WheelOf(event.detail); wheel != CSize()) {
        events.MouseWheel(mouse, static_cast<float>(wheel.cx), static_cast<float>(wheel.cy), keys);
        return;
    }
    const int button = ButtonOf(event.detail);
    if (button < 0) return;
    buttonsDown |= BitOf(button);
    const bool isDouble = lastPress.button == button &&
                          event.time - lastPress.time <= kDoubleClickMilliseconds &&
                          std::abs(event.event_x - lastPress.at.x) <= kDoubleClickPixels &&
                          std::abs(event.event_y - lastPress.at.y) <= kDoubleClickPixels;
    // A third press begins anew.
    lastPress = {isDouble ? -1 : button, {event.event_x, event.event_y}, event.time};
    events.MousePressed(mouse, button, keys, isDouble);
    // The host may have taken the keyboard since the text field that wants it was opened.
    if (parent && keyboardWanted && !lost) TakeFocus();
}

void View::MouseReleased(const xcb_button_release_event_t& event) {
    const int button = ButtonOf(event.detail);
    if (button < 0) return;
    if (!pointer.IsHidden()) mouse = ToLogical(event.event_x, event.event_y);
    buttonsDown &= ~BitOf(button);
    events.MouseReleased(mouse, button, ModifiersOf(event.state));
}

void View::MouseMoved(const xcb_motion_notify_event_t& event, uint32_t sequence) {
    if (!pointer.IsHidden() && pointer.IsOutdated(sequence)) return;
    // A release that went to somebody who held the mouse for a moment, a screen lock for instance.
    const bool leftIsUp = (event.state & XCB_BUTTON_MASK_1) == 0;
    if (leftIsUp && (buttonsDown & BitOf(kMouseLeft)) != 0) {
        buttonsDown = 0;
        events.MouseTakenAway();
    }
    const CPoint onScreen(event.root_x, event.root_y);
    const Modifiers keys = ModifiersOf(event.state);
    if (!pointer.IsHidden()) {
        mouseOnScreen = onScreen;
        mouse = ToLogical(event.event_x, event.event_y);
        events.MouseMoved(mouse, keys);
        return;
    }
    const CSize movement = pointer.Follow(onScreen, sequence);
    const CSize sum(movementLeft.cx + movement.cx, movementLeft.cy + movement.cy);
    const CSize whole(sum.cx / scale, sum.cy / scale);
    movementLeft = CSize(sum.cx - whole.cx * scale, sum.cy - whole.cy * scale);
    if (whole != CSize()) events.MouseMovedBy(whole, keys);
}

void View::MouseCrossed(const xcb_enter_notify_event_t& event, bool entered) {
    if (event.mode != XCB_NOTIFY_MODE_NORMAL || pointer.IsHidden()) return;
    const CPoint at = ToLogical(event.event_x, event.event_y);
    // Somebody's window may have come up between: then the mouse has left without moving.
    const bool inside = CRect({0, 0}, ToLogicalSize()).IsPointInside(at);
    mouse = !entered && inside && buttonsDown == 0 ? CPoint(-1, -1) : at;
    mouseOnScreen = {event.root_x, event.root_y};
    events.MouseMoved(mouse, ModifiersOf(event.state));
}

void View::KeyPressed(const xcb_key_press_event_t& event, bool sentByHost) {
    const unsigned key = keyboard.Translate(event.detail, event.state);
    const bool used = key != 0 && events.KeyPressed(key, ModifiersOf(event.state));
    // What the host has sent it does not want back.
    if (!used && !sentByHost && !lost) PassToHost(event);
}

void View::KeyReleased(const xcb_key_release_event_t& event, bool sentByHost) {
    const unsigned key = keyboard.Translate(event.detail, event.state);
    const bool used = key != 0 && events.KeyReleased(key, ModifiersOf(event.state));
    if (!used && !sentByHost && !lost) PassToHost(event);
}

void View::PassToHost(const xcb_key_press_event_t& event) const {
    if (!parent || !window) return;
    const WritingScope scope;
    xcb_key_press_event_t passed = event;
    passed.event = parent;
    passed.child = window;
    const bool isPress = (event.response_type & ~kSentByClient) == XCB_KEY_PRESS;
    connection->call.send_event(connection->raw, 1, parent,
                                isPress ? XCB_EVENT_MASK_KEY_PRESS : XCB_EVENT_MASK_KEY_RELEASE,
                                reinterpret_cast<const char*>(&passed));
}

void View::FocusChanged(const xcb_focus_in_event_t& event, bool hasFocusNow) {
    const bool passing = event.mode == XCB_NOTIFY_MODE_GRAB || event.mode == XCB_NOTIFY_MODE_UNGRAB;
    if (passing || event.detail == XCB_NOTIFY_DETAIL_POINTER || hasFocus == hasFocusNow) return;
    hasFocus = hasFocusNow;
    events.FocusChanged(hasFocus);
}

void View::HandleMessage(const xcb_client_message_event_t& message) {
    const Atoms& atoms = connection->GetAtoms();
    if (drop.Handle(message) || parent || message.type != atoms.wmProtocols) return;
    const uint32_t protocol = message.data.data32[0];
    if (protocol == atoms.wmDeleteWindow) {
        events.CloseRequested();
    } else if (protocol == atoms.netWmPing) {
        const WritingScope scope;
        xcb_client_message_event_t answer = message;
        answer.window = connection->GetScreen().root;
        connection->call.send_event(
            connection->raw, 0, answer.window,
            XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
            reinterpret_cast<const char*>(&answer));
    }
}

}  // namespace norava::x11

#endif
