#include "framework/text_copy.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <clocale>
#include <limits>
#include <string>
#include <vector>

#include "framework/repeatedly.h"
#include "framework/shared_text.h"

namespace norava {
namespace {

TEST(TextCopy, CutsAtCharacterBoundariesAndStaysInside) {
    // One, two, three and four bytes a character.
    const std::string text = "a\u00e9\u20ac\U0001F3B5z";
    const std::array<std::size_t, 12> expectedLengths = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 11};
    for (std::size_t capacity = 1; capacity <= expectedLengths.size(); ++capacity) {
        std::string buffer(16, '#');
        const std::size_t length = expectedLengths[capacity - 1];
        EXPECT_EQ(CopyText(std::span(buffer).first(capacity), text), length) << capacity;
        EXPECT_EQ(buffer, text.substr(0, length) + '\0' + std::string(15 - length, '#'));
    }
    EXPECT_EQ(CopyText({}, text), 0u);
    // Bytes that are no characters are cut where they stand.
    std::array<char, 5> buffer;
    EXPECT_EQ(CopyText(buffer, "\x80\x80\x80\x80\x80\x80\x80"), 4u);
    EXPECT_EQ(CopyText(buffer, "\xff\xff\xff\xff\xff\xff\xff"), 4u);
    EXPECT_EQ(CopyText(buffer, std::string_view("ab\0cd", 5)), 2u);
    EXPECT_EQ(AppendText(buffer, "cde"), 4u);
    EXPECT_STREQ(buffer.data(), "abcd");
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

// Writers set texts of one repeated letter whose length belongs to the letter: any mixture of two
// texts shows.
std::string TextOf(int letter) {
    std::string text;
    text.assign(static_cast<std::size_t>(1 + letter * 31 % 250), static_cast<char>('a' + letter));
    return text;
}

TEST(SharedText, IsNeverTornByManyWriters) {
    // As few slots as work: each is written again while readers are still at it.
    CSharedText<256, 5> text(TextOf(0));
    std::atomic<int> numTorn = 0;
    std::vector<std::jthread> readers, writers;
    for (int number = 0; number < 3; ++number) {
        readers.push_back(test::Repeatedly([&](int) {
            std::array<char, 256> read;
            text.Get(read);
            if (read.data() != TextOf(read[0] - 'a')) ++numTorn;
        }));
        writers.emplace_back([&, number] {
            for (int i = 0; i < 20000; ++i)
                text.Set(TextOf((i * 7 + number) % 26));
        });
    }
    writers.clear();
    readers.clear();
    EXPECT_EQ(numTorn, 0);
}

}  // namespace
}  // namespace norava
