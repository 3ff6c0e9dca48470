// Writes a picture of the two built-in fonts, for whoever draws them: all letters, words as the
// panel shows them, and light, dark and coloured grounds, at the sizes that screens of one to three
// times have.
#include <charconv>
#include <cstdio>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "gui/graphic_buffer.h"
#include "png_file/png_file.h"

namespace norava {
namespace {

constexpr int kLineHeight = 14;
constexpr int kMargin = 6;
constexpr CSize kSheet(554, 406);

const std::vector<std::string> kLines = {
    "ABCDEFGHIJKLMNOPQRSTUVWXYZ abcdefghijklmnopqrstuvwxyz",
    "0123456789 !\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~",
    "The quick brown fox jumps over the lazy dog. Quartz sphinx, judge my vow!",
    "minimum illumination filter fluffy hill wavy jazz rn m cl d vv w Il1 O0 S5 B8 Z2",
    "Silver Thread   Presets Library   Program Bank   Program Name   Load   Save",
    "velocity  ptch whl  envelope  mod whl  aftch  key num  release  lfo ampl  level  pan",
    "lo-cut ctf  hi-cut atk  str1 decay  stri1&2 dec  str2  damp  str1&2 dmp  noise rate",
    "-12.5 dB   440.00 Hz   100 %   +7 cents   1 : 1   4 : 1   3/16   120 ms   0.37   8%",
    "1. Amber Lute   8. Late Harbour   10. Experiments   16. Reed & Gut   23. Wren",
    "0000000000 1111111111 2222222222 3333333333 4444444444",
    "5555555555 6666666666 7777777777 8888888888 9999999999",
};

void DrawLines(CGraphicBuffer& sheet, int top) {
    for (const std::string& line : kLines) {
        sheet.DrawText(line.c_str(), CRect(kMargin, top, 0, kLineHeight), false);
        top += kLineHeight;
    }
}

void DrawGrounds(CGraphicBuffer& sheet, int top) {
    struct Ground {
        CColor paper, ink;
    };
    const Ground grounds[] = {{CColor(246, 234, 211), CColor(25, 23, 22)},
                              {CColor(25, 28, 36), CColor(255, 217, 204)},
                              {CColor(43), CColor(190, 172, 139)},
                              {CColor(122, 98, 60), CColor(255, 255, 255, 140)}};
    int left = kMargin;
    for (Ground ground : grounds) {
        const CRect field(left, top, 130, 34);
        sheet.FillRect(field, &ground.paper);
        sheet.SetTextColor(ground.ink);
        sheet.SetTextAlignCenter();
        sheet.DrawText("Bells and Glass", CRect(left, top, 130, 17), false);
        sheet.DrawText("63 % at 1 : 4", CRect(left, top + 17, 130, 17), false);
        left += 137;
    }
    sheet.SetTextAlignLeft();
}

void DrawSheet(CGraphicBuffer& sheet) {
    sheet.SetSize(kSheet);
    sheet.Clear(CColor(27, 26, 30));
    int top = kMargin;
    for (const bool bold : {false, true}) {
        bold ? sheet.SetFontBold() : sheet.SetFontNormal();
        sheet.SetTextColor(CColor(246, 234, 211));
        DrawLines(sheet, top);
        top += static_cast<int>(kLines.size()) * kLineHeight + kMargin;
        DrawGrounds(sheet, top);
        top += 40;
    }
}

}  // namespace
}  // namespace norava

int main(int count, char** arguments) {
    int scale = 1;
    if (count == 3) {
        const std::string_view text = arguments[2];
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), scale);
        if (error != std::errc() || end != text.data() + text.size()) scale = 0;
    }
    if (count < 2 || count > 3 || scale < 1 || scale > norava::CGraphicBuffer::kMaxScaleFactor) {
        std::fprintf(stderr, "usage: norava-font-specimen PICTURE.png [scale 1 to 4]\n");
        return 2;
    }
    norava::CGraphicBuffer sheet(scale);
    norava::DrawSheet(sheet);
    norava::PngFile file(arguments[1]);
    sheet.Present(&file, norava::CRect({0, 0}, sheet.GetSize()), {0, 0});
    if (!file.IsWritten()) std::fprintf(stderr, "%s: cannot be written\n", arguments[1]);
    return file.IsWritten() ? 0 : 1;
}
