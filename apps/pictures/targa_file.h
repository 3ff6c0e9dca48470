#pragma once

#include <string>

#include "gui/image.h"

namespace norava {

// Writes a picture's stored pixels as an uncompressed Targa file, 32 bits where it has alpha and
// 24 where not: what CImage::LoadFromFile reads back unchanged. False when it cannot be written.
[[nodiscard]] bool WriteTarga(const CImage& image, const std::string& path);

}  // namespace norava
