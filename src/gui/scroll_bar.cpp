#include "gui/scroll_bar.h"

#include "gui/label.h"

namespace norava {

namespace {

constexpr int kMinThumb = 16;
constexpr int kThumbMargin = 2;
constexpr float kRowsPerNotch = 3.0f;
constexpr float kMostNotches = 1000.0f;
constexpr float kThumbRadius = 3.0f;

}  // namespace

bool ScrollBar::Reveal(int row) {
    const int before = GetTop();
    if (row < before) SetTop(static_cast<float>(row));
    if (row >= before + visible) SetTop(static_cast<float>(row - visible + 1));
    return GetTop() != before;
}

bool ScrollBar::TurnWheel(float up) {
    if (!(std::fabs(up) <= kMostNotches)) return false;
    // Turning back answers at once.
    if ((up > 0) != (wheelRest > 0)) wheelRest = 0.0f;
    wheelRest += up * kRowsPerNotch;
    const float rows = std::trunc(wheelRest);
    wheelRest -= rows;
    const int before = GetTop();
    SetTop(static_cast<float>(before) - rows);
    return GetTop() != before;
}

CRect ScrollBar::GetThumb() const {
    const int room = track.height - 2 * kThumbMargin;
    const int height = std::clamp(static_cast<int>(int64_t{room} * visible / std::max(1, total)),
                                  std::min(kMinThumb, std::max(0, room)), std::max(0, room));
    const int travel = room - height;
    const int way =
        GetLastTop() > 0 ? static_cast<int>(int64_t{travel} * GetTop() / GetLastTop()) : 0;
    return {track.left + kThumbMargin, track.top + kThumbMargin + way,
            track.width - 2 * kThumbMargin, height};
}

void ScrollBar::Press(CPoint mouse) {
    const CRect thumb = GetThumb();
    if (mouse.y >= thumb.top && mouse.y < thumb.GetBottom()) {
        held = true;
        grabbedAt = mouse.y - thumb.top;
    } else {
        const int page = std::max(1, visible - 1);
        SetTop(static_cast<float>(mouse.y < thumb.top ? GetTop() - page : GetTop() + page));
    }
}

bool ScrollBar::Drag(CPoint mouse) {
    if (!held) return false;
    const CRect thumb = GetThumb();
    const int travel = track.height - 2 * kThumbMargin - thumb.height;
    if (travel < 1) return false;
    const int64_t way = int64_t{mouse.y} - grabbedAt - track.top - kThumbMargin;
    const int before = GetTop();
    SetTop(std::round(static_cast<float>(way) * static_cast<float>(GetLastTop()) /
                      static_cast<float>(travel)));
    return GetTop() != before;
}

void ScrollBar::Draw(CGraphicBuffer& buffer, const Colors& colors) const {
    const PaintScope scope(&buffer, track);
    if (!scope) return;
    buffer.SetFillColor(colors.track);
    buffer.FillRect(track);
    const CRect thumb = GetThumb();
    // The lower colour shows as the shaded edge of the upper one.
    buffer.SetFillColor(colors.thumbBottom);
    buffer.DrawRectWithRoundCorner(thumb, true, kThumbRadius, kThumbRadius);
    const CRect face(thumb.left, thumb.top, thumb.width - 1, thumb.height - 1);
    buffer.SetFillColor(held ? colors.thumbHeld : colors.thumbTop);
    buffer.DrawRectWithRoundCorner(face, true, kThumbRadius, kThumbRadius);
    constexpr int kGrips = 3;
    if (thumb.height < 3 * kMinThumb / 2) return;
    for (int i = 0; i < kGrips; ++i) {
        CColor grip(0, 110);
        const int y = thumb.GetCenter().y - kGrips + 1 + 2 * i;
        buffer.FillRect(CRect(thumb.left + 2, y, thumb.width - 4, 1), &grip);
    }
}

}  // namespace norava
