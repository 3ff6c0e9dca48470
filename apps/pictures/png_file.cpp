#include "pictures/png_file.h"

#include <png.h>

#include <algorithm>
#include <stdexcept>

namespace norava {

PngPicture ReadPng(const std::string& path) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    const auto fail = [&] { throw std::runtime_error(path + ": " + image.message); };
    if (!png_image_begin_read_from_file(&image, path.c_str())) fail();
    image.format = PNG_FORMAT_RGBA;
    PngPicture picture;
    picture.size = CSize(static_cast<int>(image.width), static_cast<int>(image.height));
    picture.words.resize(size_t{image.width} * image.height);
    // A negative stride: the highest row last.
    const auto stride = -static_cast<png_int_32>(image.width * 4);
    if (!png_image_finish_read(&image, nullptr, picture.words.data(), stride, nullptr)) fail();
    for (uint32_t& word : picture.words)
        if (word >> 24 == 0) word = 0;
    picture.hasAlpha =
        std::ranges::any_of(picture.words, [](uint32_t word) { return word >> 24 < 255; });
    return picture;
}

}  // namespace norava
