#include "gui/round_rect.h"

#include <algorithm>
#include <cmath>

namespace norava {

namespace {

// Also for a radius that is no number.
double LimitedRadius(double radius, double side) {
    return radius > 0.0 ? std::min(radius, std::max(side, 0.0) / 2.0) : 0.0;
}

}  // namespace

RoundRect::RoundRect(double leftEdge, double topEdge, double rightEdge, double bottomEdge,
                     double radiusX, double radiusY)
    : left(leftEdge),
      top(topEdge),
      right(rightEdge),
      bottom(bottomEdge),
      rx(LimitedRadius(radiusX, rightEdge - leftEdge)),
      ry(LimitedRadius(radiusY, bottomEdge - topEdge)) {
    if (rx == 0.0 || ry == 0.0) rx = ry = 0.0;
}

RoundRect RoundRect::Inset(double by) const {
    return {left + by, top + by, right - by, bottom - by, rx - by, ry - by};
}

RoundRect::Span RoundRect::SpanAt(double y) const {
    if (y < top || y >= bottom || left >= right) return {left, left};
    // Ellipse: x = rx (1 - sqrt(1 - t^2)), t from 0 at the corner's inner end to 1 at the edge.
    const double depth = std::min(y - top, bottom - y);
    if (depth >= ry) return {left, right};
    const double t = (ry - depth) / ry;
    const double cut = rx * (1.0 - std::sqrt(1.0 - t * t));
    return {left + cut, right - cut};
}

void RoundRect::SelectRow(int row) {
    double latestBegin = left;
    double earliestEnd = right;
    for (int i = 0; i < kSamples; ++i) {
        Span& span = spans[static_cast<size_t>(i)];
        span = SpanAt(row + (i + 0.5) / kSamples);
        latestBegin = std::max(latestBegin, span.begin);
        earliestEnd = std::min(earliestEnd, span.end);
    }
    fullBegin = static_cast<int64_t>(std::ceil(latestBegin));
    fullEnd = std::max(fullBegin, static_cast<int64_t>(std::floor(earliestEnd)));
}

double RoundRect::Coverage(int column) const {
    double covered = 0.0;
    for (const Span& span : spans)
        covered += std::max(0.0, std::min(span.end, column + 1.0) -
                                     std::max(span.begin, static_cast<double>(column)));
    return covered / kSamples;
}

}  // namespace norava
