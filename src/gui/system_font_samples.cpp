#include "gui/system_font_samples.h"

#include "gui/font_compiler.h"

namespace norava {

namespace {

constexpr char kRegularDrawing[] =
#include "fonts/system_regular.art"
    ;

constexpr char kBoldDrawing[] =
#include "fonts/system_bold.art"
    ;

}  // namespace

constexpr std::array<uint8_t, 4599> kSystemFontSample_Regular =
    font_compiler::Compile<4599>(kRegularDrawing);
constexpr std::array<uint8_t, 7417> kSystemFontSample_Bold =
    font_compiler::Compile<7417>(kBoldDrawing);

}  // namespace norava
