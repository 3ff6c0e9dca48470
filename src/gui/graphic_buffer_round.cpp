#include <algorithm>

#include "gui/graphic_buffer.h"
#include "gui/pixel_rows.h"
#include "gui/round_rect.h"
#include "gui/stored_rows.h"

namespace norava {

namespace {

void PaintRun(uint32_t* words, CColor color, int count) {
    if (count < 1 || color.alpha == 0) return;
    if (color.alpha == 255) {
        pixel_rows::Fill(words, color.GetWord(), static_cast<size_t>(count));
    } else {
        pixel_rows::BlendColor(words, color, static_cast<size_t>(count));
    }
}

CColor Covered(CColor color, double coverage) {
    color.SetAlpha(static_cast<int>(color.alpha * std::clamp(coverage, 0.0, 1.0) + 0.5));
    return color;
}

// Paints the columns begin .. end - 1 of the shapes' selected row: what `outer` covers and `hole`
// (if any) does not. `words` is where column `begin` is stored.
void PaintRow(uint32_t* words, int begin, int end, const RoundRect& outer, const RoundRect* hole,
              CColor color) {
    uint32_t* const origin = words - begin;
    for (int x = begin; x < end;) {
        if (hole && x >= hole->GetFullBegin() && x < hole->GetFullEnd()) {
            x = static_cast<int>(std::min<int64_t>(end, hole->GetFullEnd()));
        } else if (!hole && x >= outer.GetFullBegin() && x < outer.GetFullEnd()) {
            const auto runEnd = static_cast<int>(std::min<int64_t>(end, outer.GetFullEnd()));
            PaintRun(origin + x, color, runEnd - x);
            x = runEnd;
        } else {
            const double covered = outer.Coverage(x) - (hole ? hole->Coverage(x) : 0.0);
            PaintRun(origin + x, Covered(color, covered), 1);
            ++x;
        }
    }
}

}  // namespace

void CGraphicBuffer::DrawRectWithRoundCorner(CRect rect, bool filled, float radiusX,
                                             float radiusY) {
    const double scale = scaleFactor;
    const double left = rect.left * scale, width = rect.width * scale;
    const double top = rect.top * scale, height = rect.height * scale;
    const RoundRect shape(left, top, left + width, top + height, radiusX * scale, radiusY * scale);
    if (!IsSafe() || !MakeSafeRect(&rect)) return;
    RoundRect outer = shape;
    RoundRect hole = shape.Inset(lineWidth * scale);
    const int begin = rect.left * scaleFactor;
    const int end = begin + rect.width * scaleFactor;
    int row = (rect.top + rect.height) * scaleFactor;  // stored rows come from the bottom up
    ForEachStoredRow(rect, [&](uint32_t* words, size_t) {
        --row;
        outer.SelectRow(row);
        if (!filled) hole.SelectRow(row);
        PaintRow(words, begin, end, outer, filled ? nullptr : &hole,
                 filled ? fillColor : lineColor);
    });
}

}  // namespace norava
