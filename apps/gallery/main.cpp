// Shows every control of the toolkit in a window, or writes a picture of them in all their states.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "gallery/gallery.h"
#include "gallery/scenes.h"

namespace {

constexpr const char* kUsage = "usage: norava-gallery [--png FILE] [--scale 1 to 4]\n";

int ShowWindow(int scale) {
    norava::CGallery gallery(scale);
    gallery.SetTitle("Norava controls");
    if (!gallery.Open()) {
        std::fprintf(stderr, "norava-gallery: no window can be opened here; try --png FILE\n");
        return 1;
    }
    gallery.Run();
    return 0;
}

}  // namespace

int main(int count, char** arguments) {
    std::string png;
    int scale = 0;
    for (int i = 1; i < count; ++i) {
        const std::string_view option = arguments[i];
        const bool hasValue = i + 1 < count;
        if (option == "--png" && hasValue) {
            png = arguments[++i];
        } else if (option == "--scale" && hasValue) {
            const long wanted = std::strtol(arguments[++i], nullptr, 10);
            if (wanted < 1 || wanted > norava::CGraphicBuffer::kMaxScaleFactor) {
                std::fputs(kUsage, stderr);
                return 2;
            }
            scale = static_cast<int>(wanted);
        } else {
            std::fputs(kUsage, option == "--help" ? stdout : stderr);
            return option == "--help" ? 0 : 2;
        }
    }
    if (png.empty()) return ShowWindow(scale > 0 ? scale : norava::GetNativeScale());
    if (norava::WriteScenes(png, scale > 0 ? scale : 1)) return 0;
    std::fprintf(stderr, "norava-gallery: %s: cannot be written\n", png.c_str());
    return 1;
}
