#include "gallery/gallery.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "gallery/scenes.h"
#include "gui/offscreen_window.h"
#include "gui/pictures.h"

// The gallery holds every control, so what must hold for all of them is tried on it.
namespace norava {
namespace {

struct WatchedGallery : test::Watched<CGallery> {
    explicit WatchedGallery(int scale = 1) : Watched(scale) { Show(); }
    ~WatchedGallery() override {
        Close();
        EXPECT_TRUE(open.empty()) << "closing ends every gesture";
    }
    [[nodiscard]] std::vector<CControl*> ListControls() const {
        std::vector<CControl*> controls;
        for (const auto& control : GetRootControlGroup()->GetControls())
            controls.push_back(control.get());
        return controls;
    }
};

class Random {
  public:
    explicit Random(unsigned seed) : engine(seed) {}
    int Below(int count) { return std::uniform_int_distribution(0, count - 1)(engine); }
    float Unit() { return std::uniform_real_distribution(0.0f, 1.0f)(engine); }
    bool OneIn(int count) { return Below(count) == 0; }
    CControl* OneOf(const std::vector<CControl*>& controls) {
        return controls[static_cast<size_t>(Below(static_cast<int>(controls.size())))];
    }
    CPoint Place(int margin) {
        return {Below(CGallery::kSize.cx + 2 * margin) - margin,
                Below(CGallery::kSize.cy + 2 * margin) - margin};
    }

  private:
    std::mt19937 engine;
};

float AnyValue(Random& random, CControl* control) {
    const bool counts =
        dynamic_cast<CControlList*>(control) || dynamic_cast<CControlMenu*>(control);
    return counts ? static_cast<float>(random.Below(8) - 1) : random.Unit();
}

class GalleryPixels : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Scales, GalleryPixels, testing::Values(1, 2));

TEST_P(GalleryPixels, RepaintingOneControlEqualsRepaintingAll) {
    WatchedGallery gallery(GetParam());
    Random random(1);
    const std::vector<CControl*> controls = gallery.ListControls();
    for (int round = 0; round < 300; ++round) {
        CControl* control = random.OneOf(controls);
        control->SetValueAndRedraw(AnyValue(random, control));
        if (random.OneIn(4)) gallery.view->MoveMouse(random.Place(10));
        if (random.OneIn(8)) gallery.view->Click(random.Place(0));
        gallery.view->Tick();
        if (round % 10 > 0) continue;
        const std::vector<uint32_t> piecemeal = gallery.view->GetPixels();
        gallery.DrawToBuffer();
        gallery.UpdateScreen();
        ASSERT_TRUE(gallery.view->GetPixels() == piecemeal) << "round " << round;
    }
}

// Buttons held and lit, text being edited, lists scrolled, menus open and fading in, a knob
// dragged.
TEST_P(GalleryPixels, LooksAsItShould) {
    test::ExpectLooksLike([](const std::string& path) { return WriteScenes(path, GetParam()); },
                          "gallery_scale" + std::to_string(GetParam()));
}

// What a mad user and a mad owner can do, until little is left.
class Storm {
  public:
    explicit Storm(unsigned seed) : random(seed) {
        gallery.whim = [this] {
            if (random.OneIn(300)) DoSomethingRash();
            return !random.OneIn(10);
        };
    }
    // Whether there is something left to rage against.
    bool Step() {
        if (!gallery.IsOpen()) {
            EXPECT_TRUE(gallery.open.empty());
            EXPECT_TRUE(gallery.Open());
        }
        UseMouse();
        if (gallery.IsOpen() && random.OneIn(4)) UseKeys();
        if (gallery.IsOpen() && random.OneIn(3)) gallery.view->Tick(random.Below(3));
        if (gallery.IsOpen() && random.OneIn(200)) DoSomethingRash();
        EXPECT_TRUE(!gallery.IsSuper() || !gallery.open.empty())
            << "a modal list without its gesture";
        return gallery.ListControls().size() > 10;
    }

  private:
    void UseMouse() {
        OffscreenView& view = *gallery.view;
        const int kind = random.Below(8);
        if (kind == 0) return view.PressMouse(random.Below(4), random.OneIn(4));
        if (kind < 3) return view.ReleaseMouse(random.Below(4));
        if (kind == 3) return static_cast<void>(view.TurnWheel(10 * random.Unit() - 5));
        if (kind > 4) return view.MoveMouse(random.Place(40));
        if (random.OneIn(20)) return view.GetEvents().MouseTakenAway();
        view.Click(random.Place(5), random.OneIn(4));
    }
    void UseKeys() {
        constexpr unsigned kKeys[] = {kKeyUp,    kKeyDown,      kKeyEnter,  kKeyEscape, kKeyLeft,
                                      kKeyRight, kKeyBackspace, kKeyDelete, kKeyHome,   kKeyEnd,
                                      'a',       0xE9,          kKeyPageUp, ' '};
        gallery.view->SetModifiers({random.OneIn(5), random.OneIn(4), random.OneIn(8)});
        static_cast<void>(
            gallery.view->PressKey(kKeys[static_cast<size_t>(random.Below(std::size(kKeys)))]));
    }
    void DoSomethingRash() {
        CControl* victim = random.OneOf(gallery.ListControls());
        const int kind = random.Below(12);
        // All but the line that the gallery itself writes into.
        if (kind == 0 && victim->GetID() > 0) return gallery.DestroyControl(victim);
        if (kind == 1) return gallery.Close();
        if (kind == 2) return gallery.DrawToBuffer();
        if (kind < 5) return victim->Disable(true);
        if (kind == 5) victim->SetRect(CRect(random.Place(20), CSize(random.Below(90), 30)));
        if (kind == 6) victim->SetValueAndRedraw(std::nanf(""));
        if (kind == 7) victim->GrabFocus();
        if (kind < 8) return;
        victim->Disable(false);
        victim->SetValueAndRedraw(AnyValue(random, victim));
    }

    Random random;
    WatchedGallery gallery;
};

TEST(Gallery, OutlivesAStormOfEvents) {
    const char* wanted = std::getenv("NORAVA_STORM_EVENTS");
    const long events = wanted ? std::strtol(wanted, nullptr, 10) : 20000;
    unsigned seed = 4;
    auto storm = std::make_unique<Storm>(seed);
    for (long i = 0; i < events && !HasFailure(); ++i) {
        SCOPED_TRACE(seed);
        if (!storm->Step()) storm = std::make_unique<Storm>(++seed);
    }
}

}  // namespace
}  // namespace norava
