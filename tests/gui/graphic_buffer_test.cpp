#include "gui/graphic_buffer.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "gui/pixel_target.h"
#include "gui/plain_raster.h"

namespace norava {
namespace {

constexpr int kMax = std::numeric_limits<int>::max();
constexpr int kMin = std::numeric_limits<int>::min();

class Canvas : public CGraphicBuffer {
  public:
    Canvas(int width, int height, CColor background = CColor(0), int scale = 1)
        : CGraphicBuffer(scale) {
        SetSize(CSize(width, height));
        Clear(background);
    }
    // Red channels of a row or of a column.
    [[nodiscard]] std::vector<int> Row(int y) const {
        std::vector<int> values;
        for (int x = 0; x < GetSize().cx; ++x)
            values.push_back(GetColorAt(x, y).red);
        return values;
    }
    [[nodiscard]] std::vector<int> Column(int x) const {
        std::vector<int> values;
        for (int y = 0; y < GetSize().cy; ++y)
            values.push_back(GetColorAt(x, y).red);
        return values;
    }
};

using Levels = std::vector<int>;

TEST(GraphicBuffer, IsEmptyUntilItHasASize) {
    CGraphicBuffer buffer;
    EXPECT_FALSE(buffer.IsSafe());
    buffer.Clear(CColor(1));
    buffer.FillRect(CRect(0, 0, 5, 5));
    buffer.DrawShadow(CRect(0, 0, 50, 50));
    buffer.DrawRectWithRoundCorner(CRect(0, 0, 50, 50), true, 3, 3);
    EXPECT_EQ(buffer.DrawText("text", CRect(0, 0, 50, 50), true), CSize(0, 0));
    EXPECT_EQ(buffer.GetColorAt(0, 0), CColor(0, 0));
    EXPECT_EQ(buffer.GetDataAt(0, 0), nullptr);
    EXPECT_FALSE(buffer.SetClipRect(CRect(0, 0, 5, 5)));
    for (const CSize size : {CSize(0, 5), CSize(5, -1), CSize(kMin, kMin)}) {
        EXPECT_TRUE(buffer.SetSize(size));
        EXPECT_FALSE(buffer.IsSafe());
    }
    EXPECT_FALSE(buffer.SetSize(CSize(kMax, kMax))) << "refused, not overflowed";
    EXPECT_FALSE(CGraphicBuffer(4).SetSize(CSize(1 << 13, 1 << 13)));
    EXPECT_FALSE(buffer.IsSafe());
    ASSERT_TRUE(buffer.SetSize(CSize(3, 2)));
    EXPECT_EQ(buffer.GetColorAt(2, 1), CColor(0, 0)) << "a fresh store is transparent";
    buffer.Clear(CColor(9));
    ASSERT_TRUE(buffer.SetSize(CSize(3, 2)));
    EXPECT_EQ(buffer.GetColorAt(2, 1), CColor(9)) << "the same size keeps the pixels";
}

TEST(GraphicBuffer, StoresRowsFromTheBottomUp) {
    Canvas canvas(3, 2, CColor(0), 2);
    canvas.SetColorAt(1, 0, CColor(255, 0, 0));
    const uint32_t* store = canvas.GetDataAt(0, 0);
    EXPECT_EQ(canvas.GetDataAt(1, 1), store + (1 + 3 * 1 * 2) * 2);
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 6; ++column) {
            const bool inked = row >= 2 && (column == 2 || column == 3);
            EXPECT_EQ(store[row * 6 + column], inked ? 0xFF0000FEu : 0xFF000000u);
        }
    }
    EXPECT_EQ(canvas.GetColorAt(1, 0), CColor(254, 0, 0)) << "the shift by 8 darkens";
    EXPECT_EQ(canvas.GetColorAt(1, 2), CColor(0, 0));
    EXPECT_EQ(canvas.GetDataAt(3, 0), nullptr);
}

TEST(GraphicBuffer, WritesNoBlockThatIsNotItsOwn) {
    Canvas canvas(3, 3, CColor(0), 2);
    Canvas untouched(3, 3, CColor(0), 2);
    uint32_t* store = canvas.GetDataAt(0, 0);
    uint32_t stray[4] = {};
    uint32_t* const wrong[] = {nullptr,    stray,      store - 1, store + 36,
                               store + 35, store + 30, store + 5};
    for (uint32_t* block : wrong) {
        canvas.SetPixelAt(block, 0xFFFFFFFFu);
        canvas.BlendPixelAt(block, 0xFFFFFFFFu);
    }
    EXPECT_EQ(stray[0], 0u);
    for (int y = 0; y < 3; ++y)
        EXPECT_EQ(canvas.Row(y), untouched.Row(y));
}

TEST(GraphicBuffer, ClipsToItself) {
    Canvas canvas(10, 10);
    EXPECT_TRUE(canvas.SetClipRect(CRect(-5, 8, 7, 100)));
    EXPECT_EQ(canvas.GetClipRect(), CRect(0, 8, 2, 2));
    EXPECT_TRUE(canvas.SetClipRect(CRect(kMin, kMin, kMax, kMax)) == false);
    EXPECT_EQ(canvas.GetClipRect(), CRect(0, 0, 10, 10));
    EXPECT_FALSE(canvas.SetClipRect(CRect(10, 0, 5, 5)));
    EXPECT_FALSE(canvas.SetClipRect(CRect(5, 5, -5, -5)));
    EXPECT_EQ(canvas.GetClipRect(), CRect(0, 0, 10, 10));
    canvas.SetClipRect(CRect(2, 2, 3, 3));
    canvas.Clear(CColor(7));
    EXPECT_EQ(canvas.GetColorAt(9, 9), CColor(7)) << "clearing knows no clip";
}

TEST(GraphicBuffer, FillsOpaqueOrBlended) {
    Canvas canvas(4, 3, CColor(100, 100, 100, 33));
    canvas.SetFillColor(CColor(200, 150));
    canvas.FillRect(CRect(1, 0, 2, 1));
    EXPECT_EQ(canvas.GetColorAt(1, 0), CColor((200 * 150 + 100 * 105) >> 8, 33)) << "alpha stays";
    CColor none(255, 0);
    canvas.FillRect(CRect(0, 1, 4, 1), &none);
    EXPECT_EQ(canvas.Row(1), Levels({100, 100, 100, 100})) << "alpha 0 does not even darken";
    CColor opaque(255, 255);
    canvas.FillRect(CRect(-2, 2, 4, 5), &opaque);
    EXPECT_EQ(canvas.Row(2), Levels({255, 255, 100, 100}));
    EXPECT_EQ(canvas.GetColorAt(0, 2).alpha, 255) << "an opaque fill stores the whole word";
    EXPECT_EQ(canvas.GetFillColor(), CColor(200, 150));
}

// The left edge divides by the height, the right by the height less one.
TEST(GraphicBuffer, RunsGradientsFromTheBottomUp) {
    Canvas canvas(3, 5);
    canvas.FillRectGradVert(CRect(0, 0, 3, 5), CColor(200), CColor(0));
    EXPECT_EQ(canvas.Column(0), Levels({159, 119, 79, 39, 0}));
    EXPECT_EQ(canvas.Column(1), Levels({179, 134, 89, 44, 0}));
    EXPECT_EQ(canvas.Column(2), Levels({199, 149, 99, 49, 0}));

    canvas.Clear(CColor(0));
    canvas.FillRectGradHorz(CRect(0, 1, 3, 1), CColor(10), CColor(110));
    EXPECT_EQ(canvas.Row(1), Levels({9, 59, 109})) << "one row high, so no step at the right";

    canvas.Clear(CColor(0));
    canvas.SetClipRect(CRect(1, 0, 1, 3));
    canvas.FillRectGradVert(CRect(0, 0, 3, 5), CColor(200), CColor(0));
    EXPECT_EQ(canvas.Column(1), Levels({79, 39, 0, 0, 0})) << "begins where the clip begins";

    canvas.SetClipRect();
    canvas.Clear(CColor(100));
    canvas.FillRectGradHorz(CRect(0, 0, 3, 1), CColor(255, 0), CColor(255, 254));
    EXPECT_EQ(canvas.Row(0), Levels({99, (255 * 127 + 100 * 128) >> 8, 253})) << "alpha runs too";
    canvas.FillRect(CRect(0, 1, 3, 1), CColor(8), CColor(8), CColor(8), CColor(8));
    EXPECT_EQ(canvas.Row(1), Levels({8, 8, 8})) << "equal corners are a plain fill";
}

TEST(GraphicBuffer, SpreadsAGradientOverAllStoredPixels) {
    Canvas canvas(2, 4, CColor(0), 3);
    canvas.FillRectGradVert(CRect(0, 0, 2, 4), CColor(254), CColor(0));
    const uint32_t* store = canvas.GetDataAt(0, 0);
    int last = -1;
    for (int row = 0; row < 12; ++row) {
        const int level = static_cast<int>(store[row * 6 + 5] & 0xFF);
        EXPECT_GT(level, last);
        last = level;
    }
    EXPECT_GE(last, 252) << "and reaches the top colour";
}

TEST(GraphicBuffer, FramesInsideTheRectangle) {
    Canvas canvas(7, 6);
    canvas.SetLineColor(CColor(255, 128));
    canvas.SetLineWidth(2);
    canvas.DrawRect(CRect(1, 1, 6, 5));
    const int ink = (255 * 128) >> 8;
    EXPECT_EQ(canvas.Row(0), Levels({0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(canvas.Row(1), Levels({0, ink, ink, ink, ink, ink, ink})) << "each pixel once";
    EXPECT_EQ(canvas.Row(3), Levels({0, ink, ink, 0, 0, ink, ink}));
    EXPECT_EQ(canvas.Row(5), canvas.Row(1));
    canvas.SetLineWidth(99);
    EXPECT_EQ(canvas.GetLineWidth(), 32);
    canvas.SetLineWidth(-1);
    EXPECT_EQ(canvas.GetLineWidth(), 1);
}

TEST(GraphicBuffer, CopiesByCoverage) {
    Canvas canvas(4, 1, CColor(100, 100, 100, 7));
    Canvas picture(4, 1);
    const CColor pixels[] = {CColor(200, 0), CColor(200, 128), CColor(200, 254), CColor(200, 255)};
    for (int x = 0; x < 4; ++x)
        picture.SetPixelAt(picture.GetDataAt(x, 0), pixels[x].GetWord());

    canvas.DrawImage(&picture, CRect(0, 0, 4, 1), {0, 0});
    EXPECT_EQ(canvas.GetColorAt(0, 0), pixels[0]) << "without the flag words are copied whole";
    canvas.Clear(CColor(100, 100, 100, 7));
    picture.SetHasAlpha(true);
    canvas.DrawImage(&picture, CRect(0, 0, 4, 1), {0, 0});
    EXPECT_EQ(canvas.Row(0),
              Levels({99, (200 * 128 + 100 * 127) >> 8, (200 * 254 + 100) >> 8, 200}));
    EXPECT_EQ(canvas.GetColorAt(2, 0).alpha, 7);
    EXPECT_EQ(canvas.GetColorAt(3, 0).alpha, 255);

    canvas.Clear(CColor(100));
    canvas.DrawImage(&picture, CRect(0, 0, 4, 1), {0, 0}, static_cast<unsigned char>(128));
    const int half = (128 * 128) >> 8, full = (255 * 128) >> 8;
    EXPECT_EQ(canvas.GetColorAt(1, 0).red, (200 * half + 100 * (255 - half)) >> 8);
    EXPECT_EQ(canvas.GetColorAt(3, 0).red, (200 * full + 100 * (255 - full)) >> 8);

    const Levels before = canvas.Row(0);
    canvas.DrawImage(nullptr, CRect(0, 0, 4, 1), {0, 0});
    for (const float alpha : {0.0f, -3.0f, 0.0039f, std::numeric_limits<float>::quiet_NaN()})
        canvas.DrawImage(&picture, CRect(0, 0, 4, 1), {0, 0}, alpha);
    EXPECT_EQ(canvas.Row(0), before);
    picture.CopyRectAlphaF(&canvas, CRect(3, 0, 1, 1), {3, 0}, 1e9f);
    EXPECT_EQ(canvas.GetColorAt(3, 0).red, 200);
}

TEST(GraphicBuffer, CutsACopyOnBothSides) {
    Canvas picture(6, 1);
    for (int x = 0; x < 6; ++x)
        picture.SetColorAt(x, 0, CColor(0, x + 1, 0, 255));
    for (int x = 0; x < 6; ++x)
        picture.SetPixelAt(picture.GetDataAt(x, 0), CColor(x + 1).GetWord());
    const auto copied = [&](CRect to, CPoint from, CRect clip = CRect(0, 0, 8, 1)) {
        Canvas canvas(8, 1);
        canvas.SetClipRect(clip);
        canvas.DrawImage(&picture, to, from);
        return canvas.Row(0);
    };
    EXPECT_EQ(copied({2, 0, 3, 1}, {1, 0}), Levels({0, 0, 2, 3, 4, 0, 0, 0}));
    EXPECT_EQ(copied({-2, 0, 4, 1}, {0, 0}), Levels({3, 4, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(copied({0, 0, 8, 1}, {0, 0}, {3, 0, 2, 1}), Levels({0, 0, 0, 4, 5, 0, 0, 0}));
    EXPECT_EQ(copied({4, 0, 9, 1}, {4, 0}), Levels({0, 0, 0, 0, 5, 6, 0, 0}));
    EXPECT_EQ(copied({2, 0, 4, 1}, {-1, 0}), Levels({0, 0, 1, 2, 3, 0, 0, 0}))
        << "a cut at the picture's left shortens without moving";
    EXPECT_EQ(copied({kMin, 0, kMax, 1}, {kMin, 0}), Levels(8, 0));
    EXPECT_EQ(copied({kMin, 0, kMax, 1}, {kMax, kMax}), Levels(8, 0));
    EXPECT_EQ(copied({-kMax, 0, kMax, 1}, {0, 0}), Levels(8, 0));
}

TEST(GraphicBuffer, CopiesWithinItselfInReadingOrder) {
    Canvas canvas(5, 2);
    for (int x = 0; x < 5; ++x)
        canvas.SetPixelAt(canvas.GetDataAt(x, 0), CColor(x + 1).GetWord());
    canvas.DrawImage(&canvas, CRect(0, 1, 4, 1), {1, 1});
    EXPECT_EQ(canvas.Row(1), Levels({2, 3, 4, 5, 5})) << "to the left: a move";
    canvas.DrawImage(&canvas, CRect(1, 1, 4, 1), {0, 1});
    EXPECT_EQ(canvas.Row(1), Levels({2, 2, 2, 2, 2})) << "to the right: what was just written";
    canvas.DrawImage(&canvas, CRect(0, 1, 5, 1), {0, 1});
    EXPECT_EQ(canvas.Row(1), Levels({2, 2, 2, 2, 2}));
}

TEST(GraphicBuffer, CopiesBetweenScales) {
    Canvas small(3, 2);
    test::FillWithNoise(small, 5);
    Canvas large(3, 2, CColor(0), 3);
    Canvas back(3, 2);
    large.DrawImage(&small, CRect(0, 0, 3, 2), {0, 0});
    back.DrawImage(&large, CRect(0, 0, 3, 2), {0, 0});
    for (int y = 0; y < 2; ++y) {
        for (int x = 0; x < 3; ++x) {
            EXPECT_EQ(back.GetColorAt(x, y), small.GetColorAt(x, y));
            const uint32_t* block = large.GetDataAt(x, 1 - y);
            for (const int word : {0, 1, 2, 9, 10, 11, 18, 20})
                EXPECT_EQ(block[word], small.GetColorAt(x, y).GetWord());
        }
    }
}

struct RecordingTarget : PixelTarget {
    void ShowPixels(const uint32_t* words, CSize shownSize, CRect shownClip) override {
        ++calls;
        size = shownSize;
        clip = shownClip;
        first = words[0];
    }
    int calls = 0;
    CSize size;
    CRect clip;
    uint32_t first = 0;
};

TEST(GraphicBuffer, PresentsStoredPixels) {
    Canvas canvas(10, 8, CColor(5), 2);
    RecordingTarget target;
    canvas.Present(&target, CRect(6, -1, 10, 4), {0, 0});
    EXPECT_EQ(target.size, CSize(20, 16));
    EXPECT_EQ(target.clip, CRect(12, 0, 8, 6));
    EXPECT_EQ(target.first, CColor(5).GetWord());
    canvas.Present(&target, CRect(kMax, kMax, kMax, kMax), {kMax, kMin});
    canvas.Present(nullptr, CRect(0, 0, 1, 1), {0, 0});
    EXPECT_EQ(target.calls, 1);
}

}  // namespace
}  // namespace norava
