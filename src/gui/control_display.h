#pragma once

#include "files/text_buffer.h"
#include "gui/control.h"
#include "gui/image.h"
#include "gui/label.h"

namespace norava {

// One line of text in a rectangle; the base of everything that shows one. A click on it is reported
// like any other.
class CControlDisplay : public CControl {
  public:
    // UTF-8, cut to 255 bytes; nothing for null. Whether the shown text changed: who sets it often
    // redraws only then.
    virtual bool SetText(const char* newText);
    [[nodiscard]] virtual const char* GetText() const { return text; }
    virtual void SetTextColor(CColor color) { textColor = color; }
    [[nodiscard]] CColor GetTextColor() const { return textColor; }
    // Drawn only as part of the self-drawn background.
    virtual void SetBackgroundColor(CColor color) { backgroundColor = color; }
    [[nodiscard]] CColor GetBackgroundColor() const { return backgroundColor; }
    // Where the text stands, from the control's left top; an empty rectangle means all of the
    // control, inside its frame if it has one. The offset moves it from there.
    virtual void SetTextRect(CRect part) { textRect = part; }
    virtual void SetTextOffset(CPoint offset) { textOffset = offset; }
    virtual void SetAlignLeft() { align = TextAlign::left; }
    virtual void SetAlignCenter() { align = TextAlign::center; }
    virtual void SetAlignRight() { align = TextAlign::right; }
    virtual void SetTextFontBold() { bold = true; }
    virtual void SetTextFontNormal() { bold = false; }
    // Self-drawn: the background colour inside a black line.
    virtual void SetBackgroundNone() { selfDrawn = false; }
    virtual void SetBackgroundSelfDrawn() { selfDrawn = true; }
    [[nodiscard]] bool IsBackgroundSelfDrawn() const { return selfDrawn; }
    // Lies between background and text, at the control's left top. The bank keeps it.
    virtual void SetImage(CImage* picture) { image = picture; }
    [[nodiscard]] CImage* GetImage() const { return image; }

    using CControl::DrawBackground;
    void DrawBackground() override;
    void DrawToBuffer() override;
    bool MouseDown() override;
    bool MouseUp() override;
    bool LostFocus() override;

  protected:
    // In window coordinates.
    [[nodiscard]] CRect GetTextArea() const;
    [[nodiscard]] LabelStyle GetLabelStyle() const { return {textColor, align, bold}; }

  private:
    char text[kNameBufferBytes] = "";
    CColor textColor{200};
    CColor backgroundColor{0, 0};
    CRect textRect;
    CPoint textOffset;
    TextAlign align = TextAlign::center;
    bool bold = false;
    bool selfDrawn = false;
    CImage* image = nullptr;
};

}  // namespace norava
