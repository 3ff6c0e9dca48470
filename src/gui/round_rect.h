#pragma once

#include <array>
#include <cstdint>

namespace norava {

// A rectangle with elliptic corners in the pixel grid, asked row by row how much of each pixel it
// covers. Rows are sampled at 16 heights, columns exactly; only the four basic operations and the
// square root are used, so the picture is the same on every machine.
class RoundRect {
  public:
    // Edges on the pixel grid; the radii are limited to half the sides.
    RoundRect(double leftEdge, double topEdge, double rightEdge, double bottomEdge, double radiusX,
              double radiusY);

    // The shape with all edges moved inwards, and the radii shortened by the same.
    [[nodiscard]] RoundRect Inset(double by) const;

    void SelectRow(int row);
    // Covered part of the pixel in this column of the selected row, 0 .. 1.
    [[nodiscard]] double Coverage(int column) const;
    // The columns of the selected row that are covered whole: first, and one past the last.
    [[nodiscard]] int64_t GetFullBegin() const { return fullBegin; }
    [[nodiscard]] int64_t GetFullEnd() const { return fullEnd; }

  private:
    static constexpr int kSamples = 16;
    struct Span {
        double begin, end;
    };

    [[nodiscard]] Span SpanAt(double y) const;

    double left, top, right, bottom;
    double rx, ry;
    std::array<Span, kSamples> spans{};
    int64_t fullBegin = 0;
    int64_t fullEnd = 0;
};

}  // namespace norava
