#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>

#include "gui/graphic_buffer.h"
#include "gui/pictures.h"
#include "gui/plain_raster.h"

// What must hold for every drawing, tried with drawings made by chance.
namespace norava {
namespace {

constexpr int kMax = std::numeric_limits<int>::max();
constexpr int kMin = std::numeric_limits<int>::min();
constexpr CSize kCanvasSize(61, 47);

enum Kind { fill, frame, pixel, line, basicLine, shadow, copy, letters, disc, ring, gradient };

// With coordinates round the canvas, now and then far outside of every range.
class Drawing {
  public:
    Drawing(uint32_t seed, const std::vector<Kind>& kinds)
        : engine(seed), kind(kinds[static_cast<size_t>(Number(0, int(kinds.size()) - 1))]) {
        picture.SetSize(CSize(40, 30));
        test::FillWithNoise(picture, seed);
        picture.SetHasAlpha(seed % 2 == 0);
        for (int i = Number(0, 12); i > 0; --i)
            text += static_cast<char>(Number(1, 255));
    }
    int Number(int low, int high) { return std::uniform_int_distribution<>(low, high)(engine); }

    void Draw(CGraphicBuffer& canvas) const {
        canvas.SetFillColor(color);
        canvas.SetLineColor(color);
        canvas.SetTextColor(color);
        canvas.SetLineWidth(width);
        if (align == 1) canvas.SetTextAlignCenter();
        if (align == 2) canvas.SetTextAlignRight();
        alpha % 2 == 0 ? canvas.SetFontBold() : canvas.SetFontNormal();
        switch (kind) {
            case fill:
                return canvas.FillRect(rect);
            case frame:
                return canvas.DrawRect(rect);
            case pixel:
                return canvas.SetColorAt(from.x, from.y, color);
            case line:
                return canvas.DrawLine(from, to);
            case basicLine:
                return canvas.DrawBasicLine(from.x + 0.3, from.y - 0.7, to.x, to.y * 0.9, color);
            case shadow:
                return canvas.DrawShadow(rect);
            case copy:
                return canvas.DrawImage(&picture, rect, from, alpha);
            case letters:
                return static_cast<void>(canvas.DrawText(text.c_str(), rect, false));
            case disc:
            case ring:
                return canvas.DrawRectWithRoundCorner(rect, kind == disc, radius, radius / 2.0f);
            case gradient:
                return canvas.FillRect(rect, color, second, CColor(200, alpha), CColor(alpha));
        }
    }

  private:
    int Coordinate() {
        constexpr int kExtremes[] = {kMin,   kMin + 1, kMax,    kMax - 1,
                                     -40000, 40000,    1 << 30, -(1 << 30)};
        return Number(0, 12) == 0 ? kExtremes[Number(0, 7)] : Number(-20, 80);
    }
    CColor Color() {
        const int opacity = Number(0, 2) == 0 ? 255 : Number(0, 255);
        return {Number(0, 255), Number(0, 255), Number(0, 255), opacity};
    }

    std::mt19937 engine;
    const Kind kind;
    const CRect rect{Coordinate(), Coordinate(), Coordinate(), Coordinate()};
    const CPoint from{Coordinate(), Coordinate()}, to{Coordinate(), Coordinate()};
    const CColor color = Color(), second = Color();
    const uint8_t alpha = static_cast<uint8_t>(Number(0, 255));
    const int width = Number(1, 40), align = Number(0, 2);
    const float radius = static_cast<float>(Number(-1, 30));
    std::string text;
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
    for (uint32_t seed = 0; seed < 600 && !HasFatalFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Drawing drawing(seed, {fill, frame, pixel, line, basicLine, shadow, copy, letters, disc,
                               ring, gradient});
        NoisyCanvas canvas(GetParam(), seed);
        const NoisyCanvas untouched(GetParam(), seed);
        const CRect clip(drawing.Number(0, 60), drawing.Number(0, 46), drawing.Number(1, 40),
                         drawing.Number(1, 40));
        ASSERT_TRUE(canvas.SetClipRect(clip));
        drawing.Draw(canvas);
        // Put the inside back; then nothing may differ.
        canvas.SetClipRect();
        canvas.DrawImage(&untouched, clip, clip.GetLeftTop());
        test::ExpectSamePixels(canvas, untouched);
    }
}

// All but lines, which are left out where they end beside the clip, and gradients, which begin
// where it does.
TEST_P(RasterProperty, TwoClippedHalvesAreOneDrawing) {
    for (uint32_t seed = 10000; seed < 10600 && !HasFatalFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Drawing drawing(seed, {fill, frame, copy, letters, disc, ring});
        NoisyCanvas whole(GetParam(), seed), halves(GetParam(), seed);
        drawing.Draw(whole);
        const bool upright = drawing.Number(0, 1) == 0;
        const int cut = drawing.Number(1, upright ? 60 : 46);
        for (const CRect half : {upright ? CRect(0, 0, cut, 47) : CRect(0, 0, 61, cut),
                                 upright ? CRect(cut, 0, 61, 47) : CRect(0, cut, 61, 47)}) {
            ASSERT_TRUE(halves.SetClipRect(half));
            drawing.Draw(halves);
        }
        test::ExpectSamePixels(whole, halves);
    }
}

// All but gradients, letters and round corners, which use the finer grid, draw the picture of scale
// 1 enlarged.
TEST_P(RasterProperty, ScalesPixelByPixel) {
    for (uint32_t seed = 20000; seed < 20200 && !HasFatalFailure(); ++seed) {
        SCOPED_TRACE(seed);
        const Drawing drawing(seed, {fill, frame, pixel, line, basicLine, shadow, copy});
        NoisyCanvas small(1, seed), large(GetParam(), seed);
        drawing.Draw(small);
        drawing.Draw(large);
        CGraphicBuffer enlarged(GetParam());
        enlarged.SetSize(kCanvasSize);
        enlarged.DrawImage(&small, CRect({0, 0}, kCanvasSize), {0, 0});
        test::ExpectSamePixels(large, enlarged);
    }
}

}  // namespace
}  // namespace norava
