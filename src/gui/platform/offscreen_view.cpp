#include "gui/platform/offscreen_view.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace norava {

OffscreenView::OffscreenView(PlatformEvents& listener, CSize size, int scale)
    : events(listener), scaleFactor(scale) {
    OffscreenView::Resize(size);
}

void OffscreenView::Resize(CSize size) {
    stored = CSize(std::max(0, size.cx) * scaleFactor, std::max(0, size.cy) * scaleFactor);
    screen.assign(static_cast<size_t>(stored.cx) * static_cast<size_t>(stored.cy), 0u);
}

void OffscreenView::MoveMouse(CPoint to) {
    const CSize distance(to.x - mouse.x, to.y - mouse.y);
    if (IsPointerHidden()) {
        events.MouseMovedBy(distance, modifiers);  // and the pointer stays
    } else {
        mouse = to;
        events.MouseMoved(to, modifiers);
    }
}

void OffscreenView::PressMouse(int button, bool isDoubleClick) {
    events.MousePressed(mouse, button, modifiers, isDoubleClick);
}

void OffscreenView::ReleaseMouse(int button) {
    events.MouseReleased(mouse, button, modifiers);
}

void OffscreenView::Click(CPoint at, int button) {
    const std::shared_ptr<bool> stillOpen = alive;
    MoveMouse(at);
    if (*stillOpen) PressMouse(button);
    if (*stillOpen) ReleaseMouse(button);
}

void OffscreenView::Drag(CPoint from, CPoint to, int stepPixels) {
    const std::shared_ptr<bool> stillOpen = alive;
    MoveMouse(from);
    if (*stillOpen) PressMouse();
    const int step = std::max(1, stepPixels);
    for (CPoint at = from; *stillOpen && at != to;) {
        const CSize move(std::clamp(to.x - at.x, -step, step),
                         std::clamp(to.y - at.y, -step, step));
        at.Shift(move);
        MoveMouse({mouse.x + move.cx, mouse.y + move.cy});
    }
    if (*stillOpen) ReleaseMouse();
}

bool OffscreenView::TurnWheel(float up) {
    return events.MouseWheel(mouse, 0.0f, up, modifiers);
}

bool OffscreenView::PressKey(unsigned key) {
    const std::shared_ptr<bool> stillOpen = alive;
    const bool used = events.KeyPressed(key, modifiers);
    return (*stillOpen && events.KeyReleased(key, modifiers)) || used;
}

void OffscreenView::Tick(int times) {
    for (int i = 0; i < times; ++i)
        events.Tick();
}

uint32_t OffscreenView::GetPixel(int x, int y) const {
    if (!CRect({0, 0}, stored).IsPointInside({x, y})) return 0;
    return screen[static_cast<size_t>(y) * static_cast<size_t>(stored.cx) + static_cast<size_t>(x)];
}

std::vector<CRect> OffscreenView::TakePresented() {
    return std::exchange(presented, {});
}

void OffscreenView::Redraw(CRect part) {
    events.Paint(*this, part);
}

void OffscreenView::TrackMouse(bool on, bool hidePointer) {
    tracking = on;
    pointerHidden = hidePointer;
}

void OffscreenView::ShowPixels(const uint32_t* words, CSize size, CRect clip) {
    const CRect shown = clip.GetIntersection(CRect({0, 0}, stored));
    const auto index = [](int width, int x, int y) {
        return static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x);
    };
    for (int y = shown.top; y < shown.GetBottom(); ++y) {
        const uint32_t* row = words + index(size.cx, shown.left, size.cy - 1 - y);
        uint32_t* line = screen.data() + index(stored.cx, shown.left, y);
        for (int x = 0; x < shown.width; ++x)
            line[x] = row[x] & 0x00FFFFFFu;
    }
    presented.push_back(shown);
}

}  // namespace norava
