#pragma once

#include <string>

#include "gui/pixel_target.h"

namespace norava {

// A PNG picture in place of a screen: what is presented to it is written, alpha included.
class PngFile : public PixelTarget {
  public:
    explicit PngFile(std::string filePath) : path(std::move(filePath)) {}
    void ShowPixels(const uint32_t* words, CSize size, CRect clip) override;
    [[nodiscard]] bool IsWritten() const { return written; }

  private:
    std::string path;
    bool written = false;
};

}  // namespace norava
