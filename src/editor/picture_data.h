#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace norava {

// The packed pictures of one scale, in the order of GetPanelPictures(). Made at build time.
inline constexpr size_t kPanelPictures = 19;
using PictureData = std::array<std::span<const uint8_t>, kPanelPictures>;

template <int scale>
[[nodiscard]] PictureData GetPictureData();

template <>
PictureData GetPictureData<1>();
template <>
PictureData GetPictureData<2>();
template <>
PictureData GetPictureData<3>();

inline std::span<const uint8_t> AsBytes(const unsigned long long* words, size_t bytes) {
    return {reinterpret_cast<const uint8_t*>(words), bytes};
}

}  // namespace norava
