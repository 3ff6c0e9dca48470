#include <gtest/gtest.h>

#include "gui/graphic_buffer.h"

// What the letters look like, and where a label puts them, is held by the reference pictures.
namespace norava {
namespace {

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

}  // namespace
}  // namespace norava
