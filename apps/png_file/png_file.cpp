#include "png_file/png_file.h"

#include <png.h>

namespace norava {

void PngFile::ShowPixels(const uint32_t* words, CSize size, CRect) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(size.cx);
    image.height = static_cast<png_uint_32>(size.cy);
    image.format = PNG_FORMAT_RGBA;
    // Rows lie bottom-up, which a negative stride says.
    written = png_image_write_to_file(&image, path.c_str(), 0, words, -4 * size.cx, nullptr) != 0;
}

}  // namespace norava
