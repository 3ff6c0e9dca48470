#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace norava::test {

// A Targa file as its header fields say, with pixels from color(x, y), y counted from the lowest
// row: red in the lowest byte, alpha in the highest.
struct Targa {
    int width = 3;
    int height = 2;
    int depth = 32;
    std::function<uint32_t(int x, int y)> color = [](int x, int y) {
        return 0x80302010u + static_cast<uint32_t>(x + 16 * y);
    };

    [[nodiscard]] std::vector<uint8_t> Bytes() const {
        const auto low = [](int value) { return static_cast<uint8_t>(value & 0xFF); };
        std::vector<uint8_t> bytes(18);
        bytes[2] = 2;
        bytes[12] = low(width), bytes[13] = low(width >> 8);
        bytes[14] = low(height), bytes[15] = low(height >> 8);
        bytes[16] = low(depth);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const uint32_t word = color(x, y);
                for (const int shift : {16, 8, 0, 24})
                    if (shift < 24 || depth == 32)
                        bytes.push_back(static_cast<uint8_t>(word >> shift));
            }
        }
        return bytes;
    }

    [[nodiscard]] std::string Text() const {
        const std::vector<uint8_t> bytes = Bytes();
        return {bytes.begin(), bytes.end()};
    }
};

}  // namespace norava::test
