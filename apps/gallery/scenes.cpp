#include "gallery/scenes.h"

#include <png.h>

#include <cstdint>
#include <functional>
#include <vector>

#include "gallery/gallery.h"
#include "gui/platform/offscreen_view.h"

namespace norava {

namespace {

using Scene = std::function<void(CGallery&, OffscreenView&)>;

void Hold(OffscreenView& view, CPoint at) {
    view.MoveMouse(at);
    view.PressMouse();
}

const std::vector<Scene> kScenes = {
    [](CGallery& gallery, OffscreenView& view) {
        view.Tick(5);
        Hold(view, gallery.button->GetRect().GetCenter());
    },
    [](CGallery& gallery, OffscreenView& view) {
        view.Click(gallery.field->GetRect().GetCenter());
        view.PressMouse(kMouseLeft, true);
        view.ReleaseMouse();
        view.GetEvents().KeyPressed(kKeyEnd, {.shift = true});
        view.MoveMouse(gallery.list->GetRect().GetCenter());
        view.TurnWheel(-3);
        view.MoveMouse(gallery.other->GetRect().GetCenter());  // the look under the mouse
        view.Tick(5);
    },
    [](CGallery& gallery, OffscreenView& view) {
        view.Tick(5);
        view.Click(gallery.menu->GetRect().GetCenter());
        view.Tick(5);
        view.MoveMouse(gallery.menu->GetItemRect(2).GetCenter());
    },
    [](CGallery& gallery, OffscreenView& view) {
        view.Tick(5);
        view.Click(gallery.longMenu->GetRect().GetCenter());
        view.Tick(5);
        view.MoveMouse(gallery.longMenu->GetItemRect(9).GetCenter());
    },
    [](CGallery& gallery, OffscreenView& view) {
        Hold(view, gallery.knob->GetRect().GetCenter());
        view.MoveMouse({gallery.knob->GetRect().GetCenter().x, 0});
        view.Tick(5);
    },
    [](CGallery& gallery, OffscreenView& view) {
        view.Tick(5);
        view.Click(gallery.options->GetRect().GetCenter());
        view.Tick(2);  // fading in
        view.MoveMouse(gallery.options->GetItemRect(4).GetCenter());
    },
};
constexpr int kColumns = 2;

struct Sheet {
    explicit Sheet(CSize pixels)
        : size(pixels), bytes(static_cast<size_t>(3 * size.cx * size.cy)) {}
    void Copy(const OffscreenView& view, CPoint to) {
        const CSize part = view.GetStoredSize();
        for (int y = 0; y < part.cy; ++y) {
            for (int x = 0; x < part.cx; ++x) {
                const uint32_t pixel = view.GetPixel(x, y);
                uint8_t* rgb = &bytes[static_cast<size_t>(3 * ((to.y + y) * size.cx + to.x + x))];
                for (int i = 0; i < 3; ++i)
                    rgb[i] = static_cast<uint8_t>(pixel >> (8 * i));
            }
        }
    }
    [[nodiscard]] bool Write(const std::string& path) const {
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        image.width = static_cast<png_uint_32>(size.cx);
        image.height = static_cast<png_uint_32>(size.cy);
        image.format = PNG_FORMAT_RGB;
        return png_image_write_to_file(&image, path.c_str(), 0, bytes.data(), 0, nullptr) != 0;
    }

    CSize size;
    std::vector<uint8_t> bytes;
};

}  // namespace

bool WriteScenes(const std::string& path, int scale) {
    const CSize part(CGallery::kSize.cx * scale, CGallery::kSize.cy * scale);
    const int rows = (static_cast<int>(kScenes.size()) + kColumns - 1) / kColumns;
    Sheet sheet(CSize(part.cx * kColumns, part.cy * rows));
    int number = 0;
    for (const Scene& scene : kScenes) {
        CGallery gallery(scale);
        OffscreenView* view = nullptr;
        gallery.SetViewFactory([&](PlatformEvents& events, void*, CSize size, int viewScale) {
            auto made = std::make_unique<OffscreenView>(events, size, viewScale);
            view = made.get();
            return made;
        });
        if (!gallery.Open()) return false;
        scene(gallery, *view);
        sheet.Copy(*view, {number % kColumns * part.cx, number / kColumns * part.cy});
        ++number;
    }
    return sheet.Write(path);
}

}  // namespace norava
