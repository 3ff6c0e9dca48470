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

class GalleryPixels : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Scales, GalleryPixels, testing::Values(1, 2));

// Buttons held and lit, text being edited, lists scrolled, menus open and fading in, a knob
// dragged.
TEST_P(GalleryPixels, LooksAsItShould) {
    test::ExpectLooksLike([](const std::string& path) { return WriteScenes(path, GetParam()); },
                          "gallery_scale" + std::to_string(GetParam()));
}

// What a mad user and a mad owner can do, until little is left.
class Storm : public test::Watched<CGallery> {
  public:
    explicit Storm(unsigned seed) : random(seed) {
        whim = [this] {
            if (OneIn(300)) DoSomethingRash();
            return !OneIn(10);
        };
    }
    ~Storm() override {
        Close();
        EXPECT_TRUE(open.empty()) << "closing ends every gesture";
    }
    // Whether there is something left to rage against.
    bool Step() {
        EXPECT_TRUE(IsOpen() || open.empty());
        Show();
        UseMouse();
        if (IsOpen() && OneIn(4)) UseKeys();
        if (IsOpen() && OneIn(3)) view->Tick(Below(3));
        if (IsOpen() && OneIn(200)) DoSomethingRash();
        EXPECT_TRUE(!IsSuper() || !open.empty()) << "a modal list without its gesture";
        return GetRootControlGroup()->GetControls().size() > 10;
    }

  private:
    int Below(int count) { return std::uniform_int_distribution(0, count - 1)(random); }
    bool OneIn(int count) { return Below(count) == 0; }
    CPoint Place(int margin) {
        return {Below(kSize.cx + 2 * margin) - margin, Below(kSize.cy + 2 * margin) - margin};
    }

    void UseMouse() {
        const int kind = Below(8);
        if (kind == 0) return view->PressMouse(Below(4), OneIn(4));
        if (kind < 3) return view->ReleaseMouse(Below(4));
        if (kind == 3) return static_cast<void>(view->TurnWheel(static_cast<float>(Below(11) - 5)));
        if (kind > 4) return view->MoveMouse(Place(40));
        if (OneIn(20)) return view->GetEvents().MouseTakenAway();
        view->Click(Place(5), OneIn(4));
    }
    void UseKeys() {
        constexpr unsigned kKeys[] = {kKeyUp,    kKeyDown,      kKeyEnter,  kKeyEscape, kKeyLeft,
                                      kKeyRight, kKeyBackspace, kKeyDelete, kKeyHome,   kKeyEnd,
                                      'a',       0xE9,          kKeyPageUp, ' '};
        view->SetModifiers({OneIn(5), OneIn(4), OneIn(8)});
        static_cast<void>(view->PressKey(kKeys[Below(std::size(kKeys))]));
    }
    void DoSomethingRash() {
        const auto& controls = GetRootControlGroup()->GetControls();
        CControl* victim = controls[static_cast<size_t>(Below(int(controls.size())))].get();
        const int kind = Below(12);
        // All but the line that the gallery itself writes into.
        if (kind == 0 && victim->GetID() > 0) return DestroyControl(victim);
        if (kind == 1) return Close();
        if (kind == 2) return DrawToBuffer();
        if (kind < 5) return victim->Disable(true);
        if (kind == 5) victim->SetRect(CRect(Place(20), CSize(Below(90), 30)));
        if (kind == 6) victim->SetValueAndRedraw(std::nanf(""));
        if (kind == 7) victim->GrabFocus();
        if (kind < 8) return;
        victim->Disable(false);
        victim->SetValueAndRedraw(static_cast<float>(Below(33)) / 4.0f - 1.0f);
    }

    std::mt19937 random;
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
