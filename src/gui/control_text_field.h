#pragma once

#include <string>

#include "gui/control.h"
#include "gui/label.h"

namespace norava {

// One line of text that the user edits. With the focus it takes keys: letters, the keys that move
// the caret (with SHIFT they select, with CTRL by words), CTRL A. The mouse places the caret and
// selects, a double click a word. Reports kEdited as its value after every change by the user and
// kEntered for Enter; Escape is left to others.
class CControlTextField : public CControl {
  public:
    static constexpr float kEdited = 0.0f;
    static constexpr float kEntered = 1.0f;

    struct Colors {
        CColor background{25, 28, 36};
        CColor frame{117, 120, 128};
        CColor frameFocused{218, 195, 150};
        CColor text{246, 234, 211};
        CColor hint{190, 172, 139, 150};
        CColor selection{133, 120, 97, 150};
        CColor caret{255, 217, 204};
    };

    // UTF-8, cut to the longest that is allowed; the caret goes to the end. Reports nothing.
    void SetText(const char* newText);
    [[nodiscard]] const char* GetText() const { return text.c_str(); }
    // In bytes; a path that fits its buffer by default.
    void SetMaxLength(size_t bytes);
    // Shown while the field is empty.
    void SetHint(const char* newHint) { hint = newHint ? newHint : ""; }
    void SetColors(const Colors& newColors) { colors = newColors; }
    // Bytes from the beginning; moved to the character's beginning and into the text.
    void Select(size_t from, size_t to);
    void SelectAll() { Select(0, text.size()); }
    [[nodiscard]] std::string GetSelectedText() const;
    [[nodiscard]] size_t GetCaret() const { return caret; }

    using CControl::SetRect;
    void DrawToBuffer() override;
    bool MouseDown() override;
    bool MouseMove() override;
    bool MouseUp() override;
    bool MouseDoubleClick() override;
    bool KeyDown(int key) override;
    bool TimerEvent() override;
    bool TookFocus() override;
    bool LostFocus() override;
    [[nodiscard]] bool WantsKeys() const override { return IsFocused(); }

  private:
    [[nodiscard]] CRect GetTextArea() const;
    // Pixels from the beginning of the text.
    [[nodiscard]] int GetOffsetOf(size_t at) const;
    [[nodiscard]] size_t FindCharacterAt(int x) const;
    [[nodiscard]] size_t FindWordBefore(size_t at) const;
    [[nodiscard]] size_t FindWordAfter(size_t at) const;
    void MoveCaret(size_t to, bool keepAnchor);
    void Replace(size_t from, size_t to, const std::string& with);
    bool MoveByKey(unsigned key);
    bool EditByKey(unsigned key);
    void ShowCaret();
    void DrawText(CGraphicBuffer& buffer) const;

    std::string text;
    std::string hint;
    Colors colors;
    size_t maxLength = 1023;
    size_t caret = 0;  // selected is what lies between the two
    size_t anchor = 0;
    int scrolled = 0;  // pixels of text beyond the left edge
    int blinkTicks = 0;
};

}  // namespace norava
