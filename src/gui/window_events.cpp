#include "gui/window_events.h"

#include "gui/dispatch.h"
#include "gui/window_port.h"

namespace norava {

namespace {

constexpr int kMaxButtons = 32;

unsigned BitOf(int button) {
    return button >= 0 && button < kMaxButtons ? 1u << static_cast<unsigned>(button) : 0u;
}

}  // namespace

bool CWindowPort::IsMouseButtonDown(int button) const {
    return (buttonsDown & BitOf(button)) != 0;
}

void WindowEvents::SetMouse(CWindowPort& port, CPoint to, Modifiers keys) {
    const CPoint from = port.mousePosition;
    port.mouseDelta =
        CSize(SaturatedInt(int64_t{to.x} - from.x), SaturatedInt(int64_t{to.y} - from.y));
    port.mousePosition = to;
    port.modifiers = keys;
}

template <typename Use>
bool WindowEvents::WithPort(const Use& use) {
    // A view that is closed but still running its events is not heard.
    if (!state.port || !state.port->IsOpen()) return false;
    const Dispatch dispatch(state);
    return use(*state.port, dispatch);
}

void WindowEvents::MouseMoved(CPoint to, Modifiers keys) {
    WithPort([=](CWindowPort& port, const Dispatch&) {
        SetMouse(port, to, keys);
        return port.ProcessMouseMove();
    });
}

void WindowEvents::MouseMovedBy(CSize distance, Modifiers keys) {
    WithPort([=](CWindowPort& port, const Dispatch&) {
        port.mouseDelta = distance;
        port.modifiers = keys;
        return port.ProcessMouseMove();
    });
}

void WindowEvents::MousePressed(CPoint at, int button, Modifiers keys, bool isDoubleClick) {
    WithPort([=](CWindowPort& port, const Dispatch& dispatch) {
        SetMouse(port, at, keys);
        port.mouseButton = button;
        port.buttonsDown |= BitOf(button);
        // Where a double click means nothing it is simply the second click.
        if (isDoubleClick && port.ProcessMouseDoubleClick()) return true;
        return dispatch.IsPortAlive() && port.ProcessMouseDown();
    });
}

void WindowEvents::MouseReleased(CPoint at, int button, Modifiers keys) {
    WithPort([=](CWindowPort& port, const Dispatch&) {
        SetMouse(port, at, keys);
        port.mouseButton = button;
        port.buttonsDown &= ~BitOf(button);
        return port.ProcessMouseUp();
    });
}

bool WindowEvents::MouseWheel(CPoint at, float right, float up, Modifiers keys) {
    return WithPort([=](CWindowPort& port, const Dispatch&) {
        SetMouse(port, at, keys);
        return port.ProcessMouseWheel(right, up);
    });
}

bool WindowEvents::KeyPressed(unsigned key, Modifiers keys) {
    return WithPort([=](CWindowPort& port, const Dispatch&) {
        port.modifiers = keys;
        return port.ProcessKeyDown(key);
    });
}

bool WindowEvents::KeyReleased(unsigned key, Modifiers keys) {
    return WithPort([=](CWindowPort& port, const Dispatch&) {
        port.modifiers = keys;
        return port.ProcessKeyUp(key);
    });
}

void WindowEvents::FocusChanged(bool hasFocus) {
    WithPort([=](CWindowPort& port, const Dispatch&) {
        hasFocus ? port.TookFocus() : port.LostFocus();
        return true;
    });
}

void WindowEvents::MouseTakenAway() {
    WithPort([](CWindowPort& port, const Dispatch&) {
        port.buttonsDown = 0;
        port.CancelTracking();
        return true;
    });
}

bool WindowEvents::FileEntered(const char* path) {
    return WithPort([=](CWindowPort& port, const Dispatch&) { return port.DragEntered(path); });
}

void WindowEvents::FileLeft(const char* path) {
    WithPort([=](CWindowPort& port, const Dispatch&) {
        port.DragLeft(path);
        return true;
    });
}

bool WindowEvents::FileDropped(const char* path) {
    return WithPort([=](CWindowPort& port, const Dispatch&) { return port.DropFile(path); });
}

void WindowEvents::Tick() {
    WithPort([](CWindowPort& port, const Dispatch&) { return port.TimerEvent(); });
}

void WindowEvents::Paint(PixelTarget& target, CRect part) {
    if (state.port) state.port->buffer.Present(&target, part, part.GetLeftTop());
}

void WindowEvents::CloseRequested() {
    WithPort([](CWindowPort& port, const Dispatch&) {
        port.Close();
        return true;
    });
}

void WindowEvents::ViewLost() {
    CloseRequested();
}

}  // namespace norava
