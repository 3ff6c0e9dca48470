#include "gui/image.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <thread>

#include "files/scratch_folder.h"
#include "gui/image_bank.h"
#include "gui/packed_picture.h"
#include "gui/window_port.h"
#include "pictures/picture_packer.h"

// Which headers are taken, what pixels a file gives, whole or cut, and that a saved one gives them
// again, is held by the fuzz target of pictures.
namespace norava {
namespace {

struct PictureFolder : test::ScratchFolder {
    // Returns the path.
    std::string Add(const std::string& name, CSize size = CSize(8, 8)) const {
        CImage image;
        Write(name, "");
        EXPECT_TRUE(image.SetSize(size) && image.SaveAsTGA(Path(name).c_str())) << name;
        return Path(name);
    }
};

struct Sample {
    // Smooth shading under a little noise, plain rows, and frames that differ in a few pixels.
    Sample(CSize size, int scale, bool hasAlpha, int frames = 1)
        : picture{size, scale, hasAlpha, frames > 1 ? size.cy * scale / frames : 0} {
        uint32_t noise = 12345;
        const int width = size.cx * scale, height = size.cy * scale / frames;
        for (int i = 0; i < width * height * frames; ++i) {
            const int x = i % width, y = i / width % height, frame = i / width / height;
            noise = noise * 1664525u + 1013904223u;
            const auto shade = static_cast<uint32_t>(x * 3 + y) % 256 * 0x010101u;
            const uint32_t word = frame == x ? noise : shade + (noise >> 30);
            const uint32_t alpha = hasAlpha ? 200u + (noise >> 28) : 255u;
            words.push_back(hasAlpha && y % 4 == 1 ? 0u : (word & 0x00FFFFFFu) | alpha << 24);
        }
    }
    [[nodiscard]] std::vector<uint8_t> Pack() const { return PackPicture(picture, words); }
    PackedPicture picture;
    std::vector<uint32_t> words;
};

// A small file may claim a picture of any size; neither its memory nor the time to clear it is
// spent.
TEST(Image, DoesNotBelieveClaims) {
    const auto claim = [](uint16_t width, uint16_t height) {
        std::array<uint8_t, 1024> bytes{};
        bytes[2] = 2, bytes[16] = 32;
        std::memcpy(&bytes[12], &width, sizeof width);
        std::memcpy(&bytes[14], &height, sizeof height);
        return CImage().LoadFromMemory(bytes, "x");
    };
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(CImage().LoadFromMemory({}, nullptr));
    EXPECT_FALSE(claim(65535, 65535));
    EXPECT_FALSE(claim(8000, 4001));
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(claim(8000, 4000));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
}

TEST(Image, SavesWhatAFileCanHold) {
    const test::ScratchFolder folder;
    CImage image, saved;
    EXPECT_FALSE(image.SaveAsTGA(folder.Path("no/such/folder.tga").c_str()));
    ASSERT_TRUE(image.SetSize(CSize(65536, 1)));
    EXPECT_FALSE(image.SaveAsTGA(folder.Path("a.tga").c_str())) << "16 bits hold no such width";
    EXPECT_TRUE(folder.Names().empty());

    ASSERT_TRUE(image.LoadPacked(Sample({3, 1}, 2, true).Pack(), "fine"));
    ASSERT_TRUE(image.SaveAsTGA(folder.Path("fine").c_str()));
    ASSERT_TRUE(saved.LoadFromFile(folder.Path("fine").c_str()));
    for (int x = 0; x < 3; ++x)
        EXPECT_EQ(saved.GetColorAt(x, 0).green, image.GetColorAt(x, 0).green) << "one of a block";
}

TEST(ImageBank, LoadsEachPathOnceForAll) {
    const PictureFolder folder;
    const std::string one = folder.Add("one.tga"), two = folder.Add("two.tga");
    EXPECT_EQ(image_bank::Import(one.c_str(), 1, "one"), nullptr) << "nobody would free it";
    {
        const image_bank::User user;
        CImage* image = image_bank::Import(one.c_str(), 1, "one");
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(image_bank::Import(one.c_str(), 2, "other"), image);
        EXPECT_EQ(image_bank::FindByID(2), nullptr) << "a known picture keeps its id";
        EXPECT_EQ(image_bank::FindByName(""), nullptr);
        EXPECT_NE(image_bank::Import(two.c_str(), 1, nullptr), nullptr);
        const std::string bad = folder.Write("bad.tga", "no picture");
        for (const char* none : {bad.c_str(), "missing.tga", static_cast<const char*>(nullptr)})
            EXPECT_EQ(image_bank::Import(none, 3, "none"), nullptr);
        EXPECT_EQ((image_bank::User(), image_bank::CountUsers()), 2);
        EXPECT_EQ(image_bank::FindByID(1), image) << "the first of two, and a user is left";
    }
    EXPECT_EQ(image_bank::CountUsers(), 0);
    EXPECT_EQ(image_bank::FindByID(1), nullptr) << "freed with the last user";
}

// A folder of pictures may have finer ones for some; what does not fit falls back to the plain one.
TEST(ImageBank, TakesFinerPicturesWhereTheyFit) {
    const PictureFolder folder;
    folder.Add("fine@2x.tga", CSize(16, 16));
    folder.Add("odd@2x.tga", CSize(15, 15));
    const image_bank::User user;
    for (const auto& [name, scale] : {std::pair{"fine.tga", 2},
                                      {"odd.tga", 1},
                                      {"none.tga", 1},
                                      {"no ending", 1},
                                      {"dot.ted/plain", 1}}) {
        const CImage* image = image_bank::Import(folder.Add(name).c_str(), -1, nullptr, 2);
        ASSERT_NE(image, nullptr) << name;
        EXPECT_EQ(image->GetSize(), CSize(8, 8)) << name;
        EXPECT_EQ(image->GetSclFactor(), scale) << name;
    }
}

TEST(ImageBank, TakesPicturesFromTheFolderOrTheModule) {
    const std::vector<uint8_t> once = Sample({3, 2}, 1, true).Pack();
    const std::vector<uint8_t> twice = Sample({3, 2}, 2, true).Pack();
    const BuiltInPicture set[] = {{"knob.tga", {once, twice}}, {"broken.tga", {}}};
    const PictureFolder folder;
    folder.Add("fader.tga");
    CWindowPort window, large(2);
    const auto import = [&](const char* name) {
        return window.ImportImageFromFile(name, 9, "named");
    };
    window.SetBuiltInPictures(set);
    window.SetImageLibraryDir(folder.Path().c_str());
    CImage* fader = import("fader.tga");
    ASSERT_NE(fader, nullptr);
    EXPECT_EQ(window.GetImageByName("named"), fader);
    EXPECT_EQ(large.GetImageByID(9), fader) << "shared by all windows";
    EXPECT_EQ(import("knob.tga"), nullptr) << "a folder that exists must be complete";
    window.SetImageLibraryDir(std::string(1023, 'x').c_str());
    EXPECT_EQ(import("knob.tga"), nullptr) << "never cut";
    window.SetImageLibraryDir(nullptr);
    EXPECT_EQ(import(folder.Path("fader.tga").c_str()), fader);
    for (CWindowPort* port : {&window, &large}) {
        port->SetBuiltInPictures(set);
        port->SetImageLibraryDir(folder.Path("Graphics/").c_str());
        const CImage* knob = port->ImportImageFromFile("knob.tga", 1, nullptr);
        ASSERT_NE(knob, nullptr);
        EXPECT_EQ(knob->GetSclFactor(), port->GetSclFactor()) << "drawn for it, not magnified";
    }
    for (const char* missing : {"fader.tga", "broken.tga", "", static_cast<const char*>(nullptr)})
        EXPECT_EQ(import(missing), nullptr);
}

// Hosts may open and close editors of several instances on several threads, which share pictures
// and fonts.
TEST(ImageBank, ServesManyThreads) {
    const long buffers = CGraphicBuffer::FontRefNum();
    const PictureFolder folder;
    const std::string paths[] = {folder.Add("0"), folder.Add("1")};
    const auto work = [&] {
        for (int round = 0; round < 50; ++round) {
            const image_bank::User user;
            const CGraphicBuffer canvas;
            for (const std::string& path : paths) {
                CImage* image = image_bank::Import(path.c_str(), 0, path.c_str());
                EXPECT_EQ(image_bank::FindByName(path.c_str()), image);
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

TEST(PackedPicture, UnpacksToTheSameWords) {
    const Sample samples[] = {Sample({1, 1}, 1, false), Sample({37, 20}, 2, true),
                              Sample({12, 64}, 3, true, 16), Sample({5000, 2}, 4, true)};
    for (const Sample& sample : samples) {
        CImage image;
        ASSERT_TRUE(image.LoadPacked(sample.Pack(), "a"));
        EXPECT_EQ(image.GetSize(), sample.picture.size);
        EXPECT_EQ(image.GetHasAlpha(), sample.picture.hasAlpha);
        EXPECT_TRUE(std::ranges::equal(sample.words,
                                       std::span(image.GetDataAt(0, 0), sample.words.size())));
        std::vector<uint32_t> tooFew(sample.words.size() - 1);
        EXPECT_FALSE(UnpackPicture(sample.Pack(), tooFew));
    }
}

// Whatever a byte is damaged to, the unpacker stays inside its memory: the sanitizers watch.
TEST(PackedPicture, SurvivesDamage) {
    const std::vector<uint8_t> good = Sample({12, 18}, 2, true, 6).Pack();
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
    // Scale, alpha, width and height that are none; more pixels than memory should be risked for.
    const std::vector<uint8_t> claims[] = {
        {0}, {5}, {2, 2}, {2, 1, 0, 0}, {2, 1, 12, 0, 0, 0}, {4, 1, 255, 255, 100, 0}};
    for (const std::vector<uint8_t>& claim : claims) {
        std::vector<uint8_t> bad = good;
        bad.resize(good.size() + 1000);
        std::ranges::copy(claim, bad.begin() + 2);
        EXPECT_FALSE(image.LoadPacked(bad, "bad")) << claim.size();
    }
    EXPECT_FALSE(image.LoadPacked(good, nullptr));
    EXPECT_FALSE(image.LoadPacked(good, std::string(1024, 'p').c_str()));
    EXPECT_TRUE(image.LoadPacked(good, "good")) << "usable after all that";
}

}  // namespace
}  // namespace norava
