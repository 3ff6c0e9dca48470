#include "gui/graphic_buffer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "gui/pixel_rows.h"
#include "gui/plain_raster.h"

// What neither the reference pictures nor the properties of all drawings (raster_properties_test)
// show: words that are no picture, numbers out of range, and the fast rows against plain formulas.
namespace norava {
namespace {

constexpr int kMax = std::numeric_limits<int>::max();
constexpr int kMin = std::numeric_limits<int>::min();
using Levels = std::vector<int>;

class Canvas : public CGraphicBuffer {
  public:
    Canvas(int width, int height, CColor background = CColor(0), int scale = 1)
        : CGraphicBuffer(scale) {
        SetSize(CSize(width, height));
        Clear(background);
    }
    // Red channels of a row.
    [[nodiscard]] Levels Row(int y) const {
        Levels values;
        for (int x = 0; x < GetSize().cx; ++x)
            values.push_back(GetColorAt(x, y).red);
        return values;
    }
};

TEST(GraphicBuffer, IsEmptyUntilItHasASize) {
    CGraphicBuffer buffer;
    buffer.Clear(CColor(1));
    buffer.FillRect(CRect(0, 0, 5, 5));
    buffer.DrawShadow(CRect(0, 0, 50, 50));
    buffer.DrawRectWithRoundCorner(CRect(0, 0, 50, 50), true, 3, 3);
    buffer.Present(nullptr, CRect(0, 0, 1, 1), {});
    EXPECT_EQ(buffer.DrawText("text", CRect(0, 0, 50, 50), true), CSize(0, 0));
    EXPECT_EQ(buffer.GetColorAt(0, 0), CColor(0, 0));
    EXPECT_EQ(buffer.GetDataAt(0, 0), nullptr);
    for (const CSize size : {CSize(0, 5), CSize(5, -1), CSize(kMin, kMin)}) {
        EXPECT_TRUE(buffer.SetSize(size));
        EXPECT_FALSE(buffer.IsSafe());
    }
    EXPECT_FALSE(buffer.SetSize(CSize(kMax, kMax))) << "refused, not overflowed";
    EXPECT_FALSE(CGraphicBuffer(4).SetSize(CSize(1 << 13, 1 << 13)));
    ASSERT_TRUE(buffer.SetSize(CSize(3, 2)));
    EXPECT_EQ(buffer.GetColorAt(2, 1), CColor(0, 0)) << "a fresh store is transparent";
    buffer.Clear(CColor(9));
    ASSERT_TRUE(buffer.SetSize(CSize(3, 2)));
    EXPECT_EQ(buffer.GetColorAt(2, 1), CColor(9)) << "the same size keeps the pixels";
}

TEST(GraphicBuffer, WritesOnlyItsOwnBlocks) {
    Canvas canvas(3, 2, CColor(0), 2);
    uint32_t* store = canvas.GetDataAt(0, 0);
    uint32_t stray[4] = {};
    for (uint32_t* block : {static_cast<uint32_t*>(nullptr), stray, store - 1, store + 24,
                            store + 23, store + 18, store + 5}) {
        canvas.SetPixelAt(block, 0xFFFFFFFFu);
        canvas.BlendPixelAt(block, 0xFFFFFFFFu);
    }
    EXPECT_EQ(stray[0], 0u);
    canvas.SetColorAt(1, 0, CColor(255, 0, 0));
    // Rows lie bottom-up, and a blend's shift by 8 darkens.
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 6; ++column) {
            const bool inked = row >= 2 && (column == 2 || column == 3);
            EXPECT_EQ(store[row * 6 + column], inked ? 0xFF0000FEu : 0xFF000000u);
        }
    }
    EXPECT_EQ(canvas.GetDataAt(1, 1), store + 14);
}

TEST(GraphicBuffer, KeepsAlphaWhereItBlends) {
    Canvas canvas(4, 2, CColor(100, 100, 100, 33));
    canvas.SetFillColor(CColor(200, 150));
    canvas.FillRect(CRect(0, 0, 2, 1));
    EXPECT_EQ(canvas.GetColorAt(1, 0), CColor((200 * 150 + 100 * 105) >> 8, 33));
    CColor none(255, 0);
    canvas.FillRect(CRect(2, 0, 1, 1), &none);
    EXPECT_EQ(canvas.GetColorAt(2, 0).red, 100) << "alpha 0 does not even darken";
    CColor opaque(255, 255);
    canvas.FillRect(CRect(3, 0, 1, 1), &opaque);
    EXPECT_EQ(canvas.GetColorAt(3, 0).alpha, 255) << "an opaque fill stores the whole word";

    Canvas picture(1, 1, CColor(200, 0));
    canvas.DrawImage(&picture, CRect(0, 1, 1, 1), {0, 0});
    EXPECT_EQ(canvas.GetColorAt(0, 1), CColor(200, 0)) << "without the flag words are copied whole";
    picture.SetHasAlpha(true);
    picture.Clear(CColor(200, 128));
    canvas.DrawImage(&picture, CRect(1, 1, 1, 1), {0, 0});
    EXPECT_EQ(canvas.GetColorAt(1, 1), CColor((200 * 128 + 100 * 127) >> 8, 33));
    canvas.DrawImage(nullptr, CRect(0, 0, 4, 1), {0, 0});
    for (const float alpha : {0.0f, -3.0f, 0.0039f, std::nanf("")})
        canvas.DrawImage(&picture, CRect(2, 1, 1, 1), {0, 0}, alpha);
    EXPECT_EQ(canvas.GetColorAt(2, 1).red, 100);
}

TEST(GraphicBuffer, CutsACopyOnBothSides) {
    Canvas picture(6, 1);
    for (int x = 0; x < 6; ++x)
        picture.SetPixelAt(picture.GetDataAt(x, 0), CColor(x + 1).GetWord());
    const auto copied = [&](CRect to, CPoint from, CRect clip = CRect(0, 0, 8, 1)) {
        Canvas canvas(8, 1);
        canvas.SetClipRect(clip);
        canvas.DrawImage(&picture, to, from);
        return canvas.Row(0);
    };
    EXPECT_EQ(copied({-2, 0, 4, 1}, {0, 0}), Levels({3, 4, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(copied({0, 0, 8, 1}, {0, 0}, {3, 0, 2, 1}), Levels({0, 0, 0, 4, 5, 0, 0, 0}));
    EXPECT_EQ(copied({4, 0, 9, 1}, {4, 0}), Levels({0, 0, 0, 0, 5, 6, 0, 0}));
    EXPECT_EQ(copied({2, 0, 4, 1}, {-1, 0}), Levels({0, 0, 1, 2, 3, 0, 0, 0}))
        << "a cut at the picture's left shortens without moving";
}

TEST(GraphicBuffer, CopiesWithinItselfInReadingOrder) {
    Canvas canvas(5, 1);
    for (int x = 0; x < 5; ++x)
        canvas.SetPixelAt(canvas.GetDataAt(x, 0), CColor(x + 1).GetWord());
    canvas.DrawImage(&canvas, CRect(0, 0, 4, 1), {1, 0});
    EXPECT_EQ(canvas.Row(0), Levels({2, 3, 4, 5, 5})) << "to the left: a move";
    canvas.DrawImage(&canvas, CRect(1, 0, 4, 1), {0, 0});
    EXPECT_EQ(canvas.Row(0), Levels({2, 2, 2, 2, 2})) << "to the right: what was just written";
}

// A stroke that comes from far away must not take longer for it, and keeps to its fixed-point path.
TEST(GraphicBuffer, DrawsLinesFromAnywhere) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    Canvas canvas(30, 30, CColor(200));
    canvas.DrawBasicLine(10, 10, 10, 10, CColor(0));
    canvas.DrawBasicLine(-9, 5, -0.5, 25, CColor(0));
    canvas.DrawBasicLine(29.5, 5, 40, 25, CColor(0));
    canvas.DrawLine(CPointF(kInfinity, 0), CPointF(0, kInfinity));
    canvas.DrawLine(CPointF(0, 0), CPointF(kInfinity, std::nanf("")));
    canvas.DrawLine(CPointF(-3e38f, 7), CPointF(3e38f, 7));
    EXPECT_EQ(canvas.Row(7), Levels(30, 200)) << "no length, or no place";
    canvas.DrawLine(CPoint(-1000000000, 7), CPoint(1000000000, 7));
    for (const int level : canvas.Row(7))
        EXPECT_LT(level, 2);
    EXPECT_EQ(canvas.Row(6), Levels(30, 200));
    EXPECT_EQ(canvas.Row(9), Levels(30, 200));
}

TEST(PixelRows, AgreeWithThePlainFormula) {
    // On both sides of every vector width and chunk.
    for (const size_t count : {0, 1, 2, 3, 5, 7, 8, 9, 15, 31, 63, 64, 65, 130, 4000}) {
        Canvas noise(static_cast<int>(count) + 1, 2);
        test::FillWithNoise(noise, static_cast<uint32_t>(count));
        const std::vector under(noise.GetDataAt(0, 0), noise.GetDataAt(0, 0) + count);
        const std::vector over(noise.GetDataAt(0, 1), noise.GetDataAt(0, 1) + count);
        std::vector<uint32_t> blended = under, colored = under;
        pixel_rows::Blend(blended.data(), over.data(), count);
        const CColor color(200, 100, 50, static_cast<int>(count) & 0xFF);
        pixel_rows::BlendColor(colored.data(), color, count);
        for (size_t i = 0; i < count; ++i) {
            const CColor below = CColor::FromWord(under[i]);
            ASSERT_EQ(blended[i], test::PlainBlend(below, CColor::FromWord(over[i])).GetWord());
            ASSERT_EQ(blended[i], pixel_rows::BlendedWord(under[i], over[i]));
            ASSERT_EQ(colored[i], test::PlainBlend(below, color).GetWord());
        }
        for (const uint8_t opacity : {uint8_t{255}, uint8_t{254}, uint8_t{128}, uint8_t{1}}) {
            std::vector<uint32_t> composed = under;
            pixel_rows::Compose(composed.data(), over.data(), count, opacity);
            for (size_t i = 0; i < count; ++i) {
                const CColor below = CColor::FromWord(under[i]), above = CColor::FromWord(over[i]);
                ASSERT_EQ(composed[i], test::PlainCompose(below, above, opacity).GetWord());
                ASSERT_EQ(composed[i], pixel_rows::ComposedWord(under[i], over[i], opacity));
            }
        }
    }
}

// Hosts and damaged files can hand over anything; no sum may wrap round.
TEST(Rect, EndsAtTheRangeOfAnInt) {
    const CRect huge(kMax - 1, kMin, kMax, kMin);
    EXPECT_EQ(huge.GetRight(), kMax);
    EXPECT_EQ(huge.GetBottom(), kMin);
    EXPECT_FALSE(huge.IsPointInside({kMax, kMin}));
    EXPECT_TRUE(CRect(kMin, kMin, kMax, kMax).IsPointInside({-2, -2}));
    EXPECT_TRUE(huge.GetIntersection(CRect(kMin, kMax, kMin, kMin)).IsEmpty());
    CPoint point(kMax, kMin);
    point.Shift({kMax, kMin});
    EXPECT_EQ(point, CPoint(kMax, kMin));
}

TEST(Color, TakesAnyNumber) {
    EXPECT_EQ(CColor(-1, 256, kMin, kMax), CColor(0, 255, 0, 255));
    for (const auto& [value, byte] : {std::pair{0.999, 254},
                                      {7.5, 255},
                                      {1e300, 255},
                                      {-1e300, 0},
                                      {std::numeric_limits<double>::quiet_NaN(), 0}}) {
        CColor color;
        color.SetRedF(value);
        EXPECT_EQ(color.red, byte) << value;
    }
    CColor menuText(247, 223, 100, 30);
    menuText.Brighten(1.1);
    EXPECT_EQ(menuText, CColor(255, 245, 110, 30)) << "alpha stays";
}

}  // namespace
}  // namespace norava
