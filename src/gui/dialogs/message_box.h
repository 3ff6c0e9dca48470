#pragma once

#include <functional>
#include <string>
#include <vector>

#include "gui/dialogs/dialog.h"

namespace norava {

class CControlTextField;

// A text with buttons below it, or a question for one line of text.
class CMessageBox : public CDialog {
  public:
    // The number of the pressed button, from the left. Enter presses the marked one, which arrow
    // keys and Tab move; Escape the last.
    using Answer = std::function<void(int button)>;
    // Lines of `text` end with a line feed; long ones are broken at blanks. False for a window that
    // is not open.
    static bool Tell(CWindowPort& window, const std::string& title, const std::string& text);
    static bool Ask(CWindowPort& window, const std::string& title, const std::string& text,
                    std::vector<std::string> buttons, Answer answer, int markedButton = 0);
    // Not called for an empty text.
    using TextAnswer = std::function<void(const std::string& text)>;
    static bool AskForText(CWindowPort& window, const std::string& title, const std::string& text,
                           const std::string& button, TextAnswer answer);

    CMessageBox(const std::string& boxTitle, std::vector<std::string> textLines,
                std::vector<std::string> buttonTexts, bool hasField);

    void DrawBackground(CRect part) override;
    bool KeyDown(int key) override;
    bool ControlValueChanged(CControl* control, float value) override;

  protected:
    void CreateControls() override;
    CControl* FirstFocus() override;
    void ButtonPressed(CControl* button) override;
    void Accept() override;
    void Cancel() override;

  private:
    void Press(int number);

    std::vector<std::string> lines;
    std::vector<std::string> texts;
    std::vector<CControl*> buttons;
    bool asksForText;
    int marked = 0;
    CControl* keyTaker = nullptr;
    CControlTextField* field = nullptr;
    Answer answered;
    TextAnswer answeredText;
};

}  // namespace norava
