#pragma once

#include <memory>

#include "gui/image.h"

namespace norava {

// Pictures for the controls that can have one, painted by the toolkit itself.
inline constexpr CSize kStripFrame(32, 32);
inline constexpr int kStripFrames = 31;
std::unique_ptr<CImage> PaintKnobStrip();
// Off above on.
inline constexpr CSize kLampFrame(22, 22);
std::unique_ptr<CImage> PaintLamp();
// Two frames of "OPTIONS", closed above open.
inline constexpr CSize kOptionsFrame(64, 18);
std::unique_ptr<CImage> PaintOptions();
inline constexpr CSize kCapFrame(26, 16);
std::unique_ptr<CImage> PaintFaderCap();

}  // namespace norava
