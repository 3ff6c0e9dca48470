#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "gui/bitmap_font.h"
#include "gui/outline_font.h"

namespace norava {

// The two built-in fonts: one copy a process, made for the first user and freed with the last.
// Share() may be called from any thread.
class SystemFonts {
  public:
    SystemFonts();
    SystemFonts(const SystemFonts&) = delete;
    SystemFonts& operator=(const SystemFonts&) = delete;

    [[nodiscard]] static std::shared_ptr<const SystemFonts> Share();
    [[nodiscard]] static long CountUsers();

  private:
    std::vector<uint8_t> FontRegularChunk;
    std::vector<uint8_t> FontBoldChunk;

  public:
    const BitmapFont regular;
    const BitmapFont bold;
    const OutlineFont regularOutlines;
    const OutlineFont boldOutlines;
};

}  // namespace norava
