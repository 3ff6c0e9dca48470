#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

namespace norava {

// Positions and sizes in logical pixels; y grows downwards. Sums that would pass the range of an
// int stop at its end, so that a rectangle from outside can be of any size and place and still
// means something.
constexpr int SaturatedInt(int64_t value) {
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<int64_t>(value, Limits::min(), Limits::max()));
}

struct CSize {
    int cy = 0;
    int cx = 0;

    constexpr CSize() = default;
    constexpr CSize(int width, int height) : cy(height), cx(width) {}
    constexpr void Set(int width, int height) { *this = CSize(width, height); }

    constexpr bool operator==(const CSize&) const = default;
};

struct CPoint {
    int x = 0;
    int y = 0;

    constexpr CPoint() = default;
    constexpr CPoint(int px, int py) : x(px), y(py) {}
    constexpr void Set(int px, int py) { *this = CPoint(px, py); }
    constexpr void Shift(CSize by) {
        x = SaturatedInt(int64_t{x} + by.cx);
        ShiftY(by.cy);
    }
    constexpr void ShiftY(int by) { y = SaturatedInt(int64_t{y} + by); }

    constexpr bool operator==(const CPoint&) const = default;
};

struct CPointF {
    float x = 0.0f;
    float y = 0.0f;

    constexpr CPointF() = default;
    constexpr CPointF(float px, float py) : x(px), y(py) {}
    constexpr explicit CPointF(CPoint p) : x(static_cast<float>(p.x)), y(static_cast<float>(p.y)) {}
    constexpr void Set(float px, float py) { *this = CPointF(px, py); }

    constexpr bool operator==(const CPointF&) const = default;
};

// Right and bottom edges are exclusive.
struct CRect {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;

    constexpr CRect() = default;
    constexpr CRect(int l, int t, int w, int h) : left(l), top(t), width(w), height(h) {}
    constexpr CRect(int l, int t, CSize size) : CRect(l, t, size.cx, size.cy) {}
    constexpr CRect(CPoint leftTop, CSize size) : CRect(leftTop.x, leftTop.y, size) {}
    constexpr void Set(int l, int t, int w, int h) { *this = CRect(l, t, w, h); }

    [[nodiscard]] constexpr int GetRight() const { return SaturatedInt(int64_t{left} + width); }
    [[nodiscard]] constexpr int GetBottom() const { return SaturatedInt(int64_t{top} + height); }
    [[nodiscard]] constexpr CPoint GetLeftTop() const { return {left, top}; }
    [[nodiscard]] constexpr CSize GetSize() const { return {width, height}; }
    [[nodiscard]] constexpr CPoint GetCenter() const {
        return {SaturatedInt(int64_t{left} + width / 2), SaturatedInt(int64_t{top} + height / 2)};
    }
    [[nodiscard]] constexpr bool IsEmpty() const { return width < 1 || height < 1; }
    [[nodiscard]] constexpr bool IsPointInside(CPoint p) const {
        return left <= p.x && p.x < int64_t{left} + width && top <= p.y &&
               p.y < int64_t{top} + height;
    }

    // What both cover; width or height below 1 when that is nothing.
    [[nodiscard]] constexpr CRect GetIntersection(const CRect& other) const {
        const int l = std::max(left, other.left);
        const int t = std::max(top, other.top);
        const int64_t right = std::min(int64_t{left} + width, int64_t{other.left} + other.width);
        const int64_t bottom = std::min(int64_t{top} + height, int64_t{other.top} + other.height);
        return {l, t, SaturatedInt(right - l), SaturatedInt(bottom - t)};
    }
    [[nodiscard]] constexpr bool Intersects(const CRect& other) const {
        return !GetIntersection(other).IsEmpty();
    }

    constexpr bool operator==(const CRect&) const = default;
};

// The same place for every window there is, with numbers that can be added without care.
inline constexpr int kFurthestPlace = 1 << 24;
constexpr CRect TamedRect(const CRect& rect) {
    const auto place = [](int value) { return std::clamp(value, -kFurthestPlace, kFurthestPlace); };
    const auto length = [](int value) { return std::clamp(value, 0, kFurthestPlace); };
    return {place(rect.left), place(rect.top), length(rect.width), length(rect.height)};
}

}  // namespace norava
