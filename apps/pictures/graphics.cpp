// norava-graphics: writes the panel's pictures as a folder of Targa files, which the instrument
// takes in place of its own when it lies in Norava/ beside it. For whoever wants to change its
// looks.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>

#include "editor/built_in_pictures.h"
#include "pictures/targa_file.h"

namespace norava {
namespace {

std::string NameForScale(std::string name, int scale) {
    if (scale > 1) name.insert(name.rfind('.'), "@" + std::to_string(scale) + "x");
    return name;
}

int WriteFolder(const std::filesystem::path& folder, int scales) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    for (const BuiltInPicture& picture : GetBuiltInPictures()) {
        for (int scale = 1; scale <= scales; ++scale) {
            const std::string path = (folder / NameForScale(picture.fileName, scale)).string();
            CImage image;
            if (image.LoadPacked(picture.packed[static_cast<size_t>(scale - 1)], "") &&
                WriteTarga(image, path))
                continue;
            std::fprintf(stderr, "%s: cannot be written\n", path.c_str());
            return 1;
        }
    }
    return 0;
}

}  // namespace
}  // namespace norava

int main(int argc, char** argv) {
    CLI::App app("Writes the panel's pictures as a folder of Targa files.");
    std::string folder;
    int scales = 1;
    app.add_option("folder", folder, "where the files go, such as Graphics")->required();
    app.add_option("--scales", scales, "also the pictures for screens of 2 and 3 times")
        ->check(CLI::Range(1, norava::BuiltInPicture::kScales));
    CLI11_PARSE(app, argc, argv);
    return norava::WriteFolder(folder, scales);
}
