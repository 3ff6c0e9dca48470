#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "gui/bitmap_font.h"
#include "gui/graphic_buffer.h"
#include "gui/system_font_samples.h"

// What the letters look like, alone and in labels, is held by the reference pictures.
namespace norava {
namespace {

class TextTest : public testing::TestWithParam<bool> {
  protected:
    TextTest() {
        canvas.SetSize(CSize(400, 40));
        GetParam() ? canvas.SetFontBold() : canvas.SetFontNormal();
    }
    int Width(const std::string& text) { return canvas.DrawText(text.c_str(), {}, true).cx; }
    // The smallest rectangle round what is drawn.
    CRect InkOf(const char* text, CRect rect) {
        canvas.Clear(CColor(255));
        canvas.DrawText(text, rect, false);
        int left = 400, top = 40, right = 0, bottom = 0;
        for (int y = 0; y < 40; ++y) {
            for (int x = 0; x < 400; ++x) {
                if (canvas.GetColorAt(x, y).red == 255) continue;
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

TEST_P(TextTest, PlacesItsLine) {
    const int width = Width("HH");
    const CRect rect(50, 10, 101, 21);
    EXPECT_EQ(InkOf("HH", rect), CRect(50, 10 + 5 + 2, width, 7)) << "capitals fill rows 3 to 9";
    EXPECT_EQ(InkOf("HH", CRect(50, 10, 1, 1)), CRect(50, 7, width, 7)) << "not limited to it";
    const int shift = GetParam() ? 1 : 0;  // bold loses its shift to the left
    canvas.SetTextAlignCenter();
    EXPECT_EQ(InkOf("HH", rect).left, 50 + (101 - width) / 2 + shift);
    canvas.SetTextAlignRight();
    EXPECT_EQ(InkOf("HH", rect).left, 151 - width + shift);
}

// A damaged block ends the text and is never read beyond its end.
TEST(BitmapFont, SurvivesDamage) {
    const std::vector<uint8_t> good(kSystemFontSample_Regular.begin(),
                                    kSystemFontSample_Regular.end());
    for (size_t size = 0; size < good.size(); size += 37) {
        const std::vector<uint8_t> cut(good.begin(), good.begin() + static_cast<long>(size));
        for (int i = -2; i < 100; ++i)
            static_cast<void>(BitmapFont(cut, {1, 4, 0}).GetGlyph(i));
    }
    std::vector<uint8_t> damaged = good;
    const size_t a = damaged[1 + 2 * ('A' - '!')] | size_t{damaged[2 + 2 * ('A' - '!')]} << 8;
    for (const uint8_t count : {uint8_t{0}, uint8_t{255}}) {
        damaged[a + 1] = count;
        EXPECT_TRUE(BitmapFont(damaged, {1, 4, 0}).GetGlyph('A' - '!').pixels.empty());
        EXPECT_FALSE(BitmapFont(damaged, {1, 4, 0}).GetGlyph('B' - '!').pixels.empty());
    }
}

TEST(SystemFonts, AreSharedAndFreedWithTheLast) {
    const long before = CGraphicBuffer::FontRefNum();
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([] {
                for (int k = 0; k < 200; ++k) {
                    CGraphicBuffer buffer;
                    buffer.SetSize(CSize(20, 11));
                    buffer.DrawText("ok", CRect(0, 0, 20, 11), false);
                    EXPECT_GE(CGraphicBuffer::FontRefNum(), 1);
                }
            });
        }
    }
    EXPECT_EQ(CGraphicBuffer::FontRefNum(), before);
}

// Closed menus leave this much between their edge and their arrow.
TEST(SystemFonts, FitTheMatrixMenus) {
    CGraphicBuffer canvas;
    canvas.SetSize(CSize(1, 1));
    for (const char* name : {"stri1&2 dec", "str1&2 dmp", "str2  damp", "noise rate", "hi-cut ctf"})
        EXPECT_LE(canvas.DrawText(name, CRect(), true).cx, 54) << name;
}

}  // namespace
}  // namespace norava
