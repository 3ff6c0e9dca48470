#include "pictures/targa_file.h"

#include <fstream>
#include <vector>

namespace norava {

bool WriteTarga(const CImage& image, const std::string& path) {
    const int scale = image.GetSclFactor();
    const int width = image.GetSize().cx * scale, height = image.GetSize().cy * scale;
    const int depth = image.GetHasAlpha() ? 32 : 24;
    const auto low = [](int value) { return static_cast<char>(value); };
    std::vector<char> bytes(18);
    bytes[2] = 2;  // true colour, uncompressed
    bytes[12] = low(width), bytes[13] = low(width >> 8);
    bytes[14] = low(height), bytes[15] = low(height >> 8);
    bytes[16] = low(depth);
    const uint32_t* word = image.GetDataAt(0, 0);
    for (ptrdiff_t left = static_cast<ptrdiff_t>(width) * height; left > 0; --left, ++word) {
        for (const int shift : {16, 8, 0})
            bytes.push_back(static_cast<char>(*word >> shift));
        if (depth == 32) bytes.push_back(static_cast<char>(*word >> 24));
    }
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    return file.good();
}

}  // namespace norava
