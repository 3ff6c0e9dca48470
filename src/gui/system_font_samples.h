#pragma once

#include <array>
#include <cstdint>

namespace norava {

// The built-in fonts as font blocks (see BitmapFont), made from the drawings in assets/fonts/.
extern const std::array<uint8_t, 4599> kSystemFontSample_Regular;
extern const std::array<uint8_t, 7417> kSystemFontSample_Bold;

}  // namespace norava
