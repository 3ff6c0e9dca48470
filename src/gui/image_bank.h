#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "gui/image.h"

namespace norava {

// A picture file that is part of the program.
struct BuiltInPicture {
    const char* fileName;  // as in the folder of pictures
    std::span<const uint8_t> file;
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

// The picture that was loaded from exactly this path, or a new one loaded now with this id and name
// (may be null). With `builtIn` given, it stands for the file and no file is opened. Null when it
// does not load, or without any user.
[[nodiscard]] CImage* Import(const char* path, int id, const char* name,
                             const BuiltInPicture* builtIn = nullptr);
// The first with that id or name, else null; the empty name is nobody's.
[[nodiscard]] CImage* FindByID(int id);
[[nodiscard]] CImage* FindByName(const char* name);

}  // namespace image_bank
}  // namespace norava
