#include "gallery/gallery.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <set>

#include "gui/pictures.h"
#include "gui/platform/offscreen_view.h"

// The gallery holds every control, so what must hold for all of them is tried on it.
namespace norava {
namespace {

// Keeps the books of gestures: clicks and releases of a control take turns.
class WatchedGallery : public CGallery {
  public:
    explicit WatchedGallery(int scale = 1) : CGallery(scale) {
        SetViewFactory([this](PlatformEvents& events, void*, CSize viewSize, int viewScale) {
            auto made = std::make_unique<OffscreenView>(events, viewSize, viewScale);
            view = made.get();
            return made;
        });
        if (!Open()) std::abort();
    }
    ~WatchedGallery() override { Close(); }

    bool ControlClicked(CControl* control) override {
        if (!MayAccept() || !CGallery::ControlClicked(control)) return false;
        EXPECT_TRUE(open.insert(control).second);
        return true;
    }
    bool ControlReleased(CControl* control) override {
        EXPECT_EQ(open.erase(control), 1u);
        return CGallery::ControlReleased(control);
    }
    bool ControlValueChanged(CControl* control, float value) override {
        EXPECT_FALSE(control->IsDisabled());
        return MayAccept() && CGallery::ControlValueChanged(control, value);
    }
    [[nodiscard]] std::vector<CControl*> ListControls() const {
        std::vector<CControl*> controls;
        for (const auto& control : GetRootControlGroup()->GetControls())
            controls.push_back(control.get());
        return controls;
    }
    // Now and then, when it is called so, the owner refuses or does something rash first.
    [[nodiscard]] bool MayAccept() { return !whim || whim(); }

    OffscreenView* view = nullptr;
    std::set<CControl*> open;
    std::function<bool()> whim;
};

class Random {
  public:
    explicit Random(unsigned seed) : engine(seed) {}
    int Below(int count) { return std::uniform_int_distribution(0, count - 1)(engine); }
    float Unit() { return std::uniform_real_distribution(0.0f, 1.0f)(engine); }
    bool OneIn(int count) { return Below(count) == 0; }
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

std::unique_ptr<CGraphicBuffer> CopyOf(CWindowPort& window) {
    auto copy = std::make_unique<CGraphicBuffer>(window.GetSclFactor());
    CGraphicBuffer& buffer = *window.GetGraphicBuffer();
    copy->SetSize(buffer.GetSize());
    const int scale = window.GetSclFactor();
    const auto words =
        static_cast<size_t>(buffer.GetSize().cx * buffer.GetSize().cy * scale * scale);
    std::copy_n(buffer.GetDataAt(0, 0), words, copy->GetDataAt(0, 0));
    return copy;
}

class GalleryPixels : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Scales, GalleryPixels, testing::Values(1, 2));

TEST_P(GalleryPixels, RepaintingOneControlEqualsRepaintingAll) {
    WatchedGallery gallery(GetParam());
    Random random(1);
    const std::vector<CControl*> controls = gallery.ListControls();
    for (int round = 0; round < 300; ++round) {
        CControl* control =
            controls[static_cast<size_t>(random.Below(static_cast<int>(controls.size())))];
        control->SetValueAndRedraw(AnyValue(random, control));
        if (random.OneIn(4)) gallery.view->MoveMouse(random.Place(10));
        if (random.OneIn(8)) gallery.view->Click(random.Place(0));
        gallery.view->Tick();
        if (round % 10 > 0) continue;
        const auto piecemeal = CopyOf(gallery);
        gallery.DrawToBuffer();
        ASSERT_NO_FATAL_FAILURE(test::ExpectSamePixels(*gallery.GetGraphicBuffer(), *piecemeal))
            << "round " << round;
    }
}

TEST_P(GalleryPixels, NoControlPaintsOutsideItsRectangle) {
    WatchedGallery gallery(GetParam());
    Random random(2);
    for (CControl* control : gallery.ListControls()) {
        for (int round = 0; round < 12; ++round) {
            const CPoint corner = random.Place(30);
            const CRect rect(corner, CSize(random.Below(120) - 5, random.Below(60) - 5));
            control->SetRect(rect);
            control->SetValue(AnyValue(random, control));
            CGraphicBuffer& buffer = *gallery.GetGraphicBuffer();
            buffer.Clear(CColor(1, 2, 3));
            control->DrawToBuffer();
            ASSERT_EQ(buffer.GetClipRect(), CRect({0, 0}, CGallery::kSize));
            for (int y = 0; y < CGallery::kSize.cy; ++y)
                for (int x = 0; x < CGallery::kSize.cx; ++x)
                    ASSERT_TRUE(rect.IsPointInside({x, y}) ||
                                buffer.GetColorAt(x, y) == CColor(1, 2, 3))
                        << "control " << control->GetID() << " at " << x << ", " << y;
        }
    }
}

// Opened and closed in the middle of everything; the address and leak checkers are the judges.
TEST(Gallery, OpensAndClosesTwoHundredTimes) {
    Random random(3);
    for (int i = 0; i < 200; ++i) {
        WatchedGallery gallery;
        for (int k = 0; k < i % 5; ++k) {
            gallery.view->MoveMouse(random.Place(0));
            gallery.view->PressMouse();
            gallery.view->Tick(i % 3);
        }
        if (i % 2 == 0) {
            gallery.Close();
            EXPECT_TRUE(gallery.open.empty());
            EXPECT_TRUE(gallery.Open());
        }
    }
}

// What a mad user and a mad owner can do. How long it goes on: NORAVA_STORM_EVENTS.
class Storm {
  public:
    explicit Storm(unsigned seed) : random(seed) {
        gallery.whim = [this] {
            if (random.OneIn(300)) DoSomethingRash();
            return !random.OneIn(10);
        };
    }
    void Step() {
        if (!gallery.IsOpen()) {
            ASSERT_TRUE(gallery.open.empty()) << "closing ends every gesture";
            ASSERT_TRUE(gallery.Open());
        }
        if (gallery.ListControls().size() < 10) gallery.Close();
        UseMouse();
        if (gallery.IsOpen() && random.OneIn(4)) UseKeys();
        if (gallery.IsOpen() && random.OneIn(3)) gallery.view->Tick(random.Below(3));
        if (gallery.IsOpen() && random.OneIn(200)) DoSomethingRash();
        const bool isModal = gallery.IsSuper();
        ASSERT_TRUE(!isModal || !gallery.open.empty()) << "a modal list without its gesture";
    }
    [[nodiscard]] bool IsWorthGoingOn() const { return gallery.ListControls().size() > 10; }
    void End() {
        gallery.Close();
        EXPECT_TRUE(gallery.open.empty());
    }

  private:
    void UseMouse() {
        OffscreenView& view = *gallery.view;
        switch (random.Below(8)) {
            case 0:
                return view.PressMouse(random.Below(4), random.OneIn(4));
            case 1:
            case 2:
                return view.ReleaseMouse(random.Below(4));
            case 3:
                static_cast<void>(view.TurnWheel(10 * random.Unit() - 5));
                return;
            case 4:
                return random.OneIn(20) ? view.GetEvents().MouseTakenAway()
                                        : view.Click(random.Place(5), random.OneIn(4));
            default:
                return view.MoveMouse(random.Place(40));
        }
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
        const std::vector<CControl*> controls = gallery.ListControls();
        if (controls.empty()) return;
        CControl* victim =
            controls[static_cast<size_t>(random.Below(static_cast<int>(controls.size())))];
        switch (random.Below(12)) {
            case 0:
                // All but the line that the gallery itself writes into.
                return victim->GetID() > 0 ? gallery.DestroyControl(victim) : void();
            case 1:
                return gallery.Close();
            case 2:
                return gallery.GetRootControlGroup()->Disable(false);
            case 3:
            case 4:
                return victim->Disable(true);
            case 5:
                return victim->SetRect(CRect(random.Place(20), CSize(random.Below(90), 30)));
            case 6:
                return gallery.DrawToBuffer();
            case 7:
                victim->SetValueAndRedraw(std::nanf(""));
                return;
            case 8:
                return victim->GrabFocus();
            default:
                victim->Disable(false);
                victim->SetValueAndRedraw(AnyValue(random, victim));
        }
    }

    Random random;
    WatchedGallery gallery;
};

TEST(Gallery, OutlivesAStormOfEvents) {
    const char* wanted = std::getenv("NORAVA_STORM_EVENTS");
    const long events = wanted ? std::strtol(wanted, nullptr, 10) : 20000;
    unsigned seed = 4;
    auto storm = std::make_unique<Storm>(seed);
    for (long i = 0; i < events; ++i) {
        ASSERT_NO_FATAL_FAILURE(storm->Step()) << "seed " << seed;
        if (storm->IsWorthGoingOn()) continue;
        storm->End();
        storm = std::make_unique<Storm>(++seed);
    }
    storm->End();
}

}  // namespace
}  // namespace norava
