#include "framework/text_copy.h"

#include <gtest/gtest.h>

#include <array>
#include <clocale>
#include <limits>
#include <string>

#include "framework/shared_text.h"

namespace norava {
namespace {

TEST(TextCopy, CutsAtCharacterBoundariesAndStaysInside) {
    // One, two, three and four bytes a character.
    const std::string text = "a\u00e9\u20ac\U0001F3B5z";
    const std::array<std::size_t, 12> expectedLengths = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 11};
    for (std::size_t capacity = 1; capacity <= expectedLengths.size(); ++capacity) {
        std::array<char, 16> buffer;
        buffer.fill('#');
        const std::size_t length = CopyText(std::span(buffer).first(capacity), text);
        EXPECT_EQ(length, expectedLengths[capacity - 1]) << capacity;
        EXPECT_EQ(std::string(buffer.data()), text.substr(0, length));
        for (std::size_t i = length + 1; i < buffer.size(); ++i)
            EXPECT_EQ(buffer[i], '#') << "written beyond the terminator at " << i;
    }
    EXPECT_EQ(CopyText({}, text), 0u);
}

TEST(TextCopy, CutsBytesThatAreNoCharactersWhereTheyStand) {
    std::array<char, 5> buffer;
    EXPECT_EQ(CopyText(buffer, "\x80\x80\x80\x80\x80\x80\x80"), 4u);
    EXPECT_EQ(CopyText(buffer, "\xff\xff\xff\xff\xff\xff\xff"), 4u);
}

TEST(TextCopy, EndsAtTheFirstNulAndAppends) {
    std::array<char, 8> buffer;
    EXPECT_EQ(CopyText(buffer, std::string_view("ab\0cd", 5)), 2u);
    EXPECT_EQ(AppendText(buffer, "cd"), 4u);
    EXPECT_EQ(AppendText(buffer, "efghij"), 7u);
    EXPECT_STREQ(buffer.data(), "abcdefg");
}

TEST(TextCopy, WritesNumbersWithAPointInEveryLocale) {
    std::setlocale(LC_ALL, "de_DE.UTF-8");  // where it is installed
    std::array<char, 32> buffer;
    CopyNumber(buffer, 12.34, 1);
    EXPECT_STREQ(buffer.data(), "12.3");
    CopyNumber(buffer, -7);
    EXPECT_STREQ(buffer.data(), "-7");
    std::setlocale(LC_ALL, "C");
    // 309 digits do not fit; nor do they run over.
    EXPECT_EQ(CopyNumber(buffer, std::numeric_limits<double>::max(), 3), buffer.size() - 1);
}

TEST(SharedText, KeepsWhatFits) {
    CSharedText<9> text("first");
    std::array<char, 16> read;
    EXPECT_EQ(text.Get(read), 5u);
    text.Set("a longer text than nine");
    EXPECT_EQ(text.Get(read), 8u);
    EXPECT_STREQ(read.data(), "a longer");
    EXPECT_EQ(text.Get(std::span(read).first(3)), 2u);
    for (int i = 0; i < 100; ++i)
        text.Set(std::to_string(i));
    text.Get(read);
    EXPECT_STREQ(read.data(), "99");
}

}  // namespace
}  // namespace norava
