#include "gui/image.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "files/scratch_folder.h"
#include "gui/image_bank.h"
#include "gui/targa.h"

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

}  // namespace
}  // namespace norava
