#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "gui/graphic_buffer.h"

namespace norava {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

struct LineTest : testing::Test {
    LineTest() {
        canvas.SetSize(CSize(30, 30));
        canvas.Clear(CColor(200));
    }
    [[nodiscard]] int At(int x, int y) const { return canvas.GetColorAt(x, y).red; }
    [[nodiscard]] int CountTouched() const {
        int touched = 0;
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 30; ++x)
                touched += At(x, y) != 200;
        return touched;
    }
    CGraphicBuffer canvas;
};

// Whole-pixel ends give the weights 254, 0, 0, 0; a weight of 0 still darkens by the shift.
TEST_F(LineTest, SplatsOnFourPixelsAStep) {
    canvas.DrawBasicLine(10, 10, 10.4, 10, CColor(0));
    EXPECT_EQ(At(10, 10), (200 * 1) >> 8);
    for (const CPoint p : {CPoint(11, 10), CPoint(10, 11), CPoint(11, 11)})
        EXPECT_EQ(At(p.x, p.y), (200 * 255) >> 8);
    EXPECT_EQ(CountTouched(), 4);

    canvas.Clear(CColor(200));
    canvas.DrawBasicLine(10.5, 10.25, 10.9, 10.25, CColor(0, 128));
    const int weights[2][2] = {{(127 * 191) >> 8, (128 * 191) >> 8},
                               {(127 * 64) >> 8, (128 * 64) >> 8}};
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 2; ++x) {
            const int alpha = (weights[y][x] * 128) >> 8;
            EXPECT_EQ(At(10 + x, 10 + y), (200 * (255 - alpha)) >> 8);
        }
    }
}

TEST_F(LineTest, NeedsALengthAndAPlace) {
    canvas.DrawBasicLine(10, 10, 10, 10, CColor(0));
    canvas.DrawBasicLine(-9, 5, -0.5, 25, CColor(0));
    canvas.DrawBasicLine(29.5, 5, 40, 25, CColor(0));
    canvas.DrawBasicLine(5, -2, 25, -0.1, CColor(0));
    canvas.DrawLine(CPointF(kInfinity, 0), CPointF(0, kInfinity));
    canvas.DrawLine(CPointF(0, 0), CPointF(kInfinity, std::nanf("")));
    canvas.DrawLine(CPointF(-3e38f, 1), CPointF(3e38f, 1));
    EXPECT_EQ(CountTouched(), 0);
}

// A stroke that comes from far away must not take longer for it, and keeps to its fixed-point path.
TEST_F(LineTest, ComesFromFarAway) {
    canvas.SetLineColor(CColor(0));
    canvas.DrawLine(CPoint(-1000000000, 7), CPoint(1000000000, 7));
    for (int x = 0; x < 30; ++x)
        EXPECT_LT(At(x, 7), 2);
    EXPECT_EQ(CountTouched(), 60);
}

TEST_F(LineTest, MovesThePen) {
    canvas.SetLineColor(CColor(0));
    canvas.MoveTo(CPointF(2, 2));
    canvas.LineTo(CPointF(6, 2));
    canvas.LineTo(CPointF(6, 6));
    EXPECT_EQ(At(4, 2), 0);
    EXPECT_EQ(At(6, 4), 0);
    EXPECT_EQ(At(4, 4), 200);
}

// Three strokes, 0.83 pixels apart, on both sides of the line: 9.17, 10 and 10.83 cover four rows.
TEST_F(LineTest, IsThickAroundItsMiddle) {
    canvas.SetLineColor(CColor(0));
    canvas.SetLineWidth(3);
    canvas.DrawLine(CPoint(5, 10), CPoint(25, 10));
    EXPECT_EQ(At(15, 8), 200);
    EXPECT_NEAR(At(15, 9), 200 * 0.17, 6);
    EXPECT_LT(At(15, 10), 3);
    EXPECT_NEAR(At(15, 11), 200 * 0.17, 6);
    EXPECT_GT(At(15, 12), 198);
}

TEST_F(LineTest, ShadowLiesInsideAndMirrors) {
    canvas.DrawShadow(CRect(2, 2, 26, 26));
    EXPECT_EQ(canvas.GetLineColor(), CColor(0, 197));
    EXPECT_EQ(At(2, 2), 199);
    EXPECT_EQ(At(10, 10), (200 * (255 - 197)) >> 8);
    EXPECT_EQ(At(10, 2), (200 * (255 - 9)) >> 8);
    EXPECT_EQ(At(6, 9), (200 * (255 - 76)) >> 8);
    for (int i = 0; i < 30; ++i) {
        EXPECT_EQ(At(i, 1), 200);
        EXPECT_EQ(At(1, i), 200);
        for (int k = 2; k < 11; ++k)
            EXPECT_NEAR(At(i, k), At(i, 29 - k), 2);
        for (int k = 2; k < 11; ++k)
            EXPECT_NEAR(At(i, k), At(k, i), 1) << i << ", " << k;
    }
}

}  // namespace
}  // namespace norava
