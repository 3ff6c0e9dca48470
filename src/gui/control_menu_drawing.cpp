#include <algorithm>

#include "gui/control_menu.h"
#include "gui/smooth_shapes.h"

namespace norava {

namespace {

constexpr int kClosedTextEnd = 10;  // kept free for the arrow
constexpr double kDisabledStrength = 0.45;
constexpr int kMark = 4;
constexpr CColor kMarkColor(246, 180, 92);
constexpr CColor kFieldTop(18, 17, 19);
constexpr CColor kFieldBottom(29, 28, 32);
constexpr int kSeparatorInset = 8;

}  // namespace

CRect CControlMenu::GetClosedTextArea() const {
    CRect area = GetTextArea();
    area.width = std::min(area.width, TamedRect(GetRect()).GetRight() - kClosedTextEnd - area.left);
    return area;
}

void CControlMenu::DrawClosed(CGraphicBuffer& buffer) const {
    const CRect closed = TamedRect(GetRect());
    if (const CImage* picture = GetImage()) {
        const int height = picture->GetSize().cy / 2;
        buffer.DrawImage(
            picture, CRect(closed.left, closed.top, closed.width, std::min(height, closed.height)),
            {0, listOpen ? height : 0});
        return;
    }
    if (IsBackgroundSelfDrawn()) {
        buffer.FillRectGradVert(closed, kFieldTop, kFieldBottom);
        buffer.SetLineColor(palette[kClosedEdge]);
        buffer.DrawRect(closed);
        smooth_shapes::FillArrow(buffer,
                                 {static_cast<float>(closed.GetRight()) - 8.0f,
                                  static_cast<float>(closed.GetCenter().y) - 1.0f},
                                 3.5f, 4.0f, palette[listOpen ? kItemHovered : kItemText]);
    }
    LabelStyle style = GetLabelStyle();
    if (listOpen) style.color = palette[kClosedText];
    DrawLabel(buffer, GetText(), GetClosedTextArea(), style);
}

void CControlMenu::DrawToBuffer() {
    DrawBackground(GetRect());
    const PaintScope scope(GetGraphicBuffer(), GetRect());
    if (scope) DrawClosed(*GetGraphicBuffer());
}

void CControlMenu::DrawMenuBackground(CGraphicBuffer& buffer) const {
    const CRect inside(listRect.left + 1, listRect.top + 1, listRect.width - 2,
                       listRect.height - 2);
    buffer.FillRectGradVert(listRect, palette[kListTop], palette[kListBottom]);
    buffer.SetLineColor(palette[kListEdge]);
    buffer.DrawRect(listRect);
    buffer.SetLineColor(palette[kListFrame]);
    buffer.DrawRect(inside);
}

void CControlMenu::DrawItem(CGraphicBuffer& buffer, int number) const {
    const Item& item = items[static_cast<size_t>(number)];
    const CRect area = GetItemRect(number);
    const int rowEnd = listRect.GetRight() - 2 - (bar.IsNeeded() ? kScrollBarWidth - 2 : 0);
    const CRect row(listRect.left + 2, area.top, rowEnd - listRect.left - 2, area.height);
    if (item.kind == Item::Kind::separator) {
        CColor line = palette[kSeparator];
        buffer.FillRect(CRect(row.left + kSeparatorInset - 2, area.GetCenter().y,
                              row.width - 2 * (kSeparatorInset - 2), 1),
                        &line);
        return;
    }
    if (item.kind == Item::Kind::caption)
        return DrawLabel(buffer, item.text, area, {palette[kCaptionText], TextAlign::left, true});
    const bool selected = showsSelection && number == GetSelectedItemID();
    const bool isHovered = number == hovered && item.CanBeChosen();
    if (isHovered) {
        CColor light = palette[kHoveredRow];
        buffer.FillRect(row, &light);
    }
    const double strength = item.disabled ? kDisabledStrength : 1.0;
    if (selected || item.marked) {
        CColor mark = Faded(kMarkColor, strength);
        buffer.FillRect(CRect(listRect.left + 3, area.GetCenter().y - kMark / 2, kMark, kMark),
                        &mark);
    }
    const CColor color = palette[isHovered ? kItemHovered : selected ? kItemSelected : kItemText];
    DrawLabel(buffer, item.text, area, {Faded(color, strength)});
}

void CControlMenu::DrawMenuItems(CGraphicBuffer& buffer) const {
    const PaintScope rows(&buffer, CRect(listRect.left + 2, listRect.top + 2, listRect.width - 4,
                                         listRect.height - 4));
    if (!rows) return;
    const int end = std::min(GetNumItems(), bar.GetTop() + bar.GetVisible());
    for (int i = bar.GetTop(); i < end; ++i)
        DrawItem(buffer, i);
    if (!bar.IsNeeded()) return;
    ScrollBar::Colors colors;
    colors.thumbHeld = palette[kScrollThumb];
    bar.Draw(buffer, colors);
}

void CControlMenu::DrawOverlay() {
    const PaintScope scope(GetGraphicBuffer(), listRect);
    if (!scope) return;
    DrawMenuBackground(*GetGraphicBuffer());
    DrawMenuItems(*GetGraphicBuffer());
}

}  // namespace norava
