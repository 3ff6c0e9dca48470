#include "gui/dialogs/message_box.h"

#include <algorithm>
#include <string_view>

#include "gui/control_button.h"
#include "gui/control_text_field.h"
#include "gui/label.h"
#include "gui/platform/system_panels.h"
#include "gui/utf8.h"

namespace norava {

namespace {

constexpr CColor kText(246, 234, 211);
constexpr CColor kMark(218, 195, 150);
constexpr int kWidth = 400;
constexpr int kTextTop = 44;
constexpr int kLineHeight = 18;
constexpr int kFieldHeight = 22;
constexpr int kSpace = 12;
constexpr int kButtonStep = 92;
constexpr std::size_t kMaxLines = 12;

// Where the last character ends that the box has room for.
std::size_t FindLineEnd(CGraphicBuffer& buffer, std::string_view line, int room) {
    std::size_t end = utf8::LengthAt(line, 0);
    while (end < line.size()) {
        const std::size_t next = end + utf8::LengthAt(line, end);
        if (MeasureLabel(buffer, line.substr(0, next), false) > room) break;
        end = next;
    }
    return end;
}

// Broken at blanks; what has none (a path) is broken where the line ends.
std::vector<std::string> BreakLines(CGraphicBuffer* buffer, std::string_view text, int room) {
    std::vector<std::string> lines;
    while (buffer != nullptr && !text.empty() && lines.size() < kMaxLines) {
        std::string_view line = text.substr(0, std::min(text.find('\n'), text.size()));
        std::size_t taken = std::min(line.size() + 1, text.size());
        if (const std::size_t end = FindLineEnd(*buffer, line, room); end < line.size()) {
            const std::size_t blank = line.substr(0, end + 1).rfind(' ');
            taken = blank == line.npos || blank == 0 ? end : blank;
            line = line.substr(0, taken);
            while (taken < text.size() && text[taken] == ' ')
                ++taken;
        }
        lines.emplace_back(line);
        text.remove_prefix(taken);
    }
    return lines;
}

int HeightFor(std::size_t lines, bool hasField) {
    return kTextTop + static_cast<int>(lines) * kLineHeight +
           (hasField ? kFieldHeight + kSpace : 0) + kSpace + 22 + kSpace;
}

}  // namespace

CMessageBox::CMessageBox(const std::string& boxTitle, std::vector<std::string> textLines,
                         std::vector<std::string> buttonTexts, bool hasField)
    : CDialog(boxTitle, CSize(kWidth, HeightFor(textLines.size(), hasField))),
      lines(std::move(textLines)),
      texts(std::move(buttonTexts)),
      asksForText(hasField) {}

bool CMessageBox::Tell(CWindowPort& window, const std::string& title, const std::string& text) {
    if (!window.IsOpen()) return false;
    if (SystemPanels* const panels = window.GetView()->GetPanels())
        return panels->ShowMessage(title, text);
    return Ask(window, title, text, {"OK"}, {});
}

bool CMessageBox::Ask(CWindowPort& window, const std::string& title, const std::string& text,
                      std::vector<std::string> buttons, Answer answer, int markedButton) {
    auto box = std::make_unique<CMessageBox>(
        title, BreakLines(window.GetGraphicBuffer(), text, kWidth - 2 * kMargin),
        std::move(buttons), false);
    box->answered = std::move(answer);
    box->marked = markedButton;
    return Show(window, std::move(box)) != nullptr;
}

bool CMessageBox::AskForText(CWindowPort& window, const std::string& title, const std::string& text,
                             const std::string& button, TextAnswer answer) {
    auto box = std::make_unique<CMessageBox>(
        title, BreakLines(window.GetGraphicBuffer(), text, kWidth - 2 * kMargin),
        std::vector<std::string>{button, "Cancel"}, true);
    box->answeredText = std::move(answer);
    return Show(window, std::move(box)) != nullptr;
}

void CMessageBox::CreateControls() {
    const int width = GetRect().width;
    const int bottom = GetRect().height - kSpace - kButtonSize.cy;
    const int count = static_cast<int>(texts.size());
    for (int i = 0; i < count; ++i) {
        const int left =
            width - kMargin - kButtonStep * (count - i) + (kButtonStep - kButtonSize.cx);
        buttons.push_back(AddButton(Inside(left, bottom, kButtonSize.cx, kButtonSize.cy),
                                    texts[static_cast<std::size_t>(i)].c_str()));
    }
    if (!asksForText) {
        keyTaker = Add<CControl>();
        return;
    }
    field = Add<CControlTextField>();
    field->SetRect(
        Inside(kMargin, bottom - kSpace - kFieldHeight, width - 2 * kMargin, kFieldHeight));
}

CControl* CMessageBox::FirstFocus() {
    return field != nullptr ? static_cast<CControl*>(field) : keyTaker;
}

void CMessageBox::DrawBackground(CRect part) {
    CDialog::DrawBackground(part);
    CGraphicBuffer* const buffer = GetGraphicBuffer();
    if (buffer == nullptr) return;
    const PaintScope scope(buffer, part.GetIntersection(GetRect()));
    if (!scope) return;
    int top = kTextTop;
    for (const std::string& line : lines) {
        DrawLabel(*buffer, line, Inside(kMargin, top, GetRect().width - 2 * kMargin, kLineHeight),
                  {kText, TextAlign::left, false});
        top += kLineHeight;
    }
    const CRect button = buttons[static_cast<std::size_t>(marked)]->GetRect();
    buffer->SetLineColor(kMark);
    buffer->SetLineWidth(1);
    buffer->DrawRectWithRoundCorner(
        CRect(button.left - 2, button.top - 2, button.width + 4, button.height + 4), false, 5, 5);
}

bool CMessageBox::KeyDown(int key) {
    const int last = static_cast<int>(buttons.size()) - 1;
    const bool forward = key == kKeyTab || (!asksForText && key == static_cast<int>(kKeyRight));
    const bool back = !asksForText && key == static_cast<int>(kKeyLeft);
    if (!forward && !back) return CDialog::KeyDown(key);
    marked = forward ? (marked == last ? 0 : marked + 1) : (marked == 0 ? last : marked - 1);
    Redraw();
    return true;
}

void CMessageBox::Press(int number) {
    if (field == nullptr) {
        const Answer answer = answered;
        End([answer, number] {
            if (answer) answer(number);
        });
        return;
    }
    const std::string text = number == 0 ? field->GetText() : "";
    if (number == 0 && text.empty()) return;
    const TextAnswer answer = answeredText;
    End([answer, text] {
        if (answer && !text.empty()) answer(text);
    });
}

void CMessageBox::ButtonPressed(CControl* button) {
    const auto found = std::ranges::find(buttons, button);
    if (found != buttons.end()) Press(static_cast<int>(found - buttons.begin()));
}

bool CMessageBox::ControlValueChanged(CControl* control, float value) {
    if (control == field && value == CControlTextField::kEntered) Accept();
    return true;
}

void CMessageBox::Accept() {
    Press(marked);
}

void CMessageBox::Cancel() {
    Press(static_cast<int>(buttons.size()) - 1);
}

}  // namespace norava
