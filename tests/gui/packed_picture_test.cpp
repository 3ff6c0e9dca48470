#include "gui/packed_picture.h"

#include <gtest/gtest.h>

#include "gui/image.h"
#include "pictures/picture_packer.h"

namespace norava {
namespace {

struct Sample {
    PackedPicture picture;
    std::vector<uint32_t> words;
};

size_t CountWords(const PackedPicture& picture) {
    return static_cast<size_t>(picture.GetStoredSize().cx) *
           static_cast<size_t>(picture.GetStoredSize().cy);
}

// Smooth shading under a little noise, plain areas, and frames that differ in a few pixels.
Sample MakeSample(CSize size, int scale, bool hasAlpha, int frames = 1) {
    Sample sample{{size, scale, hasAlpha, frames > 1 ? size.cy * scale / frames : 0}, {}};
    const auto width = static_cast<size_t>(size.cx * scale);
    const size_t frameWords = CountWords(sample.picture) / static_cast<size_t>(frames);
    uint32_t noise = 12345;
    for (size_t i = 0; i < CountWords(sample.picture); ++i) {
        noise = noise * 1664525u + 1013904223u;
        const size_t x = i % width, y = i % frameWords / width;
        uint32_t word = static_cast<uint32_t>(x * 3 + y) % 256 * 0x010101u + (noise >> 30);
        if (i / frameWords == x) word = noise;
        const bool isPlain = y % 4 == 1;
        const uint32_t alpha = !hasAlpha ? 255u : isPlain ? 0u : 200u + (noise >> 28);
        sample.words.push_back(alpha == 0 ? 0u : (word & 0x00FFFFFFu) | alpha << 24);
    }
    return sample;
}

TEST(PackedPicture, UnpacksToTheSameWords) {
    const Sample samples[] = {
        MakeSample({1, 1}, 1, false),
        MakeSample({1, 1}, 3, true),
        MakeSample({300, 7}, 1, false),
        MakeSample({37, 20}, 2, true),
        MakeSample({12, 64}, 3, true, 16),
        MakeSample({5000, 2}, 4, true),
        {{{9, 3}, 1, false, 0}, std::vector<uint32_t>(27, 0xFF000000u)},
        {{{9, 3}, 1, true, 0}, std::vector<uint32_t>(27, 0u)},
    };
    for (const Sample& sample : samples) {
        const std::vector<uint8_t> packed = PackPicture(sample.picture, sample.words);
        std::vector<uint32_t> words(sample.words.size());
        EXPECT_TRUE(UnpackPicture(packed, words));
        EXPECT_EQ(words, sample.words);
        const auto header = ReadPackedHeader(packed);
        ASSERT_TRUE(header.has_value());
        EXPECT_EQ(header->size, sample.picture.size);
        words.pop_back();
        EXPECT_FALSE(UnpackPicture(packed, words));
    }
}

// Whatever a byte is damaged to, the unpacker stays inside its memory: the sanitizers watch.
TEST(PackedPicture, SurvivesDamage) {
    const Sample sample = MakeSample({12, 18}, 2, true, 6);
    const std::vector<uint8_t> good = PackPicture(sample.picture, sample.words);
    CImage image;
    for (size_t length = 0; length < good.size(); ++length)
        ASSERT_FALSE(image.LoadPacked({good.data(), length}, "cut")) << length;
    EXPECT_FALSE(image.IsSafe());
    size_t refused = 0;
    for (size_t at = 0; at < good.size(); ++at) {
        for (const int flip : {1, 0x10, 0x80, 0xFF}) {
            std::vector<uint8_t> bad = good;
            bad[at] = static_cast<uint8_t>(bad[at] ^ flip);
            refused += image.LoadPacked(bad, "damaged") ? 0u : 1u;
        }
    }
    EXPECT_GT(refused, good.size() / 10);
    EXPECT_TRUE(image.LoadPacked(good, "good")) << "usable after all that";
}

// Scale, alpha, width and height that are none; and more pixels than memory should be risked for.
TEST(PackedPicture, DoesNotBelieveClaims) {
    const Sample sample = MakeSample({12, 18}, 2, true);
    std::vector<uint8_t> good = PackPicture(sample.picture, sample.words);
    good.resize(good.size() + 1000);
    CImage image;
    EXPECT_TRUE(image.LoadPacked(good, "good"));
    EXPECT_FALSE(image.LoadPacked(good, nullptr));
    const std::vector<uint8_t> claims[] = {
        {0}, {5}, {2, 2}, {2, 1, 0, 0}, {2, 1, 12, 0, 0, 0}, {4, 1, 255, 255, 100, 0}};
    for (const std::vector<uint8_t>& claim : claims) {
        std::vector<uint8_t> bad = good;
        std::ranges::copy(claim, bad.begin() + 2);
        EXPECT_FALSE(image.LoadPacked(bad, "bad")) << claim.size();
    }
}

TEST(PackedPicture, KeepsItsDetailAtItsScale) {
    const Sample sample = MakeSample({6, 5}, 2, false);
    CImage image;
    ASSERT_TRUE(image.LoadPacked(PackPicture(sample.picture, sample.words), "a"));
    EXPECT_EQ(image.GetSize(), CSize(6, 5));
    CGraphicBuffer fine(2), coarse(1);
    for (CGraphicBuffer* buffer : {&fine, &coarse}) {
        buffer->SetSize(CSize(6, 5));
        buffer->DrawImage(&image, CRect(0, 0, 6, 5), {0, 0});
    }
    EXPECT_TRUE(std::ranges::equal(sample.words, std::span(fine.GetDataAt(0, 0), 12 * 10)));
    EXPECT_EQ(*coarse.GetDataAt(2, 4), sample.words[8 * 12 + 4]) << "one of each block";
}

}  // namespace
}  // namespace norava
