#include "gui/control_text_field.h"

#include <algorithm>
#include <string_view>

#include "gui/utf8.h"

namespace norava {

namespace {

constexpr int kMargin = 6;
constexpr int kBlinkTicks = 16;
constexpr unsigned kFirstLetter = 0x20;

size_t ToCharacterStart(const std::string& text, size_t at) {
    size_t start = 0;
    for (size_t i = 0; i < std::min(at, text.size()); i += utf8::LengthAt(text, i))
        start = i + utf8::LengthAt(text, i) <= at ? i + utf8::LengthAt(text, i) : i;
    return start;
}

// Cut where a character ends.
void CutTo(std::string& text, size_t bytes) {
    if (text.size() > bytes) text.resize(ToCharacterStart(text, bytes));
}

// With CTRL they edit text everywhere: who types here must not cut the host's tracks with them.
bool IsEditingLetter(unsigned key) {
    constexpr std::string_view kLetters = "acvxyzACVXYZ";
    return key < 0x80 && kLetters.find(static_cast<char>(key)) != kLetters.npos;
}

}  // namespace

void CControlTextField::SetText(const char* newText) {
    text = newText ? newText : "";
    CutTo(text, maxLength);
    MoveCaret(text.size(), false);
}

void CControlTextField::SetMaxLength(size_t bytes) {
    maxLength = bytes;
    CutTo(text, maxLength);
    Select(anchor, caret);
}

void CControlTextField::Select(size_t from, size_t to) {
    anchor = ToCharacterStart(text, from);
    caret = ToCharacterStart(text, to);
    ShowCaret();
    Redraw();
}

std::string CControlTextField::GetSelectedText() const {
    const size_t from = std::min(anchor, caret);
    return text.substr(from, std::max(anchor, caret) - from);
}

CRect CControlTextField::GetTextArea() const {
    const CRect whole = TamedRect(GetRect());
    return {whole.left + kMargin, whole.top + 1, whole.width - 2 * kMargin, whole.height - 2};
}

int CControlTextField::GetOffsetOf(size_t at) const {
    CGraphicBuffer* buffer = GetGraphicBuffer();
    if (!buffer || at == 0) return 0;
    // Up to the next letter's place, which the width of the letters before does not hold.
    const std::string before = ToFontText(std::string_view(text).substr(0, at));
    const std::string probe = "|";
    return MeasureLabel(*buffer, before + probe, false) - MeasureLabel(*buffer, probe, false);
}

size_t CControlTextField::FindCharacterAt(int x) const {
    size_t at = 0;
    int left = 0;
    while (at < text.size()) {
        const size_t next = at + utf8::LengthAt(text, at);
        const int right = GetOffsetOf(next);
        if (x < (left + right) / 2) break;
        left = right;
        at = next;
    }
    return at;
}

size_t CControlTextField::FindWordBefore(size_t at) const {
    while (at > 0 && text[at - 1] == ' ')
        --at;
    while (at > 0 && text[at - 1] != ' ')
        --at;
    return at;
}

size_t CControlTextField::FindWordAfter(size_t at) const {
    while (at < text.size() && text[at] != ' ')
        ++at;
    while (at < text.size() && text[at] == ' ')
        ++at;
    return at;
}

void CControlTextField::MoveCaret(size_t to, bool keepAnchor) {
    caret = std::min(to, text.size());
    if (!keepAnchor) anchor = caret;
    blinkTicks = 0;
    ShowCaret();
    Redraw();
}

void CControlTextField::ShowCaret() {
    const int width = std::max(0, GetTextArea().width - 1);
    const int place = GetOffsetOf(caret);
    scrolled = std::clamp(scrolled, std::max(0, place - width), std::max(0, place));
    // A text that became short again stands at the left edge.
    scrolled = std::min(scrolled, std::max(0, GetOffsetOf(text.size()) - width));
}

void CControlTextField::Replace(size_t from, size_t to, const std::string& with) {
    if (text.size() - (to - from) + with.size() > maxLength) return;
    text.replace(from, to - from, with);
    MoveCaret(from + with.size(), false);
    SetValue(kEdited);
    SendValueChanged(kEdited);
}

void CControlTextField::DrawText(CGraphicBuffer& buffer) const {
    const CRect area = GetTextArea();
    const PaintScope scope(&buffer, area);
    if (!scope) return;
    if (text.empty()) DrawLabel(buffer, hint, area, {colors.hint});
    const int left = area.left - scrolled;
    const int middle = area.top + area.height / 2;
    if (anchor != caret && IsFocused()) {
        CColor selection = colors.selection;
        const int from = GetOffsetOf(std::min(anchor, caret));
        const int to = GetOffsetOf(std::max(anchor, caret));
        buffer.FillRect(CRect(left + from - 1, middle - 8, to - from + 1, 16), &selection);
    }
    buffer.ResetDrawingProperties();
    buffer.SetTextColor(colors.text);
    buffer.DrawText(ToFontText(text).c_str(), CRect(left, area.top, area.width, area.height),
                    false);
    if (!IsFocused() || blinkTicks >= kBlinkTicks) return;
    CColor line = colors.caret;
    buffer.FillRect(CRect(left + std::max(0, GetOffsetOf(caret) - 1), middle - 7, 1, 14), &line);
}

void CControlTextField::DrawToBuffer() {
    DrawBackground();
    const PaintScope scope(GetGraphicBuffer(), GetRect());
    if (!scope) return;
    CGraphicBuffer& buffer = *GetGraphicBuffer();
    buffer.SetFillColor(colors.background);
    buffer.FillRect(GetRect());
    buffer.SetLineColor(IsFocused() ? colors.frameFocused : colors.frame);
    buffer.DrawRect(GetRect());
    DrawText(buffer);
}

bool CControlTextField::MouseDown() {
    if (IsInGesture()) return true;
    if (GetMouseBtn() != kMouseLeft || !BeginGesture(false)) return false;
    MoveCaret(FindCharacterAt(GetMousePos().x - GetTextArea().left + scrolled), IsSHIFT());
    return true;
}

bool CControlTextField::MouseMove() {
    if (!IsInGesture()) return false;
    MoveCaret(FindCharacterAt(GetMousePos().x - GetTextArea().left + scrolled), true);
    return true;
}

bool CControlTextField::MouseUp() {
    if (!IsInGesture() || GetMouseBtn() != kMouseLeft) return false;
    EndGesture();
    return true;
}

bool CControlTextField::MouseDoubleClick() {
    if (GetMouseBtn() != kMouseLeft || IsInGesture()) return false;
    GrabFocus();
    const size_t at = FindCharacterAt(GetMousePos().x - GetTextArea().left + scrolled);
    const size_t end = std::min(text.find(' ', at), text.size());
    Select(FindWordBefore(std::min(at + 1, end)), end);
    return true;
}

bool CControlTextField::MoveByKey(unsigned key) {
    const bool selects = anchor != caret && !IsSHIFT();
    switch (key) {
        case kKeyLeft:
            MoveCaret(selects    ? std::min(anchor, caret)
                      : IsCTRL() ? FindWordBefore(caret)
                                 : utf8::Before(text, caret),
                      IsSHIFT());
            return true;
        case kKeyRight:
            MoveCaret(selects    ? std::max(anchor, caret)
                      : IsCTRL() ? FindWordAfter(caret)
                                 : caret + utf8::LengthAt(text, caret),
                      IsSHIFT());
            return true;
        case kKeyHome:
            MoveCaret(0, IsSHIFT());
            return true;
        case kKeyEnd:
            MoveCaret(text.size(), IsSHIFT());
            return true;
        default:
            return false;
    }
}

bool CControlTextField::EditByKey(unsigned key) {
    size_t from = std::min(anchor, caret);
    size_t to = std::max(anchor, caret);
    if (key == kKeyBackspace || key == kKeyDelete) {
        if (from == to && key == kKeyBackspace)
            from = IsCTRL() ? FindWordBefore(from) : utf8::Before(text, from);
        if (from == to && key == kKeyDelete)
            to = IsCTRL() ? FindWordAfter(to) : to + utf8::LengthAt(text, to);
        if (from != to) Replace(from, to, "");
        return true;
    }
    if (key < kFirstLetter || (IsCTRL() && !IsALT()) || (key > kKeyDelete && key < 0xA0))
        return false;
    const std::string letter = utf8::Encode(key);
    if (!letter.empty()) Replace(from, to, letter);
    return !letter.empty();
}

bool CControlTextField::KeyDown(int key) {
    const auto pressed = static_cast<unsigned>(key);
    if (pressed == kKeyEnter) {
        SetValue(kEntered);
        SendValueChanged(kEntered);
        return true;
    }
    if (IsCTRL() && !IsALT() && IsEditingLetter(pressed)) {
        if (pressed == 'a' || pressed == 'A') SelectAll();
        return true;
    }
    return MoveByKey(pressed) || EditByKey(pressed);
}

bool CControlTextField::TimerEvent() {
    if (!IsFocused()) return false;
    const bool before = blinkTicks < kBlinkTicks;
    blinkTicks = (blinkTicks + 1) % (2 * kBlinkTicks);
    if (before != (blinkTicks < kBlinkTicks)) Redraw();
    return true;
}

bool CControlTextField::TookFocus() {
    blinkTicks = 0;
    ShowCaret();
    Redraw();
    return true;
}

bool CControlTextField::LostFocus() {
    EndGesture();
    Redraw();
    return true;
}

}  // namespace norava
