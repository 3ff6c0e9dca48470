#include "gui/pictures.h"

#include <gtest/gtest.h>
#include <png.h>

#include <algorithm>
#include <vector>

#include "gui/pixel_target.h"
#include "png_file/png_file.h"

namespace norava::test {

namespace {

struct Picture {
    CSize size;
    std::vector<uint32_t> words;  // rows from the top
};

Picture ReadPng(const std::string& path) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str())) return {};
    image.format = PNG_FORMAT_RGBA;
    Picture picture{{static_cast<int>(image.width), static_cast<int>(image.height)}, {}};
    picture.words.resize(size_t{image.width} * image.height);
    if (!png_image_finish_read(&image, nullptr, picture.words.data(), 0, nullptr)) return {};
    return picture;
}

}  // namespace

void ExpectLooksLike(const CGraphicBuffer& buffer, const std::string& name) {
    const auto write = [&](const std::string& path) {
        PngFile file(path);
        buffer.Present(&file, CRect(CPoint(), buffer.GetSize()), {});
        return file.IsWritten();
    };
    ExpectLooksLike(write, name);
}

void ExpectLooksLike(const std::function<bool(const std::string& path)>& write,
                     const std::string& name) {
    const std::string drawnPath = std::string(NORAVA_DRAWN_PICTURES) + "/" + name + ".png";
    ASSERT_TRUE(write(drawnPath));
    const Picture drawn = ReadPng(drawnPath);
    const Picture wanted = ReadPng(std::string(NORAVA_REFERENCE_PICTURES) + "/" + name + ".png");
    ASSERT_EQ(drawn.size, wanted.size) << name << ": drawn as " << drawnPath;
    const auto at = std::ranges::mismatch(drawn.words, wanted.words).in1 - drawn.words.begin();
    EXPECT_TRUE(drawn.words == wanted.words)
        << name << " differs first at " << at % drawn.size.cx << ", " << at / drawn.size.cx
        << "; drawn as " << drawnPath;
}

void ExpectSamePixels(const CGraphicBuffer& a, const CGraphicBuffer& b) {
    ASSERT_EQ(a.GetSize(), b.GetSize());
    const int scale = a.GetSclFactor();
    const auto count = static_cast<size_t>(a.GetSize().cx * a.GetSize().cy * scale * scale);
    ASSERT_TRUE(std::equal(a.GetDataAt(0, 0), a.GetDataAt(0, 0) + count, b.GetDataAt(0, 0)));
}

}  // namespace norava::test
