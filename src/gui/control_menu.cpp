#include "gui/control_menu.h"

#include <algorithm>
#include <cmath>

#include "gui/window_port.h"

namespace norava {

namespace {

constexpr int kClosedTextInset = 5;
constexpr int kBarThickness = 15;
constexpr int kBarMargin = 6;

CColor Brightened(CColor color, double factor) {
    color.Brighten(factor);
    return color;
}

}  // namespace

CControlMenu::CControlMenu()
    : palette{CColor(35),
              CColor(190, 172, 139),
              CColor(247, 223, 180),
              CColor(0),
              Brightened(CColor(247, 223, 180), 1.1),
              CColor(133, 120, 97),
              CColor(0),
              CColor(218, 195, 150),
              CColor(65),
              CColor(190, 172, 139, 30),
              CColor(25),
              CColor(190, 172, 139),
              CColor(228, 206, 166)} {
    CControl::SetValue(-1.0f);
    CControlDisplay::SetAlignLeft();
    CControlDisplay::SetTextOffset({kClosedTextInset, 0});
}

CControlMenu::Item* CControlMenu::CreateItem() {
    Item& item = items.emplace_back();
    item.id = GetNumItems() - 1;
    return &item;
}

CControlMenu::Item* CControlMenu::AddTextItem(const char* itemText) {
    Item* const item = CreateItem();
    item->text = itemText ? itemText : "";
    // The value may have been there before its item.
    if (GetSelectedItemID() == GetNumItems() - 1) SetText(item->text.c_str());
    return item;
}

CControlMenu::Item* CControlMenu::AddCaptionItem(const char* itemText) {
    Item* const item = CreateItem();
    item->text = itemText ? itemText : "";
    item->kind = Item::Kind::caption;
    return item;
}

CControlMenu::Item* CControlMenu::AddSeparatorItem() {
    Item* const item = CreateItem();
    item->kind = Item::Kind::separator;
    return item;
}

void CControlMenu::DeleteAllItems() {
    CloseList();
    EndGesture();
    items.clear();
    hovered = -1;
}

CControlMenu::Item* CControlMenu::GetItemByNum(int number) {
    return number >= 0 && number < GetNumItems() ? &items[static_cast<size_t>(number)] : nullptr;
}

void CControlMenu::SetItemMarkered(int number, bool on) {
    if (Item* item = GetItemByNum(number)) item->marked = on;
}

void CControlMenu::SetItemDisabled(int number, bool on) {
    if (Item* item = GetItemByNum(number)) item->disabled = on;
}

int CControlMenu::GetSelectedItemID() const {
    constexpr float kNoItem = 1e6f;
    if (!valueIsIndex && items.size() < 2) return 0;
    const float number =
        valueIsIndex ? GetValue() : GetValue() * static_cast<float>(GetNumItems() - 1);
    return std::fabs(number) < kNoItem ? static_cast<int>(number) : -1;
}

float CControlMenu::GetItemValue(int number) const {
    const auto wanted = static_cast<float>(number);
    if (valueIsIndex) return wanted;
    if (items.size() < 2) return 0.0f;
    // The fraction may fall short of the item it stands for, which truncation would show.
    const auto last = static_cast<float>(GetNumItems() - 1);
    float share = wanted / last;
    while (share * last < wanted)
        share = std::nextafter(share, 2.0f);
    return share;
}

void CControlMenu::SetValue(float newValue) {
    CControlDisplay::SetValue(newValue);
    if (const Item* item = GetItemByNum(GetSelectedItemID())) SetText(item->text.c_str());
}

CRect CControlMenu::GetItemRect(int number) const {
    CRect item = listOpen ? listRect : TamedRect(GetRect());
    const int64_t row = int64_t{number} - (listOpen ? bar.GetTop() : 0);
    item.left += kListMarginX;
    item.width -= 2 * kListMarginX + 2 + (listOpen && bar.IsNeeded() ? kScrollBarWidth : 0);
    item.top = SaturatedInt(item.top + kListMarginY + row * kItemHeight);
    item.height = kItemHeight;
    return item;
}

// Below the menu, or above where there is no room, or moved as far as the window wants it. With a
// scroll bar when it is higher than the window.
void CControlMenu::PlaceList() {
    const CRect closed = TamedRect(GetRect());
    const CSize window = GetWindowPort()->GetSize();
    const int fitting = std::max(1, (window.cy - 2 * kListMarginY) / kItemHeight);
    bar.SetRows(GetNumItems(), std::min(GetNumItems(), fitting));

    int widest = 0;
    for (const Item& item : items)
        widest = std::max(
            widest, MeasureLabel(*GetGraphicBuffer(), item.text, item.kind == Item::Kind::caption));
    const int needed = widest + 2 * kListMarginX + 2 + (bar.IsNeeded() ? kScrollBarWidth : 0);
    const int width = std::min(std::max(GetLeastListWidth(), needed), window.cx);
    const int height = bar.GetVisible() * kItemHeight + 2 * kListMarginY;
    int top = closed.GetBottom();
    if (top > window.cy - height) top = closed.top - height;
    if (top < 0) top = std::min(closed.GetBottom(), window.cy - height);
    const int left = std::min(closed.left, window.cx - width);
    listRect = CRect(std::max(0, left), std::max(0, top), width, height);
    bar.SetTrack({listRect.GetRight() - kBarMargin - kBarThickness, listRect.top + kBarMargin,
                  kBarThickness, height - 2 * kBarMargin});
}

void CControlMenu::SetTopItemID(float row) {
    const int before = bar.GetTop();
    bar.SetTop(row);
    if (listOpen && bar.GetTop() != before) ShowList();
}

void CControlMenu::OpenList() {
    PlaceList();
    listOpen = true;
    listOpacity = 0.0f;
    hovered = GetItemByNum(GetSelectedItemID()) ? GetSelectedItemID() : -1;
    // The selected one in the middle, where it can be.
    const int top = hovered - bar.GetVisible() / 2;
    bar.SetTop(static_cast<float>(top));
    SetSuper(true);
    Redraw();
    ShowList();
}

void CControlMenu::ShowList() {
    // Once it is there in full, nothing under it can be seen and it just paints over itself.
    if (listOpacity >= 1.0f) {
        DrawOverlay();
        return UpdateScreen(listRect);
    }
    if (CWindowPort* port = GetWindowPort()) port->ShowOverlay(this, listRect, listOpacity);
}

void CControlMenu::CloseList() {
    if (!listOpen) return;
    listOpen = false;
    pressedButton = kNoButton;
    bar.Release();
    FinishTracking();
    SetSuper(false);
    if (CWindowPort* port = GetWindowPort()) port->HideOverlay(this);
    Redraw();
}

void CControlMenu::Choose(int number) {
    CloseList();
    ChangeValue(GetItemValue(number));
    EndGesture();
}

bool CControlMenu::LostFocus() {
    CloseList();
    EndGesture();
    return true;
}

}  // namespace norava
