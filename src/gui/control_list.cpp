#include "gui/control_list.h"

#include <algorithm>

#include "gui/label.h"
#include "gui/utf8.h"

namespace norava {

namespace {

constexpr int kFrame = 1;
constexpr int kBarWidth = 13;
constexpr int kTypingTicks = 30;

// Letters without accents, all small: what is typed finds what it resembles.
std::string ToPlain(std::string_view text) {
    std::string plain = ToFontText(text);
    for (char& letter : plain)
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    return plain;
}

}  // namespace

CControlList::CControlList() {
    CControl::SetValue(-1.0f);
}

void CControlList::AddItem(const char* text) {
    items.emplace_back(text ? text : "");
    Layout();
}

void CControlList::DeleteAllItems() {
    items.clear();
}

const char* CControlList::GetItemText(int index) const {
    return index >= 0 && index < GetNumItems() ? items[static_cast<size_t>(index)].c_str()
                                               : nullptr;
}

int CControlList::GetSelectedItemID() const {
    const float row = GetValue();
    return row >= 0.0f && row < static_cast<float>(items.size()) ? static_cast<int>(row) : -1;
}

void CControlList::SetTopItemID(float row) {
    Layout();
    bar.SetTop(row);
    Redraw();
}

void CControlList::ShowSelectedItem() {
    Layout();
    if (GetSelectedItemID() >= 0 && bar.Reveal(GetSelectedItemID())) Redraw();
}

void CControlList::SetRect(CRect newRect) {
    CControl::SetRect(newRect);
    Layout();
}

void CControlList::Layout() {
    const CRect whole = TamedRect(GetRect());
    const int visible = std::max(1, (whole.height - 2 * inset.y) / kItemHeight);
    bar.SetRows(GetNumItems(), visible);
    bar.SetTrack({whole.GetRight() - kFrame - kBarWidth, whole.top + kFrame, kBarWidth,
                  whole.height - 2 * kFrame});
}

CRect CControlList::GetItemRect(int index) const {
    const CRect whole = TamedRect(GetRect());
    const int width = whole.width - 2 * kFrame - (bar.IsNeeded() ? kBarWidth + kFrame : 0);
    const int64_t top = whole.top + inset.y + (int64_t{index} - bar.GetTop()) * kItemHeight;
    return {whole.left + kFrame, SaturatedInt(top), width, kItemHeight};
}

int CControlList::FindItemUnderMouse() const {
    const int end = std::min(GetNumItems(), bar.GetTop() + bar.GetVisible());
    for (int i = bar.GetTop(); i < end; ++i)
        if (GetItemRect(i).IsPointInside(GetMousePos())) return i;
    return -1;
}

void CControlList::DrawRow(CGraphicBuffer& buffer, int index) const {
    const CRect row = GetItemRect(index);
    const bool selected = index == GetSelectedItemID();
    if (selected) {
        CColor line = colors.highlight;
        buffer.FillRectGradVert(row, colors.selectedTop, colors.selectedBottom);
        buffer.FillRect(CRect(row.left, row.top, row.width, 1), &line);
        buffer.FillRect(CRect(row.left, row.GetBottom() - 1, row.width, 1), &line);
        buffer.FillRect(CRect(row.left, row.top, 2, row.height), &line);
    }
    const CRect label(row.left - kFrame + inset.x, row.top, row.width - inset.x - 2, row.height);
    DrawLabel(buffer, items[static_cast<size_t>(index)], label,
              {selected ? colors.textSelected : colors.text});
}

void CControlList::DrawToBuffer() {
    DrawBackground();
    const CRect whole = TamedRect(GetRect());
    const PaintScope scope(GetGraphicBuffer(), whole);
    if (!scope) return;
    CGraphicBuffer& buffer = *GetGraphicBuffer();
    buffer.SetFillColor(colors.background);
    buffer.FillRect(whole);
    buffer.SetLineColor(colors.frame);
    buffer.DrawRect(whole);
    CColor bottom = colors.frameBottom;
    buffer.FillRect(CRect(whole.left, whole.GetBottom() - kFrame, whole.width, kFrame), &bottom);
    const PaintScope inside(&buffer, CRect(whole.left + kFrame, whole.top + kFrame,
                                           whole.width - 2 * kFrame, whole.height - 2 * kFrame));
    const int end = std::min(GetNumItems(), bar.GetTop() + bar.GetVisible());
    for (int i = bar.GetTop(); i < end; ++i)
        DrawRow(buffer, i);
    if (bar.IsNeeded()) bar.Draw(buffer, colors.scrollBar);
}

void CControlList::Select(int index) {
    bar.Reveal(index);
    if (!ChangeValue(static_cast<float>(index))) Redraw();
}

bool CControlList::MouseDown() {
    if (IsInGesture()) return true;
    if (GetMouseBtn() != kMouseLeft || !BeginGesture(false)) return false;
    typed.clear();
    if (bar.IsNeeded() && bar.GetTrack().IsPointInside(GetMousePos())) {
        bar.Press(GetMousePos());
        Redraw();
    } else if (const int index = FindItemUnderMouse(); index >= 0) {
        Select(index);
    }
    return true;
}

bool CControlList::MouseMove() {
    if (!IsInGesture()) return false;
    if (bar.Drag(GetMousePos())) Redraw();
    return true;
}

bool CControlList::MouseUp() {
    if (!IsInGesture() || GetMouseBtn() != kMouseLeft) return false;
    const bool wasHeld = bar.IsHeld();
    bar.Release();
    if (wasHeld) Redraw();
    EndGesture();
    return true;
}

bool CControlList::MouseWheel(float, float up) {
    if (bar.TurnWheel(up)) Redraw();
    return true;
}

void CControlList::SelectByKey(int index) {
    index = std::clamp(index, 0, GetNumItems() - 1);
    bar.Reveal(index);
    if (index == GetSelectedItemID() || !ChangeValueAtOnce(static_cast<float>(index))) Redraw();
}

bool CControlList::KeyDown(int key) {
    if (items.empty()) return false;
    const int selected = GetSelectedItemID();
    const int page = std::max(1, bar.GetVisible() - 1);
    switch (static_cast<unsigned>(key)) {
        case kKeyUp:
            SelectByKey(selected < 0 ? GetNumItems() - 1 : selected - 1);
            return true;
        case kKeyDown:
            SelectByKey(selected + 1);
            return true;
        case kKeyPageUp:
            SelectByKey(selected - page);
            return true;
        case kKeyPageDown:
            SelectByKey(selected + page);
            return true;
        case kKeyHome:
            SelectByKey(0);
            return true;
        case kKeyEnd:
            SelectByKey(GetNumItems() - 1);
            return true;
        default:
            return FindTyped(key);
    }
}

// Rows may be numbered ("12. Name"): letters look behind the number.
bool CControlList::StartsWithTyped(const std::string& text) const {
    const std::string plain = ToPlain(text);
    if (plain.starts_with(typed)) return true;
    const size_t digits = plain.find_first_not_of("0123456789");
    const bool isNumbered =
        digits != 0 && digits != std::string::npos && plain.compare(digits, 2, ". ") == 0;
    return isNumbered && std::string_view(plain).substr(digits + 2).starts_with(typed);
}

bool CControlList::FindTyped(int key) {
    const bool isCommand = IsCTRL() != IsALT();  // both together are AltGr
    if (key < ' ' || key == kKeyDelete || (key == ' ' && typed.empty()) || isCommand) return false;
    const std::string letter = ToPlain(utf8::Encode(static_cast<uint32_t>(key)));
    if (letter.empty()) return false;
    // The same letter again goes on to the next row that begins with it.
    const bool again = typed == letter;
    if (!again) typed += letter;
    typedTicks = kTypingTicks;
    const int count = GetNumItems();
    const int from = std::max(0, GetSelectedItemID() + (typed.size() == 1 ? 1 : 0));
    for (int i = 0; i < count; ++i) {
        const int index = (from + i) % count;
        if (!StartsWithTyped(items[static_cast<size_t>(index)])) continue;
        SelectByKey(index);
        break;
    }
    return true;
}

bool CControlList::TimerEvent() {
    if (typedTicks == 0 || --typedTicks > 0) return false;
    typed.clear();
    return true;
}

bool CControlList::LostFocus() {
    bar.Release();
    typed.clear();
    EndGesture();
    Redraw();
    return true;
}

}  // namespace norava
