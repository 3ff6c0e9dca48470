#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <string>
#include <thread>

#include "framework/shared_text.h"

namespace norava {
namespace {

// Writers set texts of one repeated letter whose length belongs to the letter: any mixture of two
// texts shows.
std::string TextOf(int number) {
    std::string text;
    text.assign(static_cast<std::size_t>(1 + number * 31 % 250),
                static_cast<char>('a' + number % 26));
    return text;
}

bool IsWhole(const std::string& text) {
    for (int number = 0; number < 26; ++number) {
        if (text == TextOf(number)) return true;
    }
    return false;
}

TEST(SharedText, IsNeverTornByManyWriters) {
    // As few slots as work: each is written again while readers are still at it.
    CSharedText<256, 5> text(TextOf(0));
    std::atomic<bool> done = false;
    std::atomic<int> numTorn = 0;
    std::array<std::thread, 2> readers;
    for (auto& reader : readers) {
        reader = std::thread([&] {
            std::array<char, 256> read;
            while (!done) {
                text.Get(read);
                if (!IsWhole(read.data())) ++numTorn;
            }
        });
    }
    std::array<std::thread, 3> writers;
    for (int writer = 0; writer < 3; ++writer) {
        writers[static_cast<std::size_t>(writer)] = std::thread([&text, writer] {
            for (int i = 0; i < 20000; ++i)
                text.Set(TextOf((i * 7 + writer) % 26));
        });
    }
    for (auto& writer : writers)
        writer.join();
    done = true;
    for (auto& reader : readers)
        reader.join();
    EXPECT_EQ(numTorn, 0);
}

}  // namespace
}  // namespace norava
