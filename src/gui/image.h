#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "files/text_buffer.h"
#include "gui/graphic_buffer.h"

namespace norava {

class CFileManager;

// A picture: a buffer that is loaded from an uncompressed Targa file, 24 bits (opaque)
// or 32 bits (with the coverage of each pixel). Rows come in file order, the first is the lowest;
// origin bits are not honoured. A packed picture of the module may be of a higher scale. A loaded
// picture is only read and may be copied from by any thread.
class CImage : public CGraphicBuffer {
  public:
    // Larger pictures are refused: the header of a small file can claim any size.
    static constexpr int kMaxPixels = 32'000'000;

    CImage() : CGraphicBuffer(1) {}

    void SetID(int newId) { id = newId; }
    [[nodiscard]] int GetID() const { return id; }
    void SetName(const char* newName) { CopyText(name, sizeof name, newName ? newName : ""); }
    [[nodiscard]] const char* GetName() const { return name; }
    // What the picture was loaded from, or stands for.
    [[nodiscard]] const char* GetFilePath() const { return filePath; }
    void SetFilePath(const char* path) { CopyText(filePath, sizeof filePath, path); }

    // False when this is no such picture; the buffer then stays as it was. (When only the memory is
    // refused it becomes empty.) Rows that a cut file lacks are transparent.
    [[nodiscard]] bool LoadFromFile(const char* path);
    // The same for a file that lies in memory, under the path it shall be known by.
    [[nodiscard]] bool LoadFromMemory(std::span<const uint8_t> file, const char* path);
    // From a packed picture; afterwards the buffer has that one's scale. False when it is damaged;
    // the buffer is then empty or as it was.
    [[nodiscard]] bool LoadPacked(std::span<const uint8_t> packed, const char* path);
    // Turns a loaded file whose pixels are stored ones into a picture of this scale. False when its
    // sides are no multiples of it.
    [[nodiscard]] bool AdoptScale(int scale);
    // Writes the logical pixels, 32 bits each, in this buffer's own byte order, so that reading the
    // file back swaps red and blue. False when the file cannot be written.
    [[nodiscard]] bool SaveAsTGA(const char* path) const;

  private:
    struct Header;
    class Source;

    [[nodiscard]] bool CanKeepPath(const char* path) const;
    [[nodiscard]] bool Load(Source& source, const char* path);
    [[nodiscard]] bool Allocate(CSize newSize, int scale);
    void StoreRow(int row, const uint8_t* bytes, int bytesPerPixel);

    int id = -1;
    char name[kNameBufferBytes] = "";
    char filePath[kPathBufferBytes] = "";
};

}  // namespace norava
