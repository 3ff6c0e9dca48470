// A Targa picture, as the panel loads it: what is taken has the file's pixels, rows that a cut file
// lacks are transparent, it can be saved and read again, and it can be drawn. A refused one leaves
// the picture that was there.

#include <algorithm>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "files/scratch_folder.h"
#include "gui/image.h"
#include "target.h"

namespace norava::fuzz {
namespace {

constexpr std::size_t kHeaderBytes = 18;
// Larger pictures take the time of many executions, and no other path.
constexpr int kLargestTried = 1 << 14;
constexpr unsigned kFileBytesMask = 7;  // one in eight is saved as a file

using Bytes = std::span<const std::uint8_t>;
using Words = std::vector<std::uint32_t>;

struct Expected {
    CSize size;
    bool hasAlpha = false;
    Words words;  // empty: to be refused
    bool isTooLarge = false;
};

Expected Expect(Bytes file) {
    std::array<std::uint8_t, kHeaderBytes> b{};
    std::copy_n(file.begin(), std::min(file.size(), b.size()), b.begin());
    Expected expected;
    expected.size = CSize(b[12] | b[13] << 8, b[14] | b[15] << 8);
    const long pixels = static_cast<long>(expected.size.cx) * expected.size.cy;
    const bool isUsable = b[1] == 0 && b[2] == 2 && (b[16] == 24 || b[16] == 32) && pixels > 0 &&
                          pixels <= CImage::kMaxPixels;
    if (!isUsable) return expected;
    expected.isTooLarge = pixels > kLargestTried;
    if (expected.isTooLarge) return expected;
    expected.hasAlpha = b[16] == 32;
    const std::size_t pixelBytes = b[16] / 8u;
    const Bytes rows = file.subspan(std::min(file.size(), kHeaderBytes + b[0]));
    const std::size_t rowBytes = pixelBytes * static_cast<std::size_t>(expected.size.cx);
    const std::size_t wholeRows =
        std::min(rows.size() / rowBytes, static_cast<std::size_t>(expected.size.cy));
    for (std::size_t at = 0; at < wholeRows * rowBytes; at += pixelBytes) {
        const std::uint8_t* const p = &rows[at];
        const std::uint32_t alpha = pixelBytes == 4 ? p[3] : 255u;
        expected.words.push_back(alpha << 24 | std::uint32_t{p[0]} << 16 |
                                 std::uint32_t{p[1]} << 8 | p[2]);
    }
    expected.words.resize(static_cast<std::size_t>(pixels));  // the rest is transparent
    return expected;
}

Words WordsOf(CImage& image) {
    const CSize size = image.GetSize();
    if (size.cx <= 0 || size.cy <= 0) return {};
    const std::uint32_t* first = image.GetDataAt(0, 0);
    return {first, first + static_cast<std::ptrdiff_t>(size.cx) * size.cy};
}

// The picture that is there before: a file of one opaque pixel.
void LoadBase(CImage& image) {
    constexpr std::array<std::uint8_t, 21> kFile = {0, 0, 2, 0, 0, 0,  0, 0, 0, 0, 0,
                                                    0, 1, 0, 1, 0, 24, 0, 1, 2, 3};
    Require(image.LoadFromMemory(kFile, "base"), "the base is taken");
}

void SaveAndLoad(const CImage& image, const Words& words) {
    static const test::ScratchFolder folder;
    const std::string path = folder.Path("saved.tga");
    Require(image.SaveAsTGA(path.c_str()), "it can be saved");
    CImage again;
    Require(again.LoadFromFile(path.c_str()), "what was saved is loaded");
    Require(again.GetSize() == image.GetSize(), "with its size");
    Words swapped = WordsOf(again);
    for (std::uint32_t& word : swapped)
        word = (word & 0xFF00FF00u) | (word >> 16 & 0xFFu) | (word & 0xFFu) << 16;
    Require(swapped == words, "with its pixels, red and blue swapped");
}

void Draw(const CImage& image) {
    CGraphicBuffer screen(1);
    Require(screen.SetSize(CSize(9, 7)), "a screen");
    const CSize size = image.GetSize();
    image.CopyRect(&screen, CRect({-3, -2}, size), {0, 0}, 200);
    image.CopyRect(&screen, CRect({4, 3}, size), {size.cx / 2, size.cy / 2}, 255);
}

void Run(Bytes file) {
    const Expected expected = Expect(file);
    if (expected.isTooLarge) return;
    CImage image;
    LoadBase(image);
    const Words before = WordsOf(image);
    if (!image.LoadFromMemory(file, "picture")) {
        Require(expected.words.empty(), "a usable picture is taken");
        Require(WordsOf(image) == before, "the picture from before is still there");
        Require(std::strcmp(image.GetFilePath(), "base") == 0, "with its path");
        return;
    }
    Require(!expected.words.empty(), "anything else is refused");
    Require(image.GetSize() == expected.size, "the size is the header's");
    Require(image.GetHasAlpha() == expected.hasAlpha, "32 bits have coverage");
    Require(WordsOf(image) == expected.words, "the pixels are the file's");
    Draw(image);
    if ((file.size() & kFileBytesMask) == 0) SaveAndLoad(image, expected.words);
    for (const int scale : {2, 3}) {
        if (!image.AdoptScale(scale)) continue;
        Require(image.GetSize() == CSize(expected.size.cx / scale, expected.size.cy / scale),
                "a picture of a scale is as much smaller");
        break;
    }
}

}  // namespace
}  // namespace norava::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    norava::fuzz::Run({data, size});
    return 0;
}
