#include "gui/image.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "files/scratch_folder.h"
#include "gui/image_bank.h"
#include "gui/targa.h"

namespace norava {
namespace {

using test::ScratchFolder;
using test::Targa;

bool Load(CImage& image, const std::vector<uint8_t>& bytes) {
    return image.LoadFromMemory(bytes, "in memory");
}

TEST(Image, LoadsBothDepthsUpright) {
    for (const int depth : {24, 32}) {
        for (const char* idField : {"", "made by hand"}) {
            Targa targa;
            targa.depth = depth;
            targa.idField = idField;
            const ScratchFolder folder;
            const std::string path = folder.Write("a.tga", targa.Text());
            CImage image;
            ASSERT_TRUE(image.LoadFromFile(path.c_str()));
            EXPECT_EQ(image.GetSize(), CSize(3, 2));
            EXPECT_EQ(image.GetHasAlpha(), depth == 32);
            EXPECT_EQ(image.GetFilePath(), path);
            EXPECT_EQ(image.GetID(), -1);
            for (int y = 0; y < 2; ++y) {
                for (int x = 0; x < 3; ++x) {
                    CColor expected = CColor::FromWord(targa.color(x, 1 - y));
                    if (depth == 24) expected.alpha = 255;
                    EXPECT_EQ(image.GetColorAt(x, y), expected);
                }
            }
        }
    }
}

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
            ASSERT_EQ(Load(image, bytes), usable) << "byte " << position << " = " << value;
            ASSERT_EQ(image.GetSize(), usable ? CSize(width, height) : CSize());
        }
    }
}

TEST(Image, LacksOnlyTheRowsThatAreCutOff) {
    Targa targa;
    targa.width = 5;
    targa.height = 4;
    targa.idField = "id";
    const std::vector<uint8_t> good = targa.Bytes();
    for (size_t length = 0; length <= good.size(); ++length) {
        const std::vector<uint8_t> bytes(good.begin(), good.begin() + static_cast<long>(length));
        CImage image;
        // The last byte of the header is ignored, so it may be missing.
        ASSERT_EQ(Load(image, bytes), length >= 17) << length;
        const int wholeRows = length < 20 ? 0 : static_cast<int>((length - 20) / (5 * 4));
        for (int row = 0; row < image.GetSize().cy; ++row) {
            const CColor expected =
                row < wholeRows ? CColor::FromWord(targa.color(4, row)) : CColor(0, 0);
            EXPECT_EQ(image.GetColorAt(4, 3 - row), expected) << length;
        }
    }
}

// Nothing of an old picture may show through the rows that a new, cut one lacks.
TEST(Image, ForgetsWhatItHeldBefore) {
    CImage image;
    ASSERT_TRUE(Load(image, Targa{}.Bytes()));
    EXPECT_FALSE(Load(image, {1, 2, 3}));
    EXPECT_EQ(image.GetColorAt(0, 0), CColor::FromWord(Targa{}.color(0, 1))) << "refused: kept";
    std::vector<uint8_t> cut = Targa{}.Bytes();
    cut.resize(18 + 12);
    ASSERT_TRUE(Load(image, cut));
    EXPECT_EQ(image.GetColorAt(0, 0), CColor(0, 0));
    EXPECT_FALSE(image.LoadFromMemory(cut, std::string(1024, 'p').c_str()));
    EXPECT_FALSE(image.LoadFromMemory(cut, nullptr));
}

// A small file may claim a picture of any size; neither its memory nor the time to clear it is
// spent.
TEST(Image, DoesNotBelieveClaims) {
    const auto claim = [](int width, int height) {
        Targa targa;
        targa.width = targa.height = 0;
        std::vector<uint8_t> bytes = targa.Bytes();
        bytes[12] = static_cast<uint8_t>(width), bytes[13] = static_cast<uint8_t>(width >> 8);
        bytes[14] = static_cast<uint8_t>(height), bytes[15] = static_cast<uint8_t>(height >> 8);
        bytes.resize(1024);
        CImage image;
        return Load(image, bytes);
    };
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(claim(65535, 65535));
    EXPECT_FALSE(claim(8000, 4001));
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(claim(8000, 4000));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
}

TEST(Image, SavesInItsOwnByteOrder) {
    const ScratchFolder folder;
    CImage image;
    ASSERT_TRUE(image.SetSize(CSize(300, 2)));
    image.Clear(CColor(255, 0, 7, 99));
    EXPECT_FALSE(image.SaveAsTGA(folder.Path("no/such/folder.tga").c_str()));
    CImage wide;
    ASSERT_TRUE(wide.SetSize(CSize(65536, 1)));
    EXPECT_FALSE(wide.SaveAsTGA(folder.Path("wide.tga").c_str())) << "16 bits hold no such width";
    EXPECT_FALSE(std::filesystem::exists(folder.Path("wide.tga")));
    ASSERT_TRUE(image.SaveAsTGA(folder.Path("a.tga").c_str()));
    EXPECT_EQ(folder.Read("a.tga").size(), 18u + 300 * 2 * 4);
    CImage again;
    ASSERT_TRUE(again.LoadFromFile(folder.Path("a.tga").c_str()));
    EXPECT_EQ(again.GetSize(), CSize(300, 2));
    EXPECT_EQ(again.GetColorAt(299, 1), CColor(7, 0, 255, 99))
        << "red and blue have changed places";
}

TEST(ImageBank, LoadsEachPathOnceForAll) {
    const ScratchFolder folder;
    const std::string one = folder.Write("one.tga", Targa{}.Text());
    const std::string two = folder.Write("two.tga", Targa{}.Text());
    folder.Write("bad.tga", "no picture");
    EXPECT_EQ(image_bank::Import(one.c_str(), 1, "one"), nullptr) << "nobody would free it";
    {
        const image_bank::User user;
        CImage* image = image_bank::Import(one.c_str(), 1, "one");
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(image_bank::Import(one.c_str(), 2, "other"), image);
        EXPECT_EQ(image_bank::FindByID(1), image);
        EXPECT_EQ(image_bank::FindByID(2), nullptr) << "a known picture keeps its id";
        EXPECT_EQ(image_bank::FindByName("other"), nullptr);
        EXPECT_EQ(image_bank::FindByName(""), nullptr);
        EXPECT_NE(image_bank::Import(two.c_str(), 1, nullptr), nullptr);
        EXPECT_EQ(image_bank::FindByID(1), image) << "the first of two";
        EXPECT_EQ(image_bank::Import(folder.Path("bad.tga").c_str(), 3, "bad"), nullptr);
        EXPECT_EQ(image_bank::FindByName("bad"), nullptr);
        EXPECT_EQ((image_bank::User(), image_bank::CountUsers()), 2);
        EXPECT_EQ(image_bank::FindByID(1), image) << "there is a user left";
    }
    EXPECT_EQ(image_bank::CountUsers(), 0);
    EXPECT_EQ(image_bank::FindByID(1), nullptr) << "freed with the last user";
}

// A folder of pictures may have finer ones for some; what does not fit falls back to the plain one.
TEST(ImageBank, TakesFinerPicturesWhereTheyFit) {
    const ScratchFolder folder;
    const auto write = [&](const char* name, int side) {
        CImage image;
        image.SetSize(CSize(side, side));
        image.Clear(CColor(static_cast<uint8_t>(side), 0, 0, 255));
        EXPECT_TRUE(image.SaveAsTGA(folder.Path(name).c_str()));
    };
    for (const char* name : {"fine.tga", "odd.tga", "none.tga", "no ending", "dot.ted/plain"}) {
        std::filesystem::create_directories(folder.Path("dot.ted"));
        write(name, 8);
    }
    write("fine@2x.tga", 16);
    write("odd@2x.tga", 15);
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
    EXPECT_EQ(image_bank::Import(nullptr, 1, "nothing"), nullptr);
}

// Hosts may open and close editors of several instances on several threads.
TEST(ImageBank, ServesManyThreads) {
    const ScratchFolder folder;
    std::vector<std::string> paths;
    for (int i = 0; i < 5; ++i)
        paths.push_back(folder.Write(std::to_string(i), Targa{}.Text()));
    const auto work = [&] {
        for (int round = 0; round < 50; ++round) {
            const image_bank::User user;
            CGraphicBuffer canvas;
            canvas.SetSize(CSize(3, 2));
            for (size_t i = 0; i < paths.size(); ++i) {
                const int id = static_cast<int>(i);
                CImage* image = image_bank::Import(paths[i].c_str(), id, paths[i].c_str());
                ASSERT_NE(image, nullptr);
                EXPECT_EQ(image_bank::FindByID(id), image);
                EXPECT_EQ(image_bank::FindByName(paths[i].c_str()), image);
                canvas.DrawImage(image, CRect(0, 0, 3, 2), {0, 0});
            }
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(work);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(image_bank::CountUsers(), 0);
}

}  // namespace
}  // namespace norava
