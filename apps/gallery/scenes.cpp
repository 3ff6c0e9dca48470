#include "gallery/scenes.h"

#include <cstdint>
#include <functional>
#include <vector>

#include "gallery/gallery.h"
#include "gui/platform/offscreen_view.h"
#include "png_file/png_file.h"

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

// The scenes side by side, the lowest row first.
struct Sheet {
    explicit Sheet(CSize pixels) : size(pixels), words(static_cast<size_t>(size.cx * size.cy)) {}
    void Copy(const OffscreenView& view, CPoint to) {
        const CSize part = view.GetStoredSize();
        for (int y = 0; y < part.cy; ++y) {
            const int row = size.cy - 1 - (to.y + y);
            for (int x = 0; x < part.cx; ++x)
                words[static_cast<size_t>(row * size.cx + to.x + x)] =
                    view.GetPixel(x, y) | kOpaque;
        }
    }
    [[nodiscard]] bool Write(const std::string& path) const {
        PngFile file(path);
        file.ShowPixels(words.data(), size, CRect(CPoint(), size));
        return file.IsWritten();
    }

    static constexpr uint32_t kOpaque = 0xFF000000u;
    CSize size;
    std::vector<uint32_t> words;
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
