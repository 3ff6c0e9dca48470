#pragma once

#include <functional>
#include <string>

#include "gui/graphic_buffer.h"

namespace norava::test {

// Fails the test unless the buffer equals the picture of that name in tests/gui/reference/, pixel
// by pixel. What was drawn is left in the build folder: look at it, and copy it over the reference
// when it is better.
void ExpectLooksLike(const CGraphicBuffer& buffer, const std::string& name);
// The same for a PNG file that `write` writes where it is told to.
void ExpectLooksLike(const std::function<bool(const std::string& path)>& write,
                     const std::string& name);

// Fails unless both hold the same words.
void ExpectSamePixels(const CGraphicBuffer& a, const CGraphicBuffer& b);

}  // namespace norava::test
