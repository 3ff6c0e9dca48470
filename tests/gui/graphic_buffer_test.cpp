#include "gui/graphic_buffer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "benchmarks/plain_raster.h"
#include "gallery/scenes.h"
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

// Buttons held and lit, text being edited, lists scrolled, menus open and fading in, a knob
// dragged.
TEST_P(ReferencePicture, Gallery) {
    test::ExpectLooksLike([](const std::string& path) { return WriteScenes(path, GetParam()); },
                          "gallery_scale" + std::to_string(GetParam()));
}

// Round the canvas, now and then far outside of every range.
int Coordinate(std::mt19937& random) {
    constexpr int kExtremes[] = {kMin,   kMin + 1, kMax,    kMax - 1,
                                 -40000, 40000,    1 << 30, -(1 << 30)};
    return random() % 13 == 0 ? kExtremes[random() % 8] : static_cast<int>(random() % 101) - 20;
}

void DrawEverything(CGraphicBuffer& canvas, std::mt19937& random) {
    const auto at = [&] { return Coordinate(random); };
    const auto rect = [&] { return CRect{at(), at(), at(), at()}; };
    const auto color = [&] { return CColor::FromWord(static_cast<uint32_t>(random())); };
    CGraphicBuffer picture;
    picture.SetSize(CSize(40, 30));
    test::FillWithNoise(picture, 7);
    picture.SetHasAlpha(random() % 2 == 0);
    canvas.SetFillColor(color());
    canvas.SetLineColor(color());
    canvas.SetTextColor(color());
    canvas.SetLineWidth(1 + static_cast<int>(random() % 40));
    if (random() % 2 == 0) canvas.SetTextAlignRight();
    const auto radius = static_cast<float>(random() % 32) - 1;

    canvas.FillRect(rect());
    canvas.DrawRect(rect());
    canvas.SetColorAt(at(), at(), color());
    canvas.DrawLine(CPoint{at(), at()}, CPoint{at(), at()});
    canvas.DrawBasicLine(at() + 0.3, at() - 0.7, at(), at() * 0.9, color());
    canvas.DrawShadow(rect());
    canvas.DrawImage(&picture, rect(), {at(), at()}, static_cast<uint8_t>(random()));
    canvas.DrawText("letters", rect(), false);
    canvas.DrawRectWithRoundCorner(rect(), true, radius, radius / 2.0f);
    canvas.DrawRectWithRoundCorner(rect(), false, radius, radius / 2.0f);
    canvas.FillRect(rect(), color(), color(), color(), color());
}

class RasterProperty : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Scales, RasterProperty, testing::Range(1, 5));

TEST_P(RasterProperty, NothingLeavesTheClip) {
    std::mt19937 random(1);
    for (uint32_t round = 0; round < 200 && !HasFatalFailure(); ++round) {
        SCOPED_TRACE(round);
        CGraphicBuffer canvas(GetParam()), untouched(GetParam());
        for (CGraphicBuffer* buffer : {&canvas, &untouched}) {
            buffer->SetSize(CSize(61, 47));
            test::FillWithNoise(*buffer, round);
        }
        const CPoint corner{static_cast<int>(random() % 61), static_cast<int>(random() % 47)};
        const CRect clip(corner, CSize(1 + corner.y, 1 + corner.x / 2));
        ASSERT_TRUE(canvas.SetClipRect(clip));
        DrawEverything(canvas, random);
        // Put the inside back; then nothing may differ.
        canvas.SetClipRect();
        canvas.DrawImage(&untouched, clip, clip.GetLeftTop());
        test::ExpectSamePixels(canvas, untouched);
    }
}

TEST(GraphicBuffer, RefusesWhatMemoryCannotHold) {
    CGraphicBuffer buffer;
    EXPECT_EQ(buffer.GetDataAt(0, 0), nullptr);
    EXPECT_FALSE(buffer.SetSize(CSize(kMax, kMax))) << "refused, not overflowed";
    EXPECT_FALSE(CGraphicBuffer(4).SetSize(CSize(1 << 13, 1 << 13)));
    EXPECT_FALSE(buffer.SetSize(CSize(kMin, kMin)) && buffer.IsSafe());
}

struct Canvas : CGraphicBuffer {
    Canvas(int width, int height, CColor background) : CGraphicBuffer(1) {
        SetSize(CSize(width, height));
        Clear(background);
    }
};

TEST(GraphicBuffer, DrawsNothingWithoutCoverage) {
    Canvas canvas(4, 1, CColor(100, 100, 100, 33)), picture(4, 1, CColor(200, 128));
    picture.SetHasAlpha(true);
    canvas.SetFillColor(CColor(200, 0));
    canvas.FillRect(CRect(0, 0, 4, 1));
    canvas.DrawImage(nullptr, CRect(0, 0, 4, 1), {0, 0});
    for (const float alpha : {0.0f, -3.0f, 0.0039f, std::nanf("")})
        canvas.DrawImage(&picture, CRect(0, 0, 4, 1), {0, 0}, alpha);
    test::ExpectSamePixels(canvas, Canvas(4, 1, CColor(100, 100, 100, 33)));
    // What the picture's own left edge cuts off shortens a copy without moving it.
    canvas.DrawImage(&picture, CRect(2, 0, 2, 1), {-1, 0});
    EXPECT_EQ(canvas.GetColorAt(2, 0), CColor((200 * 128 + 100 * 127) >> 8, 33));
    EXPECT_EQ(canvas.GetColorAt(3, 0).red, 100);
}

TEST(GraphicBuffer, DrawsNoLineToNowhere) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    Canvas canvas(30, 30, CColor(200));
    canvas.DrawLine(CPointF(kInfinity, 0), CPointF(0, kInfinity));
    canvas.DrawLine(CPointF(0, 0), CPointF(kInfinity, std::nanf("")));
    canvas.DrawBasicLine(10, 7, 10, 7, CColor(0));
    test::ExpectSamePixels(canvas, Canvas(30, 30, CColor(200)));
}

TEST(GraphicBuffer, MeasuresAdvancesAndSpaces) {
    Canvas canvas(1, 1, CColor(0));
    const auto width = [&](const std::string& text) {
        return canvas.DrawText(text.c_str(), {}, true).cx;
    };
    EXPECT_EQ(width("A B"), width("A") + width("B") + 1 + 4) << "a space has no spacing";
    EXPECT_EQ(width(std::string(1024, 'n') + "nnn"), (width("n") + 1) * 1024 - 1);
    for (const char odd : {'\x01', '\n', '\x80', '\xFF'})
        EXPECT_EQ(width({odd}), width("?"));
    for (const char figure : std::string("123456789"))
        EXPECT_EQ(width({figure}), width("0"));
}

TEST(PixelRows, AgreeWithThePlainFormula) {
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
                const CColor below = CColor::FromWord(under[i]), above = CColor::FromWord(over[i]);
                ASSERT_EQ(CColor::FromWord(blended[i]), bench::PlainBlend(below, above));
                ASSERT_EQ(CColor::FromWord(colored[i]), bench::PlainBlend(below, color));
                ASSERT_EQ(CColor::FromWord(composed[i]),
                          bench::PlainCompose(below, above, opacity));
            }
        }
    }
}

TEST(Color, TakesAnyNumber) {
    EXPECT_EQ(CColor(-1, 256, kMin, kMax), CColor(0, 255, 0, 255));
    CColor color(9);
    color.SetRedF(NAN);
    EXPECT_EQ(color.red, 0);
}

}  // namespace
}  // namespace norava
