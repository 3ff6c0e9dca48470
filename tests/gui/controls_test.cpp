#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "gui/control_button.h"
#include "gui/control_slider.h"
#include "gui/offscreen_window.h"

// What the panel's test does not see of buttons, knobs and faders, which it works one by one.
namespace norava {
namespace {

using test::OffscreenWindow;
using testing::ElementsAre;

TEST(Button, IsOnWhileItIsHeld) {
    OffscreenWindow window(CSize(120, 60));
    auto* button = window.Add<CControlButton>(1, CRect(10, 10, 40, 20));
    OffscreenView& view = window.Show();
    view.MoveMouse({20, 20});
    view.PressMouse();
    view.PressMouse(kMouseRight);
    view.ReleaseMouse(kMouseRight);
    view.MoveMouse({90, 50});
    EXPECT_THAT(window.TakeValues(), ElementsAre(1.0f));
    view.ReleaseMouse();
    EXPECT_THAT(window.TakeLog(), ElementsAre("clicked 1", "changed 1", "changed 1", "released 1"));
    button->SetKind_Key();
    button->SetValue(1.0f);
    view.Click({20, 20});
    EXPECT_THAT(window.TakeValues(), ElementsAre(0.0f, 0.0f, 1.0f));
}

struct NumberTest : testing::Test {
    void Press() {
        view.MoveMouse({60, 40});
        view.PressMouse();
    }
    // Moves of one pixel each, the pointer being hidden; upwards when above 0.
    void Up(int pixels) {
        for (int i = 0; i < std::abs(pixels); ++i)
            view.MoveMouse({60, pixels > 0 ? 39 : 41});
    }
    // How far the knob goes from its middle.
    float DragUp(int pixels, int button = kMouseLeft) {
        knob->SetValue(0.5f);
        view.MoveMouse({60, 40});
        view.PressMouse(button);
        Up(pixels);
        view.ReleaseMouse(button);
        return knob->GetValue() - 0.5f;
    }
    OffscreenWindow window{CSize(120, 80)};
    CControlKnob* knob = window.Add<CControlKnob>(1, CRect(40, 20, 40, 40));
    OffscreenView& view = window.Show();
};

TEST_F(NumberTest, ADragIsOneGesture) {
    knob->SetValue(0.5f);
    Press();
    EXPECT_TRUE(view.IsPointerHidden());
    view.MoveMouse({60, 0});
    EXPECT_FLOAT_EQ(knob->GetValue(), 0.6f);
    view.PressMouse(kMouseRight);
    view.ReleaseMouse(kMouseRight);
    EXPECT_TRUE(knob->IsTracking()) << "other buttons do not end it";
    view.MoveMouse({500, 40 + 1000});
    Up(-50);
    view.ReleaseMouse();
    EXPECT_THAT(window.TakeLog(), ElementsAre("clicked 1", "changed 1", "changed 1", "released 1"))
        << "nothing changed at the end of the way";
    Up(10);
    EXPECT_EQ(knob->GetValue(), 0.0f);
    window.refuseValues = true;
    EXPECT_EQ(DragUp(10), 0.0f);
}

TEST_F(NumberTest, EveryResetIsAWholeGesture) {
    knob->SetValueOnReset(0.25f);
    for (const bool isDouble : {false, true}) {
        knob->SetValue(1.0f);
        view.MoveMouse({60, 40});
        view.SetModifiers({.alt = !isDouble});
        view.PressMouse(kMouseLeft, isDouble);
        view.ReleaseMouse();
        EXPECT_EQ(knob->GetValue(), 0.25f) << isDouble;
        EXPECT_THAT(window.TakeLog(), ElementsAre("clicked 1", "changed 1", "released 1"));
    }
    for (const int pixels : {2, 20}) {
        DragUp(pixels);
        view.MoveMouse({60, 40});
        view.PressMouse(kMouseLeft, true);
        Up(20);
        view.ReleaseMouse();
        const bool isClick = pixels == 2;
        EXPECT_NEAR(knob->GetValue(), isClick ? 0.25f : 0.6f, 1e-6f) << "two strokes are none";
    }
}

TEST_F(NumberTest, FineModeIsAsSlowAsItsTriggerSays) {
    view.SetModifiers({.shift = true});
    EXPECT_NEAR(DragUp(20), 0.05f, 1e-6f) << "none as made";
    knob->SetZoomingWithSHIFT();
    EXPECT_NEAR(DragUp(20), 0.0025f, 1e-6f);
    knob->SetZoomingWithRightButton();
    view.SetModifiers({});
    EXPECT_NEAR(DragUp(20, kMouseRight), 0.0025f, 1e-6f);
}

TEST_F(NumberTest, ANotchHoldsForAHundredPixels) {
    knob->SetHasNotch(true);
    knob->SetValueOnReset(0.5f);
    knob->SetValue(0.49f);
    Press();
    Up(100);
    EXPECT_EQ(knob->GetValue(), 0.5f);
    Up(36);
    EXPECT_NEAR(knob->GetValue(), 0.565f, 0.015f);
    view.ReleaseMouse();
}

TEST_F(NumberTest, AQuantisedKnobKeepsWhatWasDraggedBetween) {
    knob->SetQuantizing(7);
    Press();
    Up(400);
    using testing::FloatEq;
    EXPECT_THAT(window.TakeValues(), ElementsAre(FloatEq(1.0f / 6.0f), FloatEq(2.0f / 6.0f), 0.5f,
                                                 FloatEq(4.0f / 6.0f), FloatEq(5.0f / 6.0f), 1.0f));
    // The host sets another value in the middle of the drag.
    knob->SetValue(0.5f);
    Up(-40);
    EXPECT_THAT(window.TakeValues(), ElementsAre(FloatEq(2.0f / 6.0f)));
    view.ReleaseMouse();
}

TEST_F(NumberTest, TheBubbleFadesInAndLeavesNoTrace) {
    auto* neighbour = window.Add<CControlKnob>(2, CRect(70, 60, 20, 20));
    const auto repaint = [&] {
        window.DrawToBuffer();
        window.UpdateScreen();
        return view.GetPixels();
    };
    const std::vector<uint32_t> before = repaint();
    Press();
    EXPECT_EQ(view.GetPixels(), before);
    view.Tick();
    const uint32_t faint = view.GetPixel(60, 61);
    view.Tick(2);
    EXPECT_NE(view.GetPixel(60, 61), faint);
    // What changes under it stays under it, and full and partial repaints agree.
    neighbour->SetValueAndRedraw(0.7f);
    const std::vector<uint32_t> partly = view.GetPixels();
    EXPECT_EQ(repaint(), partly);
    neighbour->SetValueAndRedraw(0.0f);
    view.ReleaseMouse();
    EXPECT_EQ(view.GetPixels(), before);
}

TEST_F(NumberTest, AFaderFollowsTheMouseExactly) {
    auto* fader = window.Add<CControlSlider>(2, CRect(2, 2, 20, 74));
    fader->SetValue(0.5f);
    const CRect start = fader->GetHandleRect();
    const CPoint grip = start.GetCenter();
    view.MoveMouse(grip);
    view.PressMouse();
    EXPECT_FALSE(view.IsPointerHidden());
    for (const int y : {10, -17, 60, -2000, 2000, 0}) {
        view.MoveMouse({grip.x + 300, grip.y + y});
        const int top = std::clamp(start.top + y, 2, 2 + 74 - start.height);
        EXPECT_EQ(fader->GetHandleRect().top, top) << y;
    }
    fader->SetHasNotch(true);
    fader->SetValueOnReset(0.5f);
    view.MoveMouse({grip.x, grip.y - 2});
    EXPECT_EQ(fader->GetValue(), 0.5f) << "caught";
    view.MoveMouse({grip.x, grip.y - 8});
    EXPECT_EQ(fader->GetHandleRect().top, start.top - 8) << "and let go again";
    view.MoveMouse({grip.x, grip.y - 2});
    fader->SetZoomingWithSHIFT();
    view.SetModifiers({.shift = true});
    view.MoveMouse({grip.x, grip.y - 8});
    EXPECT_NEAR(fader->GetValue(), 0.5f + 6 * 0.05f * fader->GetValueChangeSpeed(), 1e-6f)
        << "beside the notch";
}

}  // namespace
}  // namespace norava
