#include <algorithm>
#include <cmath>

#include "gui/graphic_buffer.h"
#include "gui/pixel_rows.h"

namespace norava {

namespace {

constexpr double kFixedOne = 65536.0;
constexpr int64_t kFixedUnit = 65536;

// Beyond this a stroke's fixed-point position would not fit its 64 bits.
constexpr double kFarthestPixel = 1073741824.0;

// Strokes of a thick line lie closer than a pixel, so that they overlap without a gap.
constexpr double kStrokeSpacing = 0.83;

constexpr int kShadowDepth = 9;

// Alphas of the shadow from the outermost line and column (first) to the innermost.
constexpr uint8_t kShadow[kShadowDepth][kShadowDepth] = {
    {0, 0, 0, 0, 2, 3, 5, 6, 9},
    {0, 0, 0, 1, 5, 8, 12, 16, 19},
    {0, 0, 1, 6, 11, 17, 24, 31, 37},
    {0, 1, 6, 13, 21, 32, 42, 52, 59},
    {2, 4, 11, 21, 35, 48, 62, 76, 87},
    {3, 8, 17, 32, 48, 68, 88, 108, 123},
    {5, 12, 24, 42, 63, 88, 113, 135, 152},
    {6, 16, 31, 52, 77, 108, 135, 158, 177},
    {9, 19, 37, 59, 87, 123, 152, 177, 197},
};

int64_t ToFixed(double value) {
    return static_cast<int64_t>(value * kFixedOne);
}

bool IsNear(double coordinate) {
    return std::abs(coordinate) <= kFarthestPixel;
}

struct StepRange {
    int64_t first;
    int64_t last;  // exclusive

    // Leaves out the steps with which a position can not yet or no longer lie in [low, high].
    void Narrow(int64_t start, int64_t step, int64_t low, int64_t high) {
        if (step == 0) {
            if (start < low || start > high) last = first;
            return;
        }
        const int64_t a = (low - start) / step;
        const int64_t b = (high - start) / step;
        first = std::max(first, std::min(a, b) - 1);
        last = std::min(last, std::max(a, b) + 2);
    }
};

}  // namespace

void CGraphicBuffer::BlendInsideClip(int64_t x, int64_t y, CColor color, uint32_t alpha) {
    if (x < clip.left || x >= clip.GetRight() || y < clip.top || y >= clip.GetBottom()) return;
    const uint32_t word = (color.GetWord() & 0x00FFFFFFu) | alpha << 24;
    BlendBlock(BlockAt(static_cast<int>(x), static_cast<int>(y)), word);
}

void CGraphicBuffer::DrawBasicLine(double x1, double y1, double x2, double y2, CColor color) {
    if (!IsSafe() || !IsNear(x1) || !IsNear(y1) || !IsNear(x2) || !IsNear(y2)) return;
    const int lastX = clip.GetRight() - 1;
    const int lastY = clip.GetBottom() - 1;
    if ((x1 < clip.left && x2 < clip.left) || (x1 > lastX && x2 > lastX)) return;
    if ((y1 < clip.top && y2 < clip.top) || (y1 > lastY && y2 > lastY)) return;
    const double dx = x2 - x1;
    const double dy = y2 - y1;
    const double length = std::sqrt(dx * dx + dy * dy);
    if (length == 0.0) return;

    const int64_t startX = ToFixed(x1);
    const int64_t startY = ToFixed(y1);
    const int64_t stepX = ToFixed(dx / length);
    const int64_t stepY = ToFixed(dy / length);
    // One step a pixel of length. Each splat covers the pixel and its right and lower neighbours.
    StepRange steps{0, (ToFixed(length) + kFixedUnit - 1) / kFixedUnit};
    steps.Narrow(startX, stepX, (int64_t{clip.left} - 1) * kFixedUnit,
                 clip.GetRight() * kFixedUnit);
    steps.Narrow(startY, stepY, (int64_t{clip.top} - 1) * kFixedUnit,
                 clip.GetBottom() * kFixedUnit);

    const auto withAlpha = [color](uint32_t weight) {
        return color.alpha == 255 ? weight : (weight * color.alpha) >> 8;
    };
    for (int64_t i = steps.first; i < steps.last; ++i) {
        const int64_t px = startX + i * stepX;
        const int64_t py = startY + i * stepY;
        const int64_t x = px >> 16;
        const int64_t y = py >> 16;
        const auto fx = static_cast<uint32_t>(px >> 8 & 0xFF);
        const auto fy = static_cast<uint32_t>(py >> 8 & 0xFF);
        BlendInsideClip(x, y, color, withAlpha((255 - fx) * (255 - fy) >> 8));
        BlendInsideClip(x + 1, y, color, withAlpha(fx * (255 - fy) >> 8));
        BlendInsideClip(x, y + 1, color, withAlpha((255 - fx) * fy >> 8));
        BlendInsideClip(x + 1, y + 1, color, withAlpha(fx * fy >> 8));
    }
}

void CGraphicBuffer::DrawLine(CPointF from, CPointF to) {
    pen = to;
    const double dx = double{to.x} - from.x;
    const double dy = double{to.y} - from.y;
    const double length = std::sqrt(dx * dx + dy * dy);
    if (!IsSafe() || !(length > 0.0)) return;
    // Strokes lie side by side along the line's normal, around its middle.
    const double normalX = dy / length * kStrokeSpacing;
    const double normalY = -dx / length * kStrokeSpacing;
    const double half = lineWidth > 1 ? lineWidth / 2.0 - 0.5 : 0.0;
    double x1 = from.x - normalX * half, y1 = from.y - normalY * half;
    double x2 = to.x - normalX * half, y2 = to.y - normalY * half;
    for (int stroke = 0; stroke < std::max(lineWidth, 1); ++stroke) {
        DrawBasicLine(x1, y1, x2, y2, lineColor);
        x1 += normalX, y1 += normalY;
        x2 += normalX, y2 += normalY;
    }
}

void CGraphicBuffer::DrawShadow(CRect rect) {
    if (!IsSafe()) return;
    DrawShadowCorners(rect);
    DrawShadowEdges(rect);
}

void CGraphicBuffer::DrawShadowCorners(CRect rect) {
    const CColor black(0);
    const int64_t right = int64_t{rect.left} + rect.width - 1;
    const int64_t bottom = int64_t{rect.top} + rect.height - 1;
    for (int row = 0; row < kShadowDepth; ++row) {
        for (int column = 0; column < kShadowDepth; ++column) {
            const uint32_t alpha = kShadow[row][column];
            const int64_t x = int64_t{rect.left} + column;
            const int64_t y = int64_t{rect.top} + row;
            BlendInsideClip(x, y, black, alpha);
            BlendInsideClip(right - column, y, black, alpha);
            BlendInsideClip(x, bottom - row, black, alpha);
            BlendInsideClip(right - column, bottom - row, black, alpha);
        }
    }
}

void CGraphicBuffer::DrawShadowEdges(CRect rect) {
    const auto edge = [](int64_t from, int64_t offset) {
        return static_cast<float>(SaturatedInt(from + offset));
    };
    const float left = edge(rect.left, kShadowDepth);
    const float right = edge(rect.GetRight(), -kShadowDepth);
    const float top = edge(rect.top, kShadowDepth);
    const float bottom = edge(rect.GetBottom(), -kShadowDepth);
    constexpr int kInnermost = kShadowDepth - 1;
    for (int i = 0; i < kShadowDepth; ++i) {
        SetLineColor(CColor(0, kShadow[i][kInnermost]));
        const float upper = edge(rect.top, i);
        const float lower = edge(rect.GetBottom(), -1 - i);
        DrawLine(CPointF(left, upper), CPointF(right, upper));
        DrawLine(CPointF(left, lower), CPointF(right, lower));
    }
    for (int i = 0; i < kShadowDepth; ++i) {
        SetLineColor(CColor(0, kShadow[kInnermost][i]));
        const float leftmost = edge(rect.left, i);
        const float rightmost = edge(rect.GetRight(), -1 - i);
        DrawLine(CPointF(leftmost, top), CPointF(leftmost, bottom));
        DrawLine(CPointF(rightmost, top), CPointF(rightmost, bottom));
    }
}

}  // namespace norava
