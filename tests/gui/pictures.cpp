#include "gui/pictures.h"

#include <gtest/gtest.h>
#include <png.h>

#include <cstring>
#include <vector>

#include "gui/pixel_target.h"
#include "png_file/png_file.h"

namespace norava::test {

namespace {

struct Picture {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> rgb;  // rows from the top
};

// What a screen would get.
class PictureTarget : public PixelTarget {
  public:
    void ShowPixels(const uint32_t* words, CSize size, CRect) override {
        picture.width = size.cx;
        picture.height = size.cy;
        for (int y = size.cy - 1; y >= 0; --y) {
            for (int x = 0; x < size.cx; ++x) {
                const uint32_t word = words[static_cast<size_t>(y) * static_cast<size_t>(size.cx) +
                                            static_cast<size_t>(x)];
                for (int shift = 0; shift < 24; shift += 8)
                    picture.rgb.push_back(static_cast<uint8_t>(word >> shift));
            }
        }
    }
    Picture picture;
};

Picture PictureOf(const CGraphicBuffer& buffer) {
    PictureTarget target;
    buffer.Present(&target, CRect(CPoint(), buffer.GetSize()), {});
    return target.picture;
}

Picture ReadPng(const std::string& path) {
    Picture picture;
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str())) return picture;
    image.format = PNG_FORMAT_RGB;
    picture.rgb.resize(PNG_IMAGE_SIZE(image));
    if (!png_image_finish_read(&image, nullptr, picture.rgb.data(), 0, nullptr)) return {};
    picture.width = static_cast<int>(image.width);
    picture.height = static_cast<int>(image.height);
    return picture;
}

}  // namespace

bool WritePng(const CGraphicBuffer& buffer, const std::string& path) {
    PngFile file(path);
    buffer.Present(&file, CRect(CPoint(), buffer.GetSize()), {});
    return file.IsWritten();
}

void ExpectLooksLike(const CGraphicBuffer& buffer, const std::string& name) {
    const Picture drawn = PictureOf(buffer);
    const std::string drawnPath = std::string(NORAVA_DRAWN_PICTURES) + "/" + name + ".png";
    ASSERT_TRUE(WritePng(buffer, drawnPath));
    const Picture wanted = ReadPng(std::string(NORAVA_REFERENCE_PICTURES) + "/" + name + ".png");
    ASSERT_EQ(drawn.width, wanted.width) << name << ": drawn as " << drawnPath;
    ASSERT_EQ(drawn.height, wanted.height) << name;
    size_t different = 0;
    for (size_t i = 0; i < drawn.rgb.size(); ++i) {
        if (drawn.rgb[i] == wanted.rgb[i]) continue;
        const size_t pixel = i / 3;
        const auto width = static_cast<size_t>(drawn.width);
        if (different++ == 0) {
            ADD_FAILURE() << name << " differs first at " << pixel % width << ", " << pixel / width
                          << "; drawn as " << drawnPath;
        }
    }
    EXPECT_EQ(different, 0u) << "bytes of " << name;
}

void ExpectSamePixels(const CGraphicBuffer& a, const CGraphicBuffer& b) {
    ASSERT_EQ(a.GetSize(), b.GetSize());
    ASSERT_EQ(a.GetSclFactor(), b.GetSclFactor());
    const int scale = a.GetSclFactor();
    const size_t words = static_cast<size_t>(a.GetSize().cx * a.GetSize().cy * scale * scale);
    const uint32_t* const wordsA = a.GetDataAt(0, 0);
    const uint32_t* const wordsB = b.GetDataAt(0, 0);
    if (std::memcmp(wordsA, wordsB, words * sizeof *wordsA) == 0) return;
    for (size_t i = 0; i < words; ++i) {
        const auto stride = static_cast<size_t>(a.GetSize().cx * scale);
        ASSERT_EQ(wordsA[i], wordsB[i])
            << "stored column " << i % stride << ", row " << i / stride << " from the bottom";
    }
}

}  // namespace norava::test
