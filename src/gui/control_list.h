#pragma once

#include <string>
#include <vector>

#include "gui/control.h"
#include "gui/scroll_bar.h"

namespace norava {

// Rows of text of which one is selected; its number is the value, -1 for none. Reports a value when
// the user selects a row, also the one that is selected already when it is clicked. Scrolls by
// wheel and bar; with the focus, arrow keys move the selection and typed letters find a row.
class CControlList : public CControl {
  public:
    struct Colors {
        CColor background{25, 28, 36};
        CColor frame{117, 120, 128};
        CColor frameBottom{147, 150, 158};
        CColor text{246, 234, 211};
        CColor textSelected{247, 223, 180};
        CColor selectedTop{58, 52, 40};
        CColor selectedBottom{41, 40, 37};
        CColor highlight{218, 195, 150};
        ScrollBar::Colors scrollBar;
    };
    static constexpr int kItemHeight = 18;

    CControlList();

    void AddItem(const char* text);
    // Keeps value and scroll position, for who fills in new rows.
    void DeleteAllItems();
    [[nodiscard]] int GetNumItems() const { return static_cast<int>(items.size()); }
    // Null for no such row.
    [[nodiscard]] const char* GetItemText(int index) const;
    [[nodiscard]] int GetSelectedItemID() const;
    // The first row that is seen.
    [[nodiscard]] int GetTopItemID() const { return bar.GetTop(); }
    void SetTopItemID(float row);
    // Scrolls until the selected row is seen.
    void ShowSelectedItem();
    void SetColors(const Colors& newColors) { colors = newColors; }
    // Text from the left of a row, rows from the top of the control.
    void SetTextInset(CPoint pixels) { inset = pixels; }
    [[nodiscard]] CRect GetItemRect(int index) const;
    // The row under the mouse, else -1.
    [[nodiscard]] int FindItemUnderMouse() const;

    using CControl::SetRect;
    void SetRect(CRect newRect) override;
    void DrawToBuffer() override;
    bool MouseDown() override;
    bool MouseMove() override;
    bool MouseUp() override;
    bool MouseWheel(float right, float up) override;
    bool KeyDown(int key) override;
    bool TimerEvent() override;
    bool LostFocus() override;
    [[nodiscard]] bool WantsKeys() const override { return IsFocused(); }

  private:
    void Layout();
    void Select(int index);
    void SelectByKey(int index);
    [[nodiscard]] bool FindTyped(int key);
    [[nodiscard]] bool StartsWithTyped(const std::string& text) const;
    void DrawRow(CGraphicBuffer& buffer, int index) const;

    std::vector<std::string> items;
    ScrollBar bar;
    Colors colors;
    CPoint inset{8, 4};
    std::string typed;   // what the last keys spell
    int typedTicks = 0;  // until it is forgotten
};

}  // namespace norava
