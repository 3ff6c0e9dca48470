#include <algorithm>
#include <cstdlib>
#include <utility>

#include "gui/control_menu.h"
#include "gui/window_port.h"

namespace norava {

namespace {

constexpr float kFadeStep = 0.3f;
// A hand that only clicks may move as far.
constexpr int kClickPixels = 3;

}  // namespace

bool CControlMenu::MouseDown() {
    if (pressedButton != kNoButton) return true;
    if (!listOpen) {
        if (!OpensWith(GetMouseBtn()) || !BeginGesture(false)) return false;
        if (items.empty()) {
            EndGesture();
            return true;
        }
        pressOpened = true;
        OpenList();
    } else if (!listRect.IsPointInside(GetMousePos())) {
        CloseList();
        EndGesture();
        return true;
    } else {
        pressOpened = false;
        StartTracking(false);
        if (bar.IsNeeded() && bar.GetTrack().IsPointInside(GetMousePos())) {
            bar.Press(GetMousePos());
            ShowList();
        } else if (FindItemUnderMouse()) {
            ShowList();
        }
    }
    pressedButton = GetMouseBtn();
    pressedAt = GetMousePos();
    return true;
}

// Whether another item is under the mouse than before. Rows answer over the whole width of the
// list.
bool CControlMenu::FindItemUnderMouse() {
    const CPoint mouse = GetMousePos();
    const int rowsEnd = listRect.GetRight() - (bar.IsNeeded() ? kScrollBarWidth : 1);
    int found = -1;
    if (mouse.x > listRect.left && mouse.x < rowsEnd) {
        for (int i = bar.GetTop(); i < std::min(GetNumItems(), bar.GetTop() + bar.GetVisible());
             ++i) {
            const CRect row = GetItemRect(i);
            if (mouse.y >= row.top && mouse.y < row.GetBottom()) found = i;
        }
    }
    return std::exchange(hovered, found) != found;
}

bool CControlMenu::HasMovedSincePress() const {
    const CPoint mouse = GetMousePos();
    return std::abs(int64_t{mouse.x} - pressedAt.x) > kClickPixels ||
           std::abs(int64_t{mouse.y} - pressedAt.y) > kClickPixels;
}

bool CControlMenu::MouseMove() {
    if (!listOpen) return false;
    if (bar.IsHeld()) {
        if (bar.Drag(GetMousePos())) ShowList();
    } else if (FindItemUnderMouse()) {
        ShowList();
    }
    return true;
}

bool CControlMenu::MouseUp() {
    if (!listOpen || pressedButton != GetMouseBtn()) return false;
    pressedButton = kNoButton;
    const bool opened = std::exchange(pressOpened, false);
    FinishTracking();
    if (bar.IsHeld()) {
        bar.Release();
        ShowList();
        return true;
    }
    if (opened && !HasMovedSincePress()) return true;
    static_cast<void>(FindItemUnderMouse());
    const Item* const item = GetItemByNum(hovered);
    const bool isOutside =
        !listRect.IsPointInside(GetMousePos()) && !GetRect().IsPointInside(GetMousePos());
    if (item && item->CanBeChosen()) {
        Choose(hovered);
    } else if (opened && isOutside) {
        CloseList();
        EndGesture();
    } else {
        ShowList();
    }
    return true;
}

bool CControlMenu::MouseWheel(float, float up) {
    if (!listOpen) return false;
    if (bar.IsHeld() || !bar.TurnWheel(up)) return true;
    static_cast<void>(FindItemUnderMouse());
    ShowList();
    return true;
}

void CControlMenu::Hover(int number) {
    hovered = number;
    bar.Reveal(number);
    ShowList();
}

void CControlMenu::HoverNext(int from, int step) {
    for (int i = from; i >= 0 && i < GetNumItems(); i += step)
        if (items[static_cast<size_t>(i)].CanBeChosen()) return Hover(i);
}

void CControlMenu::HoverByPage(int direction) {
    const int page = std::max(1, bar.GetVisible() - 1);
    const int target = std::clamp(hovered + direction * page, 0, GetNumItems() - 1);
    // Where the page ends on something else, the nearest one on the way back.
    HoverNext(target, -direction);
}

bool CControlMenu::KeyDown(int key) {
    if (!listOpen) return false;
    switch (static_cast<unsigned>(key)) {
        case kKeyUp:
            HoverNext(hovered < 0 ? GetNumItems() - 1 : hovered - 1, -1);
            return true;
        case kKeyDown:
            HoverNext(hovered + 1, 1);
            return true;
        case kKeyHome:
            HoverNext(0, 1);
            return true;
        case kKeyEnd:
            HoverNext(GetNumItems() - 1, -1);
            return true;
        case kKeyPageUp:
            HoverByPage(-1);
            return true;
        case kKeyPageDown:
            HoverByPage(1);
            return true;
        case kKeyEnter:
            if (const Item* item = GetItemByNum(hovered); item && item->CanBeChosen())
                Choose(hovered);
            return true;
        case kKeyEscape:
            CloseList();
            EndGesture();
            return true;
        default:
            return false;
    }
}

// A press that is held beyond an end of the list moves it.
void CControlMenu::ScrollWhileDragging() {
    if (pressedButton == kNoButton || bar.IsHeld()) return;
    const int y = GetMousePos().y;
    if (y < listRect.top + kListMarginY) MoveScrollBar(-1.0f);
    if (y >= listRect.GetBottom() - kListMarginY && HasMovedSincePress()) MoveScrollBar(1.0f);
}

bool CControlMenu::TimerEvent() {
    if (!listOpen) return false;
    if (bar.IsNeeded()) ScrollWhileDragging();
    if (listOpacity >= 1.0f) return false;
    listOpacity = std::min(1.0f, listOpacity + kFadeStep);
    if (CWindowPort* port = GetWindowPort()) port->ShowOverlay(this, listRect, listOpacity);
    return true;
}

}  // namespace norava
