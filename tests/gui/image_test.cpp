#include "gui/image.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "files/scratch_folder.h"
#include "gui/image_bank.h"
#include "gui/packed_picture.h"
#include "gui/targa.h"
#include "pictures/picture_packer.h"

// What pixels a file gives, whole or cut, and that a saved one gives them again, is held by the
// fuzz target of pictures.
namespace norava {
namespace {

using test::ScratchFolder;
using test::Targa;

// Every value in every header byte: what matters is checked, what is ignored is ignored.
TEST(Image, ChecksItsHeader) {
    const std::vector<uint8_t> good = Targa{}.Bytes();
    for (size_t position = 0; position < 18; ++position) {
        for (int value = 0; value < 256; ++value) {
            std::vector<uint8_t> bytes = good;
            bytes[position] = static_cast<uint8_t>(value);
            const int width = bytes[12] | bytes[13] << 8, height = bytes[14] | bytes[15] << 8;
            const bool usable = bytes[1] == 0 && bytes[2] == 2 &&
                                (bytes[16] == 24 || bytes[16] == 32) && width > 0 && height > 0 &&
                                int64_t{width} * height <= CImage::kMaxPixels;
            CImage image;
            ASSERT_EQ(image.LoadFromMemory(bytes, "x"), usable) << position << " = " << value;
            ASSERT_EQ(image.GetSize(), usable ? CSize(width, height) : CSize());
        }
    }
    CImage image;
    EXPECT_FALSE(image.LoadFromMemory(good, std::string(1024, 'p').c_str()));
    EXPECT_FALSE(image.LoadFromMemory(good, nullptr));
}

// A small file may claim a picture of any size; neither its memory nor the time to clear it is
// spent.
TEST(Image, DoesNotBelieveClaims) {
    const auto claim = [](int width, int height) {
        std::vector<uint8_t> bytes = Targa{.width = 0, .height = 0}.Bytes();
        bytes[12] = static_cast<uint8_t>(width), bytes[13] = static_cast<uint8_t>(width >> 8);
        bytes[14] = static_cast<uint8_t>(height), bytes[15] = static_cast<uint8_t>(height >> 8);
        bytes.resize(1024);
        return CImage().LoadFromMemory(bytes, "x");
    };
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(claim(65535, 65535));
    EXPECT_FALSE(claim(8000, 4001));
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(claim(8000, 4000));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
}

TEST(Image, SavesWhatAFileCanHold) {
    const ScratchFolder folder;
    CImage image, again;
    ASSERT_TRUE(image.SetSize(CSize(65536, 1)));
    EXPECT_FALSE(image.SaveAsTGA(folder.Path("a.tga").c_str())) << "16 bits hold no such width";
    EXPECT_FALSE(std::filesystem::exists(folder.Path("a.tga")));
    ASSERT_TRUE(image.SetSize(CSize(300, 2)));
    image.Clear(CColor(255, 0, 7, 99));
    EXPECT_FALSE(image.SaveAsTGA(folder.Path("no/such/folder.tga").c_str()));
    ASSERT_TRUE(image.SaveAsTGA(folder.Path("a.tga").c_str()));
    ASSERT_TRUE(again.LoadFromFile(folder.Path("a.tga").c_str()));
    EXPECT_EQ(again.GetSize(), CSize(300, 2));
    EXPECT_EQ(again.GetColorAt(299, 1), CColor(7, 0, 255, 99)) << "red and blue change places";
}

TEST(ImageBank, LoadsEachPathOnceForAll) {
    const ScratchFolder folder;
    const std::string one = folder.Write("one.tga", Targa{}.Text());
    const std::string two = folder.Write("two.tga", Targa{}.Text());
    const std::string bad = folder.Write("bad.tga", "no picture");
    EXPECT_EQ(image_bank::Import(one.c_str(), 1, "one"), nullptr) << "nobody would free it";
    {
        const image_bank::User user;
        CImage* image = image_bank::Import(one.c_str(), 1, "one");
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(image_bank::Import(one.c_str(), 2, "other"), image);
        EXPECT_EQ(image_bank::FindByID(2), nullptr) << "a known picture keeps its id";
        EXPECT_EQ(image_bank::FindByName("other"), nullptr);
        EXPECT_EQ(image_bank::FindByName(""), nullptr);
        EXPECT_NE(image_bank::Import(two.c_str(), 1, nullptr), nullptr);
        EXPECT_EQ(image_bank::Import(bad.c_str(), 3, "bad"), nullptr);
        EXPECT_EQ(image_bank::Import(nullptr, 1, "nothing"), nullptr);
        EXPECT_EQ((image_bank::User(), image_bank::CountUsers()), 2);
        EXPECT_EQ(image_bank::FindByID(1), image) << "the first of two, and a user is left";
    }
    EXPECT_EQ(image_bank::CountUsers(), 0);
    EXPECT_EQ(image_bank::FindByID(1), nullptr) << "freed with the last user";
}

// A folder of pictures may have finer ones for some; what does not fit falls back to the plain one.
TEST(ImageBank, TakesFinerPicturesWhereTheyFit) {
    const ScratchFolder folder;
    std::filesystem::create_directories(folder.Path("dot.ted"));
    for (const char* name : {"fine.tga", "odd.tga", "none.tga", "no ending", "dot.ted/plain"})
        folder.Write(name, Targa{.width = 8, .height = 8}.Text());
    folder.Write("fine@2x.tga", Targa{.width = 16, .height = 16}.Text());
    folder.Write("odd@2x.tga", Targa{.width = 15, .height = 15}.Text());
    const image_bank::User user;
    const auto stored = [&](const char* name) {
        const CImage* image = image_bank::Import(folder.Path(name).c_str(), -1, nullptr, 2);
        EXPECT_NE(image, nullptr) << name;
        EXPECT_EQ(image->GetSize(), CSize(8, 8)) << name;
        return image->GetSclFactor();
    };
    EXPECT_EQ(stored("fine.tga"), 2);
    for (const char* name : {"odd.tga", "none.tga", "no ending", "dot.ted/plain"})
        EXPECT_EQ(stored(name), 1) << name;
}

// Hosts may open and close editors of several instances on several threads, which share pictures
// and fonts.
TEST(ImageBank, ServesManyThreads) {
    const long buffers = CGraphicBuffer::FontRefNum();
    const ScratchFolder folder;
    const std::string paths[] = {folder.Write("0", Targa{}.Text()),
                                 folder.Write("1", Targa{}.Text())};
    const auto work = [&] {
        for (int round = 0; round < 50; ++round) {
            const image_bank::User user;
            CGraphicBuffer canvas;
            canvas.SetSize(CSize(3, 2));
            for (int id = 0; id < 2; ++id) {
                CImage* image = image_bank::Import(paths[id].c_str(), id, paths[id].c_str());
                ASSERT_NE(image, nullptr);
                EXPECT_EQ(image_bank::FindByID(id), image);
                EXPECT_EQ(image_bank::FindByName(paths[id].c_str()), image);
                canvas.DrawImage(image, CRect(0, 0, 3, 2), {0, 0});
                canvas.DrawText("ok", CRect(0, 0, 3, 2), false);
            }
        }
    };
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(work);
    threads.clear();
    EXPECT_EQ(image_bank::CountUsers(), 0);
    EXPECT_EQ(CGraphicBuffer::FontRefNum(), buffers);
}

struct Sample {
    // Smooth shading under a little noise, plain areas, and frames that differ in a few pixels.
    Sample(CSize size, int scale, bool hasAlpha, int frames = 1)
        : picture{size, scale, hasAlpha, frames > 1 ? size.cy * scale / frames : 0} {
        uint32_t noise = 12345;
        for (int i = 0; i < size.cx * size.cy * scale * scale; ++i) {
            noise = noise * 1664525u + 1013904223u;
            const int x = i % (size.cx * scale), row = i / (size.cx * scale);
            const int height = size.cy * scale / frames, y = row % height;
            uint32_t word = static_cast<uint32_t>(x * 3 + y) % 256 * 0x010101u + (noise >> 30);
            if (row / height == x) word = noise;
            const uint32_t alpha = hasAlpha ? 200u + (noise >> 28) : 255u;
            const bool isEmpty = hasAlpha && y % 4 == 1;
            words.push_back(isEmpty ? 0u : (word & 0x00FFFFFFu) | alpha << 24);
        }
    }
    PackedPicture picture;
    std::vector<uint32_t> words;
};

TEST(PackedPicture, UnpacksToTheSameWords) {
    const Sample samples[] = {
        Sample({1, 1}, 1, false),  Sample({1, 1}, 3, true),       Sample({300, 7}, 1, false),
        Sample({37, 20}, 2, true), Sample({12, 64}, 3, true, 16), Sample({5000, 2}, 4, true),
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
    const Sample sample({12, 18}, 2, true, 6);
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
    const Sample sample({12, 18}, 2, true);
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
    const Sample sample({6, 5}, 2, false);
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
