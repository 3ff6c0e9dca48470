// norava-picture-source: packs the panel's pictures of one scale into a source file that builds
// them into the instrument.

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>

#include "editor/panel_layout.h"
#include "pictures/picture_packer.h"
#include "pictures/png_file.h"

namespace norava {
namespace {

std::vector<uint8_t> Pack(const PanelPicture& panel, const std::string& folder, int scale) {
    std::string file = panel.fileName;
    file.replace(file.rfind('.'), std::string::npos, ".png");
    const std::string path = folder + "/" + file;
    PngPicture png = ReadPng(path);
    const CSize logical(panel.frame.cx, panel.frame.cy * panel.frames);
    if (png.size != CSize(logical.cx * scale, logical.cy * scale))
        throw std::runtime_error(path + ": not of the layout's size; draw the pictures anew");
    PackedPicture picture{logical, scale, png.hasAlpha,
                          panel.frames > 1 ? panel.frame.cy * scale : 0};
    return PackPicture(picture, std::move(png.words));
}

// As 64-bit words: every compiler takes them fast, and the machines are all little-endian.
void WriteWords(std::ofstream& out, std::vector<uint8_t> bytes) {
    constexpr size_t kWordsPerLine = 8;
    bytes.resize((bytes.size() + 7) / 8 * 8);
    char text[32];
    for (size_t i = 0; i < bytes.size(); i += 8) {
        unsigned long long word = 0;
        for (size_t k = 8; k-- > 0;)
            word = word << 8 | bytes[i + k];
        std::snprintf(text, sizeof text, "0x%llx,", word);
        out << (i / 8 % kWordsPerLine == 0 ? "\n    " : "") << text;
    }
}

void WriteSource(const std::string& folder, int scale, const char* path) {
    std::ofstream out(path);
    out << "// Made by norava-picture-source from " << folder.substr(folder.find("assets/"))
        << ".\n\n#include \"editor/picture_data.h\"\n\nnamespace norava {\n\nnamespace {\n";
    size_t total = 0, number = 0;
    std::string table;
    for (const PanelPicture& panel : GetPanelPictures()) {
        const std::vector<uint8_t> bytes = Pack(panel, folder, scale);
        total += bytes.size();
        out << "\nconstexpr unsigned long long kPicture" << number << "[] = {";
        WriteWords(out, bytes);
        out << "\n};\n";
        table += "        AsBytes(kPicture" + std::to_string(number) + ", " +
                 std::to_string(bytes.size()) + "),\n";
        ++number;
    }
    out << "\n}  // namespace\n\ntemplate <>\nPictureData GetPictureData<" << scale
        << ">() {\n    return {\n"
        << table << "    };\n}\n\n}  // namespace norava\n";
    out.close();
    if (!out) throw std::runtime_error(std::string(path) + ": cannot be written");
    std::printf("scale %d: %zu pictures, %zu bytes packed\n", scale, number, total);
}

}  // namespace
}  // namespace norava

int main(int argc, char** argv) {
    const long scale = argc == 4 ? std::strtol(argv[2], nullptr, 10) : 0;
    if (scale < 1 || scale > 3) {
        std::fputs("usage: norava-picture-source FOLDER SCALE SOURCE.cpp\n", stderr);
        return 2;
    }
    try {
        norava::WriteSource(argv[1], static_cast<int>(scale), argv[3]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
