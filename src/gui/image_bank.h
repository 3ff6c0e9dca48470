#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "gui/image.h"

namespace norava {

// A picture that is part of the program, packed, once for each scale from 1 on. Beyond the last
// one that one serves.
struct BuiltInPicture {
    static constexpr int kScales = 3;

    const char* fileName;  // as in the folder of pictures
    std::array<std::span<const uint8_t>, kScales> packed;
};

// The pictures that all windows of the process share, in the order in which they were imported.
// They live until the last user lets go. Every call may come from any thread; the pictures
// themselves never change.
namespace image_bank {

// Keeps the bank alive. A window port holds one.
class User {
  public:
    User();
    ~User();
    User(const User&) = delete;
    User& operator=(const User&) = delete;
};
[[nodiscard]] long CountUsers();

// The picture that was loaded from exactly this path for this scale, or a new one loaded now with
// this id and name (may be null). With `builtIn` given, it stands for the file and no file is
// opened. Above scale 1 "a.tga" comes from "a@2x.tga" (or 3x) where there is such a file. Null when
// it does not load, or without any user.
[[nodiscard]] CImage* Import(const char* path, int id, const char* name, int scale = 1,
                             const BuiltInPicture* builtIn = nullptr);
// The first with that id or name, one made for the scale before any other, else null; the empty
// name is nobody's.
[[nodiscard]] CImage* FindByID(int id, int scale = 1);
[[nodiscard]] CImage* FindByName(const char* name, int scale = 1);

}  // namespace image_bank
}  // namespace norava
