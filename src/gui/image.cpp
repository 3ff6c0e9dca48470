#include "gui/image.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "files/file_manager.h"
#include "gui/packed_picture.h"

namespace norava {

namespace {

constexpr int kHeaderBytes = 18;
constexpr int kTrueColor = 2;  // uncompressed, no colour map

}  // namespace

// Bytes of a Targa file, wherever it lies.
class CImage::Source {
  public:
    virtual ~Source() = default;
    // All of `count` bytes or nothing.
    virtual bool Read(uint8_t* bytes, int count) = 0;
};

struct CImage::Header {
    explicit Header(const uint8_t (&b)[kHeaderBytes])
        : idLength(b[0]),
          colorMapType(b[1]),
          imageType(b[2]),
          width(b[12] | b[13] << 8),
          height(b[14] | b[15] << 8),
          depth(b[16]) {}

    [[nodiscard]] bool IsUsable() const {
        return colorMapType == 0 && imageType == kTrueColor && (depth == 24 || depth == 32) &&
               width > 0 && height > 0 && height <= kMaxPixels / width;
    }

    int idLength, colorMapType, imageType, width, height, depth;
};

bool CImage::CanKeepPath(const char* path) const {
    return path != nullptr && std::strlen(path) < sizeof filePath;
}

bool CImage::Load(Source& source, const char* path) {
    if (!CanKeepPath(path)) return false;
    // What a cut header lacks counts as 0; without a depth it is refused below.
    uint8_t bytes[kHeaderBytes] = {};
    for (uint8_t& byte : bytes)
        if (!source.Read(&byte, 1)) break;
    const Header header(bytes);
    uint8_t idField[255];
    if (!header.IsUsable()) return false;
    const bool startsWhole = header.idLength == 0 || source.Read(idField, header.idLength);

    if (!Allocate(CSize(header.width, header.height), GetSclFactor())) return false;
    const int bytesPerPixel = header.depth / 8;
    SetHasAlpha(bytesPerPixel == 4);
    std::vector<uint8_t> row(static_cast<size_t>(header.width * bytesPerPixel));
    for (int y = 0; startsWhole && y < header.height; ++y) {
        if (!source.Read(row.data(), static_cast<int>(row.size()))) break;
        StoreRow(y, row.data(), bytesPerPixel);
    }
    CopyText(filePath, sizeof filePath, path);
    return true;
}

// From blue, green, red and (in 32 bits) alpha.
void CImage::StoreRow(int row, const uint8_t* bytes, int bytesPerPixel) {
    uint32_t* words = GetDataAt(0, row);
    const int width = GetSize().cx;
    for (int x = 0; x < width; ++x, bytes += bytesPerPixel) {
        const uint32_t alpha = bytesPerPixel == 4 ? bytes[3] : 255u;
        words[x] = bytes[2] | static_cast<uint32_t>(bytes[1]) << 8 |
                   static_cast<uint32_t>(bytes[0]) << 16 | alpha << 24;
    }
}

bool CImage::LoadFromFile(const char* path) {
    struct FileSource : Source {
        bool Read(uint8_t* bytes, int count) override { return file.ReadData(bytes, count); }
        CFileManager file;
    } source;
    return source.file.OpenFileForReading(path) && Load(source, path);
}

bool CImage::LoadFromMemory(std::span<const uint8_t> file, const char* path) {
    struct MemorySource : Source {
        bool Read(uint8_t* bytes, int count) override {
            const auto wanted = static_cast<size_t>(count);
            if (wanted > rest.size()) return false;
            std::copy_n(rest.begin(), wanted, bytes);
            rest = rest.subspan(wanted);
            return true;
        }
        std::span<const uint8_t> rest;
    } source;
    source.rest = file;
    return Load(source, path);
}

bool CImage::Allocate(CSize newSize, int scale) {
    Destroy();
    (void)SetSclFactor(scale);  // nothing is allocated for an empty picture
    return SetSize(newSize);
}

bool CImage::LoadPacked(std::span<const uint8_t> packed, const char* path) {
    if (!CanKeepPath(path)) return false;
    const std::optional<PackedPicture> picture = ReadPackedHeader(packed);
    if (!picture) return false;
    const CSize stored = picture->GetStoredSize();
    if (stored.cy > kMaxPixels / stored.cx) return false;
    const auto count = static_cast<size_t>(stored.cx) * static_cast<size_t>(stored.cy);
    if (!Allocate(picture->size, picture->scale)) return false;
    if (!UnpackPicture(packed, {GetDataAt(0, 0), count})) {
        Destroy();
        return false;
    }
    SetHasAlpha(picture->hasAlpha);
    SetHasDetail(true);
    CopyText(filePath, sizeof filePath, path);
    return true;
}

bool CImage::AdoptScale(int scale) {
    const CSize stored = GetSize();
    if (GetSclFactor() != 1 || stored.cx % scale != 0 || stored.cy % scale != 0) return false;
    const uint32_t* words = GetDataAt(0, 0);
    const std::vector<uint32_t> kept(words, words + static_cast<ptrdiff_t>(stored.cx) * stored.cy);
    if (!Allocate(CSize(stored.cx / scale, stored.cy / scale), scale)) return false;
    std::ranges::copy(kept, GetDataAt(0, 0));
    SetHasDetail(true);
    return true;
}

bool CImage::SaveAsTGA(const char* path) const {
    constexpr int kMaxSide = 65535;
    const CSize pixels = GetSize();
    CFileManager file;
    if (pixels.cx > kMaxSide || pixels.cy > kMaxSide || !file.OpenFileForWriting(path))
        return false;
    const auto low = [](int value) { return static_cast<uint8_t>(value & 0xFF); };
    uint8_t header[kHeaderBytes] = {};
    header[2] = kTrueColor;
    header[12] = low(pixels.cx), header[13] = low(pixels.cx >> 8);
    header[14] = low(pixels.cy), header[15] = low(pixels.cy >> 8);
    header[16] = 32;
    bool good = file.WriteData(header, kHeaderBytes);
    std::vector<uint32_t> line(static_cast<size_t>(pixels.cx));
    for (int row = 0; row < pixels.cy && good; ++row) {  // the lowest first
        for (int x = 0; x < pixels.cx; ++x)
            line[static_cast<size_t>(x)] = *GetDataAt(x, row);
        good = file.WriteData(line.data(), pixels.cx * static_cast<int>(sizeof(uint32_t)));
    }
    return file.CloseFile() && good;
}

}  // namespace norava
