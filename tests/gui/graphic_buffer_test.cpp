#include "gui/graphic_buffer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "gui/noise.h"
#include "gui/pictures.h"
#include "gui/pixel_rows.h"

// What the raster draws: reference pictures, what must hold for every drawing, and what neither
// shows.
namespace norava {
namespace {

constexpr int kMax = std::numeric_limits<int>::max();
constexpr int kMin = std::numeric_limits<int>::min();

// Looked at once and compared to the bit ever since.
class ReferencePicture : public testing::TestWithParam<int> {
  protected:
    void ExpectLooks(const std::string& subject) {
        test::ExpectLooksLike(canvas, subject + "_scale" + std::to_string(GetParam()));
    }
    CGraphicBuffer canvas{GetParam()};
};
INSTANTIATE_TEST_SUITE_P(Scales, ReferencePicture, testing::Values(1, 2));

TEST_P(ReferencePicture, Shapes) {
    canvas.SetSize(CSize(160, 120));
    canvas.Clear(CColor(52, 49, 47));
    canvas.FillRectGradVert(CRect(4, 4, 48, 30), CColor(243, 223, 180), CColor(124, 102, 66));
    canvas.FillRect(CRect(56, 4, 48, 30), CColor(255, 0, 0), CColor(0, 255, 0), CColor(0, 0, 255),
                    CColor(255, 255, 0, 0));
    canvas.FillRectGradHorz(CRect(108, 4, 48, 30), CColor(255, 154, 44), CColor(255, 154, 44, 0));

    CColor sheet(230);
    canvas.FillRect(CRect(4, 38, 48, 36), &sheet);
    canvas.DrawShadow(CRect(4, 38, 48, 36));

    canvas.SetFillColor(CColor(25, 28, 36));
    canvas.DrawRectWithRoundCorner(CRect(56, 38, 48, 17), true, 3, 3);
    canvas.SetLineColor(CColor(218, 195, 150, 190));
    canvas.SetLineWidth(1);
    canvas.DrawRectWithRoundCorner(CRect(56, 38, 48, 17), false, 3, 3);
    canvas.SetFillColor(CColor(255, 217, 204, 128));
    canvas.DrawRectWithRoundCorner(CRect(56, 58, 47, 15), true, 99, 99);
    canvas.SetLineWidth(3);
    canvas.DrawRectWithRoundCorner(CRect(108, 38, 48, 35), false, 16, 8);

    canvas.SetLineColor(CColor(246, 234, 211));
    for (int i = 0; i < 8; ++i) {
        canvas.SetLineWidth(1 + i / 2);
        canvas.DrawLine(CPointF(6, 80), CPointF(static_cast<float>(10 + i * 20), 116));
    }
    canvas.SetLineWidth(2);
    canvas.DrawRect(CRect(130, 80, 26, 20));
    ExpectLooks("shapes");
}

TEST_P(ReferencePicture, Letters) {
    canvas.SetSize(CSize(216, 104));
    canvas.Clear(CColor(27, 26, 30));
    canvas.SetTextColor(CColor(246, 234, 211));
    for (const bool bold : {false, true}) {
        bold ? canvas.SetFontBold() : canvas.SetFontNormal();
        for (int line = 0; line < 4; ++line) {
            std::string letters;
            for (int i = 0; i < 24; ++i)
                letters += static_cast<char>('!' + line * 24 + i);
            if (line == 3) letters.resize(22);
            canvas.DrawText(letters.c_str(), CRect(3, (bold ? 52 : 0) + line * 13, 0, 13), false);
        }
    }
    ExpectLooks("letters");
}

enum Kind { fill, frame, pixel, line, basicLine, shadow, copy, letters, disc, ring, gradient };

// Made by chance, with coordinates round the canvas, now and then far outside of every range.
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

constexpr CSize kCanvasSize(61, 47);

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

TEST(GraphicBuffer, IsEmptyUntilItHasASize) {
    CGraphicBuffer buffer;
    buffer.Clear(CColor(1));
    buffer.FillRect(CRect(0, 0, 5, 5));
    buffer.DrawShadow(CRect(0, 0, 50, 50));
    buffer.DrawRectWithRoundCorner(CRect(0, 0, 50, 50), true, 3, 3);
    EXPECT_EQ(buffer.DrawText("text", CRect(0, 0, 50, 50), true), CSize(0, 0));
    EXPECT_EQ(buffer.GetDataAt(0, 0), nullptr);
    for (const CSize size : {CSize(0, 5), CSize(5, -1), CSize(kMin, kMin)}) {
        EXPECT_TRUE(buffer.SetSize(size));
        EXPECT_FALSE(buffer.IsSafe());
    }
    EXPECT_FALSE(buffer.SetSize(CSize(kMax, kMax))) << "refused, not overflowed";
    EXPECT_FALSE(CGraphicBuffer(4).SetSize(CSize(1 << 13, 1 << 13)));
    ASSERT_TRUE(buffer.SetSize(CSize(3, 2)));
    EXPECT_EQ(buffer.GetColorAt(2, 1), CColor(0, 0)) << "a fresh store is transparent";
}

struct Canvas : CGraphicBuffer {
    Canvas(int width, int height, CColor background, int scale = 1) : CGraphicBuffer(scale) {
        SetSize(CSize(width, height));
        Clear(background);
    }
};

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
}

TEST(GraphicBuffer, KeepsAlphaWhereItBlends) {
    Canvas canvas(4, 1, CColor(100, 100, 100, 33)), picture(4, 1, CColor(200, 128));
    canvas.SetFillColor(CColor(200, 0));
    canvas.FillRect(CRect(0, 0, 1, 1));
    EXPECT_EQ(canvas.GetColorAt(0, 0).red, 100) << "alpha 0 does not even darken";
    canvas.SetFillColor(CColor(200, 150));
    canvas.FillRect(CRect(0, 0, 1, 1));
    EXPECT_EQ(canvas.GetColorAt(0, 0), CColor((200 * 150 + 100 * 105) >> 8, 33));
    canvas.DrawImage(&picture, CRect(1, 0, 1, 1), {0, 0});
    EXPECT_EQ(canvas.GetColorAt(1, 0), CColor(200, 128)) << "without the flag words are copied";
    picture.SetHasAlpha(true);
    canvas.DrawImage(nullptr, CRect(2, 0, 1, 1), {0, 0});
    for (const float alpha : {0.0f, -3.0f, 0.0039f, std::nanf("")})
        canvas.DrawImage(&picture, CRect(2, 0, 1, 1), {0, 0}, alpha);
    EXPECT_EQ(canvas.GetColorAt(2, 0).red, 100);
    canvas.DrawImage(&picture, CRect(2, 0, 1, 1), {0, 0});
    EXPECT_EQ(canvas.GetColorAt(2, 0), CColor((200 * 128 + 100 * 127) >> 8, 33));
    // What the picture's own left edge cuts off shortens a copy without moving it.
    canvas.DrawImage(&picture, CRect(2, 0, 2, 1), {-1, 0});
    EXPECT_EQ(canvas.GetColorAt(3, 0).red, 100);
}

// A stroke that comes from far away must not take longer for it, and keeps to its fixed-point path.
TEST(GraphicBuffer, DrawsLinesFromAnywhere) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    Canvas canvas(30, 30, CColor(200));
    const auto row = [&](int y, int least, int most) {
        for (int x = 0; x < 30; ++x)
            if (const int level = canvas.GetColorAt(x, y).red; level < least || level > most)
                return false;
        return true;
    };
    canvas.DrawBasicLine(10, 7, 10, 7, CColor(0));
    canvas.DrawBasicLine(-9, 5, -0.5, 25, CColor(0));
    canvas.DrawBasicLine(29.5, 5, 40, 25, CColor(0));
    canvas.DrawLine(CPointF(kInfinity, 0), CPointF(0, kInfinity));
    canvas.DrawLine(CPointF(0, 0), CPointF(kInfinity, std::nanf("")));
    canvas.DrawLine(CPointF(-3e38f, 7), CPointF(3e38f, 7));
    EXPECT_TRUE(row(7, 200, 200)) << "no length, or no place";
    canvas.DrawLine(CPoint(-1000000000, 7), CPoint(1000000000, 7));
    EXPECT_TRUE(row(6, 200, 200));
    EXPECT_TRUE(row(7, 0, 1));
    EXPECT_TRUE(row(9, 200, 200));
}

class TextTest : public testing::TestWithParam<bool> {
  protected:
    TextTest() {
        canvas.SetSize(CSize(1, 1));
        GetParam() ? canvas.SetFontBold() : canvas.SetFontNormal();
    }
    int Width(const std::string& text) { return canvas.DrawText(text.c_str(), {}, true).cx; }
    CGraphicBuffer canvas;
};
INSTANTIATE_TEST_SUITE_P(Fonts, TextTest, testing::Bool(),
                         [](const auto& run) { return run.param ? "bold" : "regular"; });

TEST_P(TextTest, MeasuresAdvancesAndSpaces) {
    EXPECT_EQ(Width("AB"), Width("A") + Width("B") + 1);
    EXPECT_EQ(Width("A B"), Width("AB") + 4) << "a space has no spacing of its own";
    EXPECT_EQ(Width(""), 0);
    EXPECT_EQ(canvas.DrawText(nullptr, CRect(0, 0, 9, 9), false), CSize(0, 0));
    EXPECT_EQ(canvas.DrawText("A", CRect(), true).cy, 11);
    const std::string longest(1024, 'n');
    EXPECT_EQ(Width(longest), (Width("n") + 1) * 1024 - 1);
    EXPECT_EQ(Width(longest + "nnn"), Width(longest)) << "ends after 1024 characters";
    for (const char odd : {'\x01', '\n', '\x7F', '\x80', '\xFF'})
        EXPECT_EQ(Width(std::string(1, odd)), Width("?"));
    for (char figure = '0'; figure <= '9'; ++figure)
        EXPECT_EQ(Width({figure}), Width("0"));
}

// Closed menus leave this much between their edge and their arrow.
TEST(SystemFonts, FitTheMatrixMenus) {
    CGraphicBuffer canvas;
    canvas.SetSize(CSize(1, 1));
    for (const char* name : {"stri1&2 dec", "str1&2 dmp", "str2  damp", "noise rate", "hi-cut ctf"})
        EXPECT_LE(canvas.DrawText(name, CRect(), true).cx, 54) << name;
}

TEST(PixelRows, AgreeWithThePlainFormula) {
    const auto blend = [](CColor under, CColor over) {
        const auto channel = [&](int below, int above) {
            return (above * over.alpha + below * (255 - over.alpha)) >> 8;
        };
        return CColor(channel(under.red, over.red), channel(under.green, over.green),
                      channel(under.blue, over.blue), under.alpha);
    };
    // On both sides of every vector width and chunk.
    for (const int count : {0, 1, 2, 3, 5, 7, 8, 9, 15, 31, 63, 64, 65, 130, 4000}) {
        CGraphicBuffer noise;
        noise.SetSize(CSize(count + 1, 2));
        test::FillWithNoise(noise, static_cast<uint32_t>(count));
        const std::vector under(noise.GetDataAt(0, 0), noise.GetDataAt(count, 0));
        const std::vector over(noise.GetDataAt(0, 1), noise.GetDataAt(count, 1));
        for (const uint8_t opacity : {uint8_t{255}, uint8_t{254}, uint8_t{128}, uint8_t{1}}) {
            const CColor color(200, 100, 50, opacity);
            std::vector<uint32_t> blended = under, colored = under, composed = under;
            pixel_rows::Blend(blended.data(), over.data(), under.size());
            pixel_rows::BlendColor(colored.data(), color, under.size());
            pixel_rows::Compose(composed.data(), over.data(), under.size(), opacity);
            for (size_t i = 0; i < under.size(); ++i) {
                const CColor below = CColor::FromWord(under[i]);
                CColor above = CColor::FromWord(over[i]);
                ASSERT_EQ(CColor::FromWord(blended[i]), blend(below, above));
                ASSERT_EQ(CColor::FromWord(colored[i]), blend(below, color));
                if (opacity < 255) above.SetAlpha((above.alpha * opacity) >> 8);
                ASSERT_EQ(CColor::FromWord(composed[i]),
                          above.alpha == 255 ? above : blend(below, above));
            }
        }
    }
}

TEST(Color, TakesAnyNumber) {
    EXPECT_EQ(CColor(-1, 256, kMin, kMax), CColor(0, 255, 0, 255));
    for (const auto& [value, byte] : {std::pair{0.999, 254}, {7.5, 255}, {-1e300, 0}, {NAN, 0}}) {
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
