#pragma once

#include <array>
#include <deque>
#include <string>

#include "gui/control_display.h"
#include "gui/scroll_bar.h"

namespace norava {

// A drop-down menu: closed it shows the selected item, open a list over everything else. One
// gesture lasts from opening to closing; choosing an item reports its value in between, with the
// list already gone, also for the item that was selected before.
//
// A click opens the list and another one chooses; or press, drag to the item, release. A click
// outside and Escape close it. Arrow keys and Enter work, the wheel scrolls.
class CControlMenu : public CControlDisplay {
  public:
    struct Item {
        enum class Kind { text, caption, separator };
        std::string text;
        int id = -1;
        Kind kind = Kind::text;
        bool marked = false;
        bool disabled = false;

        [[nodiscard]] bool CanBeChosen() const { return kind == Kind::text && !disabled; }
    };

    // What the colours of the palette are for, in its order.
    enum PaletteEntry {
        kListTop,
        kItemText,
        kItemHovered,
        kListEdge,
        kClosedText,  // of an open menu
        kListFrame,
        kClosedEdge,
        kCaptionText,
        kSeparator,
        kHoveredRow,
        kListBottom,
        kScrollThumb,
        kItemSelected,
        kPaletteSize
    };

    static constexpr int kItemHeight = 18;
    static constexpr int kListMarginX = 10;
    static constexpr int kListMarginY = 10;
    static constexpr int kScrollBarWidth = 25;

    CControlMenu();

    // The items stay where they are until all are deleted, which also closes the list. The id of a
    // new item is its number.
    Item* CreateItem();
    Item* AddTextItem(const char* text);
    Item* AddCaptionItem(const char* text);
    Item* AddSeparatorItem();
    void DeleteAllItems();
    [[nodiscard]] int GetNumItems() const { return static_cast<int>(items.size()); }
    // Null for no such item.
    [[nodiscard]] Item* GetItemByNum(int number);
    void SetItemMarkered(int number, bool on);
    void SetItemDisabled(int number, bool on);

    // The value is the number of the item (as made; -1 for none), or else the items share 0 .. 1.
    void SetValueIsIndex(bool on) { valueIsIndex = on; }
    [[nodiscard]] int GetSelectedItemID() const;
    // The value that selects an item.
    [[nodiscard]] float GetItemValue(int number) const;
    // Whether the open list marks the selected item; a menu of commands does not.
    void SetShowsSelection(bool on) { showsSelection = on; }
    void SetPaletteColor(PaletteEntry entry, CColor color) { palette[entry] = color; }

    [[nodiscard]] bool IsListOpen() const { return listOpen; }
    void CloseList();
    [[nodiscard]] CRect GetListRect() const { return listRect; }
    [[nodiscard]] CRect GetItemRect(int number) const;
    [[nodiscard]] int GetHoveredItem() const { return hovered; }
    [[nodiscard]] int GetTopItemID() const { return bar.GetTop(); }
    void SetTopItemID(float row);
    void MoveScrollBar(float rows) { SetTopItemID(static_cast<float>(bar.GetTop()) + rows); }

    // Where the closed menu shows its text, in window coordinates.
    [[nodiscard]] CRect GetClosedTextArea() const;

    void SetValue(float newValue) override;
    using CControl::SetRect;
    // A picture has two frames, closed above open; no text is shown then.
    void DrawToBuffer() override;
    void DrawOverlay() override;
    bool MouseDown() override;
    bool MouseMove() override;
    bool MouseUp() override;
    bool MouseWheel(float right, float up) override;
    bool KeyDown(int key) override;
    bool TimerEvent() override;
    bool LostFocus() override;
    [[nodiscard]] bool WantsKeys() const override { return listOpen; }

  protected:
    // Whether pressing this button opens the closed menu.
    [[nodiscard]] virtual bool OpensWith(int button) const { return button == kMouseLeft; }
    // An open list is as wide as its widest text, and no narrower than the field it hangs from.
    [[nodiscard]] virtual int GetLeastListWidth() const { return TamedRect(GetRect()).width; }

  private:
    static constexpr int kNoButton = -1;

    void OpenList();
    void PlaceList();
    void ShowList();
    void Choose(int number);
    [[nodiscard]] bool FindItemUnderMouse();
    [[nodiscard]] bool HasMovedSincePress() const;
    void Hover(int number);
    // The next item that can be chosen, `step` further.
    void HoverNext(int from, int step);
    void HoverByPage(int direction);
    void ScrollWhileDragging();
    void DrawClosed(CGraphicBuffer& buffer) const;
    void DrawMenuBackground(CGraphicBuffer& buffer) const;
    void DrawMenuItems(CGraphicBuffer& buffer) const;
    void DrawItem(CGraphicBuffer& buffer, int number) const;

    std::deque<Item> items;
    bool valueIsIndex = true;
    bool showsSelection = true;
    std::array<CColor, kPaletteSize> palette;
    int hovered = -1;
    CRect listRect;
    ScrollBar bar;
    bool listOpen = false;
    float listOpacity = 0.0f;
    int pressedButton = kNoButton;
    bool pressOpened = false;  // the press that opened the list is not over
    CPoint pressedAt;
};

}  // namespace norava
