#pragma once

#include <span>

#include "gui/image_bank.h"

namespace norava {

// The panel's pictures at all scales as they are built into the module, under all names that they
// are asked for. For CWindowPort::SetBuiltInPictures.
[[nodiscard]] std::span<const BuiltInPicture> GetBuiltInPictures();

}  // namespace norava
