#include "gui/system_fonts.h"

#include <mutex>

#include "gui/system_font_samples.h"

namespace norava {

namespace {

// A bold glyph keeps its distance at its left, inside its advance; text aligned left takes it back.
constexpr BitmapFont::Metrics kRegularMetrics{.spacing = 1, .spaceAdvance = 4, .leftShift = 0};
constexpr BitmapFont::Metrics kBoldMetrics{.spacing = 0, .spaceAdvance = 4, .leftShift = -1};

constexpr const char* kRegularOutlines[BitmapFont::kGlyphs] = {
#include "fonts/outline_regular.art"
};
constexpr const char* kBoldOutlines[BitmapFont::kGlyphs] = {
#include "fonts/outline_bold.art"
};

std::mutex gFontsLock;
std::weak_ptr<const SystemFonts> gFonts;

}  // namespace

SystemFonts::SystemFonts()
    : FontRegularChunk(kSystemFontSample_Regular.begin(), kSystemFontSample_Regular.end()),
      FontBoldChunk(kSystemFontSample_Bold.begin(), kSystemFontSample_Bold.end()),
      regular(FontRegularChunk, kRegularMetrics),
      bold(FontBoldChunk, kBoldMetrics),
      regularOutlines(kRegularOutlines, regular),
      boldOutlines(kBoldOutlines, bold) {}

std::shared_ptr<const SystemFonts> SystemFonts::Share() {
    const std::lock_guard lock(gFontsLock);
    std::shared_ptr<const SystemFonts> fonts = gFonts.lock();
    if (!fonts) {
        fonts = std::make_shared<const SystemFonts>();
        gFonts = fonts;
    }
    return fonts;
}

long SystemFonts::CountUsers() {
    const std::lock_guard lock(gFontsLock);
    return gFonts.use_count();
}

}  // namespace norava
