#pragma once

#include <cstdint>
#include <vector>

#include "gui/packed_picture.h"

namespace norava {

// The bytes that UnpackPicture() turns back into these words: all stored pixels, the lowest row
// first. Sides are at most 65535 stored pixels.
[[nodiscard]] std::vector<uint8_t> PackPicture(const PackedPicture& picture,
                                               std::vector<uint32_t> words);

}  // namespace norava
