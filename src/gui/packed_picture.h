#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "gui/geometry.h"

namespace norava {

// Pictures as they lie in the module: each pixel predicted from its neighbours or from the frame
// before, the differences in Huffman codes, runs of none in one code. apps/pictures packs them.
struct PackedPicture {
    CSize size;  // logical
    int scale = 1;
    bool hasAlpha = false;
    int frameRows = 0;  // stored rows from one frame to the next, 0 without frames

    [[nodiscard]] CSize GetStoredSize() const { return {size.cx * scale, size.cy * scale}; }
};

// Nothing when this is no packed picture or claims more pixels than it could hold.
[[nodiscard]] std::optional<PackedPicture> ReadPackedHeader(std::span<const uint8_t> packed);

// Fills the words of all stored pixels, the lowest row first. False when the data are damaged;
// the words then hold anything.
[[nodiscard]] bool UnpackPicture(std::span<const uint8_t> packed, std::span<uint32_t> words);

}  // namespace norava
