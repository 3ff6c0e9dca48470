#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

#include "gui/bitmap_font.h"
#include "gui/graphic_buffer.h"
#include "gui/pictures.h"
#include "gui/system_font_samples.h"
#include "gui/system_fonts.h"

namespace norava {
namespace {

class TextTest : public testing::TestWithParam<bool> {
  protected:
    TextTest() {
        canvas.SetSize(CSize(400, 40));
        canvas.Clear(CColor(0));
        GetParam() ? canvas.SetFontBold() : canvas.SetFontNormal();
        canvas.SetTextColor(CColor(255));
    }
    int Width(const std::string& text) {
        return canvas.DrawText(text.c_str(), CRect(0, 0, 400, 40), true).cx;
    }
    // The smallest rectangle round everything that is not black.
    [[nodiscard]] CRect Ink() const {
        int left = 400, top = 40, right = 0, bottom = 0;
        for (int y = 0; y < 40; ++y) {
            for (int x = 0; x < 400; ++x) {
                if (canvas.GetColorAt(x, y).red == 0) continue;
                left = std::min(left, x), right = std::max(right, x + 1);
                top = std::min(top, y), bottom = std::max(bottom, y + 1);
            }
        }
        return {left, top, right - left, bottom - top};
    }
    CGraphicBuffer canvas;
};
INSTANTIATE_TEST_SUITE_P(Fonts, TextTest, testing::Bool(),
                         [](const auto& run) { return run.param ? "bold" : "regular"; });

TEST_P(TextTest, MeasuresAdvancesAndSpaces) {
    const int a = Width("A"), b = Width("B");
    EXPECT_EQ(Width("AB"), a + b + 1);
    EXPECT_EQ(Width("A B"), Width("AB") + 4) << "a space has no spacing of its own";
    EXPECT_EQ(Width(" "), 3);
    EXPECT_EQ(Width(""), 0);
    EXPECT_EQ(canvas.DrawText(nullptr, CRect(0, 0, 9, 9), false), CSize(0, 0));
    EXPECT_EQ(canvas.DrawText("A", CRect(), true).cy, 11);
    const std::string longest(1024, 'n');
    EXPECT_EQ(Width(longest), (Width("n") + 1) * 1024 - 1);
    EXPECT_EQ(Width(longest + "nnn"), Width(longest)) << "ends after 1024 characters";
    EXPECT_EQ(BitmapFont::GlyphIndex('~'), 93);
    for (const char odd : {'\x01', '\n', '\x7F', '\x80', '\xFF'}) {
        EXPECT_EQ(BitmapFont::GlyphIndex(odd), '?' - '!');
        EXPECT_EQ(Width(std::string(1, odd)), Width("?"));
    }
}

TEST_P(TextTest, PlacesItsLine) {
    const int width = Width("HH");
    const auto inkOf = [&](CRect rect) {
        canvas.Clear(CColor(0));
        canvas.DrawText("HH", rect, false);
        return Ink();
    };
    const CRect rect(50, 10, 101, 21);
    EXPECT_EQ(inkOf(rect), CRect(50, 10 + 5 + 2, width, 7)) << "capitals fill rows 3 to 9";
    const int shift = GetParam() ? 1 : 0;  // bold loses its shift to the left
    canvas.SetTextAlignCenter();
    EXPECT_EQ(inkOf(rect).left, 50 + (101 - width) / 2 + shift);
    canvas.SetTextAlignRight();
    EXPECT_EQ(inkOf(rect).left, 151 - width + shift);
    canvas.SetTextAlignLeft();
    EXPECT_EQ(inkOf(CRect(50, 10, 1, 1)), CRect(50, 7, width, 7)) << "not limited to the rectangle";
    canvas.ResetDrawingProperties();
    EXPECT_TRUE(inkOf(rect).IsEmpty()) << "black on black";
}

TEST_P(TextTest, BlendsItsInk) {
    canvas.SetTextColor(CColor(200, 128));
    canvas.DrawText("l", CRect(0, 0, 20, 11), false);
    EXPECT_EQ(canvas.GetColorAt(0, 5).red, (200 * ((255 * 128) >> 8)) >> 8);
}

// On a finer screen a letter has outlines of its own, in the place of the drawn one and as strong.
TEST_P(TextTest, KeepsItsPlaceOnFinerScreens) {
    const auto fonts = SystemFonts::Share();
    const BitmapFont& font = GetParam() ? fonts->bold : fonts->regular;
    const OutlineFont& outlines = GetParam() ? fonts->boldOutlines : fonts->regularOutlines;
    for (int scale = 2; scale <= OutlineFont::kMaxScale; ++scale) {
        for (int index = 0; index < BitmapFont::kGlyphs; ++index) {
            SCOPED_TRACE(std::string(1, static_cast<char>('!' + index)) + " at " +
                         std::to_string(scale));
            double drawnInk = 0.0, ink = 0.0, drawnMiddle = 0.0, middle = 0.0;
            const BitmapFont::Glyph drawn = font.GetGlyph(index);
            for (size_t p = 0; p < drawn.pixels.size(); p += 2) {
                const double strength = 255 - drawn.pixels[p + 1];
                drawnInk += strength;
                drawnMiddle += strength * ((drawn.pixels[p] & 15) + 0.5);
            }
            const OutlineFont::Glyph& glyph = outlines.GetGlyphs(scale)[static_cast<size_t>(index)];
            ASSERT_EQ(glyph.coverage.size(), static_cast<size_t>(glyph.width * glyph.height));
            for (size_t i = 0; i < glyph.coverage.size(); ++i) {
                const auto x = static_cast<double>(i % static_cast<size_t>(glyph.width));
                ink += glyph.coverage[i];
                middle += glyph.coverage[i] * (glyph.left + x + 0.5) / scale;
            }
            const double strength = ink / scale / scale / drawnInk;
            EXPECT_GT(strength, 0.4);
            EXPECT_LT(strength, 2.0);
            EXPECT_NEAR(middle / ink, drawnMiddle / drawnInk, 1.0);
        }
    }
}

TEST_P(TextTest, FiguresHaveOneWidth) {
    std::set<int> widths;
    for (char figure = '0'; figure <= '9'; ++figure)
        widths.insert(Width({figure}));
    EXPECT_EQ(widths.size(), 1u);
}

// Whatever a glyph inks lies in its advance and the line, and every letter is a picture of its own.
TEST_P(TextTest, HasNinetyFourGoodGlyphs) {
    const auto fonts = SystemFonts::Share();
    const BitmapFont& font = GetParam() ? fonts->bold : fonts->regular;
    std::set<std::vector<uint8_t>> pictures;
    for (int i = 0; i < BitmapFont::kGlyphs; ++i) {
        SCOPED_TRACE(static_cast<char>('!' + i));
        const BitmapFont::Glyph glyph = font.GetGlyph(i);
        ASSERT_FALSE(glyph.pixels.empty());
        pictures.insert({glyph.pixels.begin(), glyph.pixels.end()});
        for (size_t p = 0; p < glyph.pixels.size(); p += 2) {
            EXPECT_LT(glyph.pixels[p] & 0x0F, glyph.advance);
            EXPECT_GE(glyph.pixels[p] & 0x0F, GetParam() ? 1 : 0);
            EXPECT_LT(glyph.pixels[p] >> 4, font.GetLineHeight());
            EXPECT_LT(glyph.pixels[p + 1], 255);
        }
    }
    EXPECT_EQ(pictures.size(), 94u);
}

// A damaged block ends the text and is never read beyond its end.
TEST(BitmapFont, SurvivesDamage) {
    const std::vector<uint8_t> good(kSystemFontSample_Regular.begin(),
                                    kSystemFontSample_Regular.end());
    for (size_t size = 0; size < good.size(); size += 37) {
        const std::vector<uint8_t> cut(good.begin(), good.begin() + static_cast<long>(size));
        const BitmapFont font(cut, {1, 4, 0});
        for (int i = -2; i < 100; ++i)
            static_cast<void>(font.GetGlyph(i));
    }
    std::vector<uint8_t> damaged = good;
    const size_t a = damaged[1 + 2 * ('A' - '!')] | size_t{damaged[2 + 2 * ('A' - '!')]} << 8;
    for (const uint8_t count : {uint8_t{0}, uint8_t{255}}) {
        damaged[a + 1] = count;
        EXPECT_TRUE(BitmapFont(damaged, {1, 4, 0}).GetGlyph('A' - '!').pixels.empty());
        EXPECT_FALSE(BitmapFont(damaged, {1, 4, 0}).GetGlyph('B' - '!').pixels.empty());
    }
}

// Closed menus leave this much between their edge and their arrow.
TEST(SystemFonts, FitTheMatrixMenus) {
    CGraphicBuffer canvas;
    canvas.SetSize(CSize(1, 1));
    for (const char* name : {"stri1&2 dec", "str1&2 dmp", "str2  damp", "noise rate", "hi-cut ctf"})
        EXPECT_LE(canvas.DrawText(name, CRect(), true).cx, 54) << name;
}

TEST(SystemFonts, AreSharedAndFreedWithTheLast) {
    const long before = CGraphicBuffer::FontRefNum();
    {
        const CGraphicBuffer one, two;
        EXPECT_EQ(CGraphicBuffer::FontRefNum(), before + 2);
    }
    EXPECT_EQ(CGraphicBuffer::FontRefNum(), before);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int k = 0; k < 200; ++k) {
                CGraphicBuffer buffer;
                buffer.SetSize(CSize(20, 11));
                buffer.SetTextColor(CColor(255));
                buffer.DrawText("ok", CRect(0, 0, 20, 11), false);
                EXPECT_NE(buffer.GetColorAt(0, 6), CColor(0, 0));
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(CGraphicBuffer::FontRefNum(), before);
}

}  // namespace
}  // namespace norava
