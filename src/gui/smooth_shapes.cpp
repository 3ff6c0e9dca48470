#include "gui/smooth_shapes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "gui/pixel_rows.h"

namespace norava::smooth_shapes {

namespace {

// Shapes further out than this are off any screen; what is not finite is not drawn either.
constexpr float kFurthest = 1 << 20;

bool IsDrawable(std::initializer_list<float> numbers) {
    return std::all_of(numbers.begin(), numbers.end(),
                       [](float number) { return std::fabs(number) <= kFurthest; });
}

CRect Around(CPointF low, CPointF high, float margin) {
    const int left = static_cast<int>(std::floor(low.x - margin));
    const int top = static_cast<int>(std::floor(low.y - margin));
    return {left, top, static_cast<int>(std::ceil(high.x + margin)) - left,
            static_cast<int>(std::ceil(high.y + margin)) - top};
}

// distance(x, y): how far the point lies outside the shape, below 0 inside. A pixel is covered by
// how far its middle lies inside, over the width of one stored pixel.
template <typename Distance>
void Paint(CGraphicBuffer& buffer, CRect bounds, CColor color, const Distance& distance) {
    if (!buffer.IsSafe() || !buffer.MakeSafeRect(&bounds)) return;
    const int scale = buffer.GetSclFactor();
    const auto factor = static_cast<float>(scale);
    const auto stride = static_cast<size_t>(buffer.GetSize().cx) * static_cast<size_t>(scale);
    for (int row = 0; row < bounds.height * scale; ++row) {
        // Stored rows go upwards.
        const int y = bounds.GetBottom() - 1 - row / scale;
        uint32_t* words = buffer.GetDataAt(bounds.left, buffer.GetSize().cy - 1 - y) +
                          static_cast<size_t>(row % scale) * stride;
        const float middleY =
            static_cast<float>(bounds.GetBottom()) - (static_cast<float>(row) + 0.5f) / factor;
        for (int column = 0; column < bounds.width * scale; ++column, ++words) {
            const float middleX =
                static_cast<float>(bounds.left) + (static_cast<float>(column) + 0.5f) / factor;
            const float covered =
                std::clamp(0.5f - distance(middleX, middleY) * factor, 0.0f, 1.0f);
            CColor part = color;
            part.SetAlpha(static_cast<int>(covered * static_cast<float>(color.alpha) + 0.5f));
            if (part.alpha == 255) {
                *words = part.GetWord();
            } else if (part.alpha > 0) {
                *words = pixel_rows::BlendedWord(*words, part.GetWord());
            }
        }
    }
}

float Length(float x, float y) {
    return std::sqrt(x * x + y * y);
}

}  // namespace

CPointF PointAt(CPointF center, float radius, float angle) {
    const float radians = angle * std::numbers::pi_v<float> / 180.0f;
    return {center.x + radius * std::sin(radians), center.y - radius * std::cos(radians)};
}

void FillDisc(CGraphicBuffer& buffer, CPointF center, float radius, CColor color) {
    if (!IsDrawable({center.x, center.y, radius})) return;
    Paint(buffer, Around(center, center, radius + 1), color,
          [=](float x, float y) { return Length(x - center.x, y - center.y) - radius; });
}

void DrawArc(CGraphicBuffer& buffer, CPointF center, float radius, float width, float from,
             float to, CColor color) {
    if (!IsDrawable({center.x, center.y, radius, width, from, to}) || !(from < to)) return;
    // A point lies between the ends when it is on the right side of both, or of one of them when
    // the arc is longer than half a turn.
    const CPointF start = PointAt({0, 0}, 1, from);
    const CPointF end = PointAt({0, 0}, 1, to);
    const bool isLong = to - from > 180.0f;
    Paint(buffer, Around(center, center, radius + width), color, [=](float px, float py) {
        const float x = px - center.x;
        const float y = py - center.y;
        const float ring = std::fabs(Length(x, y) - radius) - width / 2;
        const float beforeStart = start.y * x - start.x * y;
        const float pastEnd = end.x * y - end.y * x;
        const float ends = isLong ? std::min(beforeStart, pastEnd) : std::max(beforeStart, pastEnd);
        return std::max(ring, ends);
    });
}

void DrawStroke(CGraphicBuffer& buffer, CPointF from, CPointF to, float width, CColor color) {
    if (!IsDrawable({from.x, from.y, to.x, to.y, width})) return;
    const CPointF low(std::min(from.x, to.x), std::min(from.y, to.y));
    const CPointF high(std::max(from.x, to.x), std::max(from.y, to.y));
    const float dx = to.x - from.x;
    const float dy = to.y - from.y;
    const float squared = dx * dx + dy * dy;
    Paint(buffer, Around(low, high, width), color, [=](float px, float py) {
        const float x = px - from.x;
        const float y = py - from.y;
        const float along =
            squared > 0 ? std::clamp((x * dx + y * dy) / squared, 0.0f, 1.0f) : 0.0f;
        return Length(x - along * dx, y - along * dy) - width / 2;
    });
}

void FillArrow(CGraphicBuffer& buffer, CPointF middle, float halfWidth, float height,
               CColor color) {
    if (!IsDrawable({middle.x, middle.y, halfWidth, height}) || !(halfWidth > 0)) return;
    const float tall = std::fabs(height);
    const float side = Length(halfWidth, tall);
    const float direction = height < 0 ? -1.0f : 1.0f;
    Paint(buffer, Around(middle, middle, std::max(halfWidth, tall) + 1), color,
          [=](float px, float py) {
              const float x = std::fabs(px - middle.x);
              const float y = (py - middle.y) * direction;
              const float flank = ((x - halfWidth) * tall + y * halfWidth) / side;
              return std::max(-y, flank);
          });
}

}  // namespace norava::smooth_shapes
