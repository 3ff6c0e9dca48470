#ifdef __linux__

#include "gui/platform/x11_hidden_pointer.h"

#include <cstdlib>

namespace norava::x11 {

namespace {

// The pointer is put back only when it has to be: tablets and remote screens report places, not
// movements, and for them it would jump.
constexpr int kRoamPixels = 300;
// At the edge of the screen movements would be lost, and the host may be slow to let us look.
constexpr int kEdgePixels = 64;

}  // namespace

xcb_cursor_t HiddenPointer::GetNoCursor() {
    if (noCursor) return noCursor;
    const Library& call = connection.call;
    const xcb_pixmap_t empty = call.generate_id(connection.raw);
    // One pixel whose mask leaves it out. What a new pixmap holds is not said anywhere, so draw.
    call.create_pixmap(connection.raw, 1, empty, window, 1, 1);
    const xcb_gcontext_t context = call.generate_id(connection.raw);
    constexpr uint32_t kBackground = 0;
    call.create_gc(connection.raw, context, empty, XCB_GC_FOREGROUND, &kBackground);
    constexpr xcb_rectangle_t kWhole{0, 0, 1, 1};
    call.poly_fill_rectangle(connection.raw, empty, context, 1, &kWhole);
    noCursor = call.generate_id(connection.raw);
    call.create_cursor(connection.raw, noCursor, empty, empty, 0, 0, 0, 0, 0, 0, 0, 0);
    call.free_gc(connection.raw, context);
    call.free_pixmap(connection.raw, empty);
    return noCursor;
}

void HiddenPointer::Hide(CPoint pointer) {
    if (hidden) return;
    const WritingScope scope;
    const Library& call = connection.call;
    hidden = true;
    start = last = pointer;
    putBack.reset();
    constexpr uint16_t kEvents =
        XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION;
    // Where somebody else holds the pointer this fails: then it just stays visible.
    const auto cookie =
        call.grab_pointer(connection.raw, 0, window, kEvents, XCB_GRAB_MODE_ASYNC,
                          XCB_GRAB_MODE_ASYNC, XCB_NONE, GetNoCursor(), XCB_CURRENT_TIME);
    call.discard_reply(connection.raw, cookie.sequence);
}

void HiddenPointer::Show() {
    if (!hidden) return;
    hidden = false;
    PutBack();
    const WritingScope scope;
    connection.call.ungrab_pointer(connection.raw, XCB_CURRENT_TIME);
}

void HiddenPointer::PutBack() {
    const WritingScope scope;
    const auto cookie = connection.call.warp_pointer(
        connection.raw, XCB_NONE, connection.GetScreen().root, 0, 0, 0, 0,
        static_cast<int16_t>(start.x), static_cast<int16_t>(start.y));
    putBack = cookie.sequence;
}

bool HiddenPointer::IsOutdated(uint32_t sequence) {
    if (!putBack) return false;
    if (static_cast<int32_t>(sequence - *putBack) < 0) return true;
    putBack.reset();  // the numbers come round again one day
    return false;
}

CSize HiddenPointer::Follow(CPoint pointer, uint32_t sequence) {
    // Movements that were on their way count as well, from where the pointer was then.
    const bool wasPutBack = putBack.has_value();
    const bool outdated = IsOutdated(sequence);
    if (wasPutBack && !outdated) last = start;
    const CSize movement(pointer.x - last.x, pointer.y - last.y);
    last = pointer;
    const xcb_screen_t& screen = connection.GetScreen();
    const CRect free(kEdgePixels, kEdgePixels, screen.width_in_pixels - 2 * kEdgePixels,
                     screen.height_in_pixels - 2 * kEdgePixels);
    const bool farAway =
        std::abs(pointer.x - start.x) > kRoamPixels || std::abs(pointer.y - start.y) > kRoamPixels;
    const bool mayPutBack = !outdated && pointer != start;
    if (mayPutBack && (farAway || !free.IsPointInside(pointer))) PutBack();
    return movement;
}

}  // namespace norava::x11

#endif
