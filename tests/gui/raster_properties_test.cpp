#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "gui/graphic_buffer.h"
#include "gui/pictures.h"
#include "gui/plain_raster.h"

// What must hold for every drawing, tried with drawings made by chance.
namespace norava {
namespace {

constexpr int kMax = std::numeric_limits<int>::max();
constexpr int kMin = std::numeric_limits<int>::min();
constexpr CSize kCanvasSize(61, 47);

struct Drawing {
    std::string name;
    std::function<void(CGraphicBuffer&)> draw;
};

// Drawings with coordinates round the canvas, now and then far outside of every range.
class Chance {
  public:
    explicit Chance(uint32_t seed) : engine(seed) {
        picture.SetSize(CSize(40, 30));
        test::FillWithNoise(picture, seed);
        picture.SetHasAlpha(seed % 2 == 0);
    }

    int Number(int low, int high) { return std::uniform_int_distribution<>(low, high)(engine); }
    int Coordinate() {
        constexpr int kExtremes[] = {kMin,   kMin + 1, kMax,    kMax - 1,
                                     -40000, 40000,    1 << 30, -(1 << 30)};
        return Number(0, 12) == 0 ? kExtremes[Number(0, 7)] : Number(-20, 80);
    }
    CRect Rect() { return {Coordinate(), Coordinate(), Coordinate(), Coordinate()}; }
    CColor Color() {
        const int alpha = Number(0, 2) == 0 ? 255 : Number(0, 255);
        return {Number(0, 255), Number(0, 255), Number(0, 255), alpha};
    }
    std::string Text() {
        std::string text;
        for (int i = Number(0, 12); i > 0; --i)
            text += static_cast<char>(Number(1, 255));
        return text;
    }

    // Drawings that look the same in parts as in one go.
    Drawing Divisible() {
        const CRect rect = Rect();
        const CColor color = Color();
        const CPoint from(Coordinate(), Coordinate());
        const auto alpha = static_cast<unsigned char>(Number(0, 255));
        const int kind = Number(0, 5), width = Number(1, 9), align = Number(0, 2);
        const auto radius = static_cast<float>(Number(-1, 30));
        const std::string text = Text();
        return {"divisible " + std::to_string(kind), [=, this](CGraphicBuffer& canvas) {
                    canvas.SetFillColor(color);
                    canvas.SetLineColor(color);
                    canvas.SetTextColor(color);
                    canvas.SetLineWidth(width);
                    if (kind == 0) canvas.FillRect(rect);
                    if (kind == 1) canvas.DrawRect(rect);
                    if (kind == 2) canvas.DrawImage(&picture, rect, from, alpha);
                    if (kind == 3) DrawAligned(canvas, text, rect, align, alpha % 2 == 0);
                    if (kind >= 4)
                        canvas.DrawRectWithRoundCorner(rect, kind == 4, radius, radius / 2.0f);
                }};
    }

    Drawing Any() {
        const CRect rect = Rect();
        const CColor a = Color(), b = Color(), c = Color(), d = Color();
        const int kind = Number(0, 6), width = Number(1, 40);
        const CPoint from(Coordinate(), Coordinate()), to(Coordinate(), Coordinate());
        if (kind >= 5) return Divisible();
        return {"any " + std::to_string(kind), [=](CGraphicBuffer& canvas) {
                    canvas.SetLineColor(a);
                    canvas.SetLineWidth(width);
                    if (kind == 0) canvas.FillRect(rect, a, b, c, d);
                    if (kind == 1) canvas.DrawLine(from, to);
                    if (kind == 2) canvas.DrawShadow(rect);
                    if (kind == 3) canvas.SetColorAt(from.x, from.y, a);
                    if (kind == 4)
                        canvas.DrawBasicLine(from.x + 0.3, from.y - 0.7, to.x, to.y * 0.9, a);
                }};
    }

  private:
    static void DrawAligned(CGraphicBuffer& canvas, const std::string& text, CRect rect, int align,
                            bool bold) {
        if (align == 0) canvas.SetTextAlignLeft();
        if (align == 1) canvas.SetTextAlignCenter();
        if (align == 2) canvas.SetTextAlignRight();
        bold ? canvas.SetFontBold() : canvas.SetFontNormal();
        canvas.DrawText(text.c_str(), rect, false);
    }

    std::mt19937 engine;
    CGraphicBuffer picture;
};

struct NoisyCanvas : CGraphicBuffer {
    NoisyCanvas(int scale, uint32_t seed) : CGraphicBuffer(scale) {
        SetSize(kCanvasSize);
        test::FillWithNoise(*this, seed);
    }
};

class RasterProperty : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Scales, RasterProperty, testing::Range(1, 5));

TEST_P(RasterProperty, NothingLeavesTheClip) {
    for (uint32_t seed = 0; seed < 600; ++seed) {
        Chance chance(seed);
        NoisyCanvas canvas(GetParam(), seed);
        const NoisyCanvas untouched(GetParam(), seed);
        const CRect clip(chance.Number(0, 60), chance.Number(0, 46), chance.Number(1, 40),
                         chance.Number(1, 40));
        ASSERT_TRUE(canvas.SetClipRect(clip));
        const Drawing drawing = chance.Any();
        drawing.draw(canvas);
        SCOPED_TRACE(drawing.name + ", seed " + std::to_string(seed));
        // Put the inside back; then nothing may differ.
        canvas.SetClipRect();
        canvas.DrawImage(&untouched, clip, clip.GetLeftTop());
        test::ExpectSamePixels(canvas, untouched);
        if (HasFatalFailure()) return;
    }
}

TEST_P(RasterProperty, TwoClippedHalvesAreOneDrawing) {
    for (uint32_t seed = 0; seed < 600; ++seed) {
        Chance chance(seed + 10000);
        NoisyCanvas whole(GetParam(), seed), halves(GetParam(), seed);
        const Drawing drawing = chance.Divisible();
        drawing.draw(whole);
        const bool upright = chance.Number(0, 1) == 0;
        const int cut = chance.Number(1, upright ? 60 : 46);
        const CRect first = upright ? CRect(0, 0, cut, 47) : CRect(0, 0, 61, cut);
        const CRect second = upright ? CRect(cut, 0, 61 - cut, 47) : CRect(0, cut, 61, 47 - cut);
        for (const CRect& half : {first, second}) {
            ASSERT_TRUE(halves.SetClipRect(half));
            drawing.draw(halves);
        }
        SCOPED_TRACE(drawing.name + ", seed " + std::to_string(seed));
        test::ExpectSamePixels(whole, halves);
        if (HasFatalFailure()) return;
    }
}

// All but gradients, letters and round corners, which use the finer grid, draw the picture of scale
// 1 enlarged.
TEST_P(RasterProperty, ScalesPixelByPixel) {
    for (uint32_t seed = 0; seed < 200; ++seed) {
        Chance chance(seed + 20000);
        const Drawing drawing = chance.Any();
        if (drawing.name == "any 0" || drawing.name > "divisible 2") continue;
        NoisyCanvas small(1, seed), large(GetParam(), seed);
        drawing.draw(small);
        drawing.draw(large);
        CGraphicBuffer enlarged(GetParam());
        enlarged.SetSize(kCanvasSize);
        enlarged.DrawImage(&small, CRect({0, 0}, kCanvasSize), {0, 0});
        SCOPED_TRACE(drawing.name + ", seed " + std::to_string(seed));
        test::ExpectSamePixels(large, enlarged);
        if (HasFatalFailure()) return;
    }
}

}  // namespace
}  // namespace norava
