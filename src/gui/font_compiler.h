#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "gui/bitmap_font.h"

// Turns the drawings in assets/fonts/ into font blocks while the compiler runs: a drawing that is
// not right does not build, and nothing has to be generated beforehand.
namespace norava::font_compiler {

inline constexpr int kRows = 11;

// Not defined: a call while compiling is an error that shows its text.
void DrawingIsWrong(const char* why);

struct Cursor {
    std::string_view rest;

    // The next line that is neither empty nor a note.
    constexpr std::string_view NextLine() {
        while (!rest.empty()) {
            const size_t end = rest.find('\n');
            const std::string_view line = rest.substr(0, end);
            rest = end == rest.npos ? std::string_view() : rest.substr(end + 1);
            if (!line.empty() && line[0] != ';') return line;
        }
        return {};
    }
};

constexpr uint8_t Ink(char drawn) {
    if (drawn == '#') return 0;
    if (drawn < '1' || drawn > '9') DrawingIsWrong("a field holds something else than . 1 to 9 #");
    return static_cast<uint8_t>(255 - ((drawn - '0') * 255 + 5) / 10);
}

template <size_t bytes>
struct Block {
    std::array<uint8_t, bytes> data{};
    size_t used = BitmapFont::kFirstGlyph;

    constexpr void Put(size_t value) {
        if (used == bytes) DrawingIsWrong("the inked pixels exceed the block");
        data[used++] = static_cast<uint8_t>(value);
    }

    constexpr void PutGlyph(int index, const std::array<std::string_view, kRows>& rows, size_t left,
                            size_t width) {
        const auto entry = static_cast<size_t>(BitmapFont::kTableStart + 2 * index);
        data[entry] = static_cast<uint8_t>(used & 0xFF);
        data[entry + 1] = static_cast<uint8_t>(used >> 8);
        Put(width);
        const size_t count = used;
        Put(0);
        for (size_t y = 0; y < kRows; ++y) {
            for (size_t x = 0; x < width; ++x) {
                const char drawn = rows[y][left + x];
                if (drawn == '.') continue;
                Put(x | y << 4);
                Put(Ink(drawn));
                ++data[count];
            }
        }
        if (data[count] == 0) DrawingIsWrong("a letter is empty");
    }
};

// Blocks have a fixed size; what the drawing leaves over stays 0.
template <size_t bytes>
consteval std::array<uint8_t, bytes> Compile(std::string_view drawing) {
    Block<bytes> block;
    block.data[0] = kRows;
    Cursor cursor{drawing};
    int index = 0;
    while (index < BitmapFont::kGlyphs) {
        const std::string_view letters = cursor.NextLine();
        std::array<std::string_view, kRows> rows;
        for (std::string_view& row : rows)
            row = cursor.NextLine();
        for (size_t left = 0; left < letters.size();) {
            if (letters[left] != '!' + index) DrawingIsWrong("the letters are not in code order");
            const size_t end = std::min(rows[0].find(' ', left), rows[0].size());
            if (end - left > BitmapFont::kMaxGlyphSide) DrawingIsWrong("a letter is too wide");
            block.PutGlyph(index++, rows, left, end - left);
            left = end + 1;
        }
    }
    return block.data;
}

}  // namespace norava::font_compiler
