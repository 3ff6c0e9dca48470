#include "gui/outline_font.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "gui/geometry.h"

namespace norava {

namespace {

// Capitals of 7 pixels on a baseline below the ninth row, as the bitmap fonts have them.
constexpr float kPixelsPerUnit = 7.0f / 727.0f;
constexpr float kBaseline = 9.0f;
constexpr int kRows = 12;
constexpr int kCurveSteps = 8;
// Letters may be this much wider or narrower than the bitmap's, in pixels.
constexpr float kWidthTolerance = 0.3f;

// Adds up how much of each pixel lies to the right of the lines drawn so far, signed by their
// direction; the sums along a row are the coverage of the closed shape.
class AreaRaster {
  public:
    AreaRaster(int columns, int rows)
        : width(columns), height(rows), cells(static_cast<size_t>((columns + 2) * rows)) {}

    void Line(CPointF from, CPointF to) {
        if (from.y == to.y) return;
        const float direction = from.y < to.y ? 1.0f : -1.0f;
        if (from.y > to.y) std::swap(from, to);
        const float slope = (to.x - from.x) / (to.y - from.y);
        const int first = std::max(0, static_cast<int>(std::floor(from.y)));
        const int last = std::min(height, static_cast<int>(std::ceil(to.y)));
        for (int y = first; y < last; ++y) {
            const float top = std::max(from.y, static_cast<float>(y));
            const float bottom = std::min(to.y, static_cast<float>(y + 1));
            RowPart(y, from.x + slope * (top - from.y), from.x + slope * (bottom - from.y),
                    direction * (bottom - top));
        }
    }

    [[nodiscard]] std::vector<uint8_t> GetCoverage() const {
        std::vector<uint8_t> coverage;
        for (int y = 0; y < height; ++y) {
            float sum = 0.0f;
            for (int x = 0; x < width; ++x) {
                sum += cells[Index(x, y)];
                coverage.push_back(
                    static_cast<uint8_t>(std::min(1.0f, std::fabs(sum)) * 255.0f + 0.5f));
            }
        }
        return coverage;
    }

  private:
    [[nodiscard]] size_t Index(int x, int y) const {
        return static_cast<size_t>(y * (width + 2) + x);
    }

    // A piece of a line within one row, `share` of the row's height high: cut at the columns.
    void RowPart(int y, float x0, float x1, float share) {
        const auto end = static_cast<float>(width);
        x0 = std::clamp(x0, 0.0f, end);
        x1 = std::clamp(x1, 0.0f, end);
        if (x0 > x1) std::swap(x0, x1);
        const int firstColumn = static_cast<int>(x0);
        const int lastColumn = std::max(firstColumn, static_cast<int>(std::ceil(x1)) - 1);
        for (int column = firstColumn; column <= lastColumn; ++column) {
            const auto left = static_cast<float>(column);
            const float a = std::max(x0, left), b = std::min(x1, left + 1.0f);
            const float part = x1 > x0 ? share * (b - a) / (x1 - x0) : share;
            const float middle = (a + b) / 2.0f - left;
            cells[Index(column, y)] += part * (1.0f - middle);
            cells[Index(column + 1, y)] += part * middle;
        }
    }

    int width, height;
    std::vector<float> cells;
};

// Calls line(from, to) for all of an outline, curves cut to pieces, contours closed.
template <typename UseLine>
void WalkOutline(const char* outline, const UseLine& line) {
    CPointF start, pen;
    const auto number = [&outline] {
        char* end = nullptr;
        const float value = std::strtof(outline, &end);
        outline = end;
        return value;
    };
    const auto point = [&number] {
        const float x = number();
        return CPointF(x, number());
    };
    while (*outline != '\0') {
        const char command = *outline++;
        if (command == 'M') {
            line(pen, start);
            start = pen = point();
        } else if (command == 'L') {
            do {
                const CPointF to = point();
                line(pen, to);
                pen = to;
            } while (*outline == ' ');
        } else if (command == 'C') {
            const CPointF from = pen, a = point(), b = point(), to = point();
            for (int i = 1; i <= kCurveSteps; ++i) {
                const float t = static_cast<float>(i) / kCurveSteps, u = 1.0f - t;
                const float wf = u * u * u, wa = 3 * u * u * t, wb = 3 * u * t * t, wt = t * t * t;
                const CPointF next(wf * from.x + wa * a.x + wb * b.x + wt * to.x,
                                   wf * from.y + wa * a.y + wb * b.y + wt * to.y);
                line(pen, next);
                pen = next;
            }
        } else {
            return;
        }
    }
    line(pen, start);
}

struct Extent {
    float left = 1e9f, right = -1e9f;
    void Add(float x) { left = std::min(left, x), right = std::max(right, x); }
    [[nodiscard]] float Width() const { return right - left; }
    [[nodiscard]] float Middle() const { return (left + right) / 2.0f; }
};

// Where a bitmap letter has ink; pixels that it only touches count by their strength.
Extent BitmapExtent(const BitmapFont::Glyph& glyph) {
    float strongest[BitmapFont::kMaxGlyphSide] = {};
    for (size_t p = 0; p < glyph.pixels.size(); p += 2) {
        const float ink = static_cast<float>(255 - glyph.pixels[p + 1]) / 255.0f;
        float& column = strongest[glyph.pixels[p] & 0x0F];
        column = std::max(column, ink);
    }
    Extent extent;
    for (int x = 0; x < BitmapFont::kMaxGlyphSide; ++x) {
        if (strongest[x] < 0.1f) continue;
        const auto left = static_cast<float>(x);
        extent.left = std::min(extent.left, left + 1.0f - strongest[x]);
        extent.right = std::max(extent.right, left + strongest[x]);
    }
    return extent;
}

}  // namespace

const OutlineFont::Glyphs& OutlineFont::GetGlyphs(int scale) const {
    const int known = std::clamp(scale, 2, kMaxScale);
    Scaled& scaled = scales[static_cast<size_t>(known)];
    std::call_once(scaled.made, [&] {
        scaled.glyphs = std::make_unique<Glyphs>();
        for (int i = 0; i < BitmapFont::kGlyphs; ++i)
            (*scaled.glyphs)[static_cast<size_t>(i)] = MakeGlyph(i, known);
    });
    return *scaled.glyphs;
}

OutlineFont::Glyph OutlineFont::MakeGlyph(int index, int scale) const {
    const BitmapFont::Glyph drawn = bitmap.GetGlyph(index);
    const Extent wanted = BitmapExtent(drawn);
    Extent ink;
    const char* const outline = outlines[static_cast<size_t>(index)];
    WalkOutline(outline, [&ink](CPointF from, CPointF to) {
        if (from.x == to.x && from.y == to.y) return;
        ink.Add(from.x), ink.Add(to.x);
    });
    if (drawn.pixels.empty() || ink.Width() <= 0.0f) return {};

    const float natural = ink.Width() * kPixelsPerUnit;
    const float width =
        std::clamp(natural, wanted.Width() - kWidthTolerance, wanted.Width() + kWidthTolerance);
    const auto k = static_cast<float>(scale);
    const float stretch = width / natural * kPixelsPerUnit * k;
    // The left edge, most often a stem's, lies on a stored pixel.
    const float left = std::round((wanted.Middle() - width / 2.0f) * k);

    Glyph glyph;
    glyph.left = static_cast<int>(left) - 1;
    glyph.width = static_cast<int>(std::ceil(width * k)) + 3;
    glyph.height = kRows * scale;
    AreaRaster raster(glyph.width, glyph.height);
    const auto place = [&](CPointF point) {
        return CPointF((point.x - ink.left) * stretch + 1.0f,
                       (kBaseline - point.y * kPixelsPerUnit) * k);
    };
    WalkOutline(outline, [&](CPointF from, CPointF to) { raster.Line(place(from), place(to)); });
    glyph.coverage = raster.GetCoverage();
    return glyph;
}

}  // namespace norava
