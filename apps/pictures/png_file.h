#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "gui/geometry.h"

namespace norava {

struct PngPicture {
    CSize size;
    bool hasAlpha = false;        // some pixel is not opaque
    std::vector<uint32_t> words;  // red lowest, the lowest row first; 0 where nothing is to be seen
};

// Throws std::runtime_error with the file's name when it is no PNG.
[[nodiscard]] PngPicture ReadPng(const std::string& path);

}  // namespace norava
