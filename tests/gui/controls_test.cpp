#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "gui/control_button.h"
#include "gui/control_slider.h"
#include "gui/control_state_selector.h"
#include "gui/offscreen_window.h"
#include "gui/targa.h"

namespace norava {
namespace {

using test::OffscreenWindow;
using testing::ElementsAre;
using testing::FloatEq;
using testing::IsEmpty;

struct ButtonTest : testing::Test {
    OffscreenWindow window{CSize(120, 60)};
    CControlButton* button = window.Add<CControlButton>(1, CRect(10, 10, 40, 20));
    OffscreenView& view = window.Show();
};

TEST_F(ButtonTest, AClickButtonIsOnWhileItIsHeld) {
    view.MoveMouse({20, 20});
    view.PressMouse();
    view.PressMouse(kMouseRight);
    view.ReleaseMouse(kMouseRight);
    EXPECT_EQ(button->GetValue(), 1.0f);
    view.MoveMouse({90, 50});
    view.ReleaseMouse();
    EXPECT_THAT(window.TakeValues(), ElementsAre(1.0f, 0.0f));
    EXPECT_THAT(window.TakeLog(), ElementsAre("clicked 1", "changed 1", "changed 1", "released 1"));
    view.Click({20, 20}, kMouseRight);
    EXPECT_THAT(window.TakeLog(), IsEmpty());
}

TEST_F(ButtonTest, SwitchesToggleAndKeysComeBack) {
    button->SetKind_Switch();
    button->SetValue(0.5f);
    view.Click({20, 20});
    EXPECT_EQ(button->GetValue(), 0.0f) << "anything but 0 is on";
    EXPECT_THAT(window.TakeLog(), ElementsAre("clicked 1", "changed 1", "released 1"));
    button->SetKind_LED();
    view.Click({20, 20});
    EXPECT_EQ(button->GetValue(), 1.0f);
    button->SetKind_Key();
    view.PressMouse();
    EXPECT_EQ(button->GetValue(), 0.0f);
    view.ReleaseMouse();
    EXPECT_EQ(button->GetValue(), 1.0f);
    window.refuseValues = true;
    view.Click({20, 20});
    EXPECT_EQ(button->GetValue(), 1.0f);
    window.whim = [] { return false; };
    window.TakeValues();
    view.Click({20, 20});
    EXPECT_THAT(window.TakeValues(), IsEmpty());
}

TEST_F(ButtonTest, ALampFadesInFiveTicksAndHoverShows) {
    CImage picture;
    test::Targa targa{.width = 40, .height = 40};
    targa.color = [](int, int y) { return y < 20 ? 0xFF000064u : 0xFFC80000u; };
    ASSERT_TRUE(picture.LoadFromMemory(targa.Bytes(), "lamp"));
    button->SetKind_LED();
    button->SetButtonImage(&picture, CSize(), {});
    window.DrawToBuffer();
    button->SetValue(1.0f);
    uint32_t last = view.GetPixel(30, 20);
    for (int i = 0; i < 5; ++i) {
        view.Tick();
        EXPECT_NE(view.GetPixel(30, 20), last);
        last = view.GetPixel(30, 20);
    }
    static_cast<void>(view.TakePresented());
    view.Tick(3);
    EXPECT_THAT(view.TakePresented(), IsEmpty()) << "nothing is painted when nothing moves";
    view.MoveMouse({20, 20});
    EXPECT_THAT(view.TakePresented(), ElementsAre(button->GetRect()));
    view.MoveMouse({80, 50});
    view.Tick();
    EXPECT_THAT(view.TakePresented(), ElementsAre(button->GetRect())) << "it has left";
}

TEST_F(ButtonTest, ASelectorHasAValueForEachState) {
    auto* selector = window.Add<CControlStateSelector>(2, CRect(10, 35, 90, 20));
    selector->SetStateSelectorImage(nullptr, true, false, CSize(20, 20), {});
    selector->SetStatesGap(CSize(22, 0));
    selector->SetNumStates(4);
    selector->SetNumStates(0);
    for (const auto& [value, id] : {std::pair{0.99f, 2}, {1.5f, 4}, {1e30f, 4}, {NAN, 0}})
        EXPECT_EQ(selector->ValueToID(value), id) << value;
    EXPECT_EQ(selector->IDToValue(-1), 0.0f);
    EXPECT_EQ(selector->IDToValue(9), 1.0f);
    view.Click({10 + 2 * 22 + 5, 40});
    EXPECT_FLOAT_EQ(selector->GetValue(), 2.0f / 3.0f);
    view.Click({10 + 2 * 22 + 5, 40});
    view.Click({10 + 21, 40});  // between two
    EXPECT_EQ(window.TakeValues().size(), 1u);
    selector->SetReversed(true);
    view.Click({15, 40});
    EXPECT_EQ(selector->GetValue(), 1.0f);
    EXPECT_TRUE(window.open.empty());
    for (int states = 2; states < 200; ++states) {
        selector->SetNumStates(states);
        for (int i = 0; i < states; ++i)
            ASSERT_EQ(selector->ValueToID(selector->IDToValue(i)), i) << states;
    }
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
    void DragUp(int pixels) {
        Press();
        Up(pixels);
        view.ReleaseMouse();
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
    EXPECT_EQ(knob->GetValue(), 0.0f);
    Up(-50);
    view.ReleaseMouse();
    EXPECT_THAT(window.TakeLog(), ElementsAre("clicked 1", "changed 1", "changed 1", "released 1"))
        << "nothing changed at the end of the way";
    Up(10);
    EXPECT_EQ(knob->GetValue(), 0.0f);
    window.refuseValues = true;
    DragUp(10);
    EXPECT_EQ(knob->GetValue(), 0.0f);
}

TEST_F(NumberTest, EveryResetIsAWholeGesture) {
    knob->SetValueOnReset(0.25f);
    const auto expectReset = [&](const std::string& how) {
        EXPECT_EQ(knob->GetValue(), 0.25f) << how;
        EXPECT_THAT(window.TakeLog(), ElementsAre("clicked 1", "changed 1", "released 1")) << how;
        knob->SetValue(1.0f);
    };
    knob->SetValue(1.0f);
    view.Click({60, 40}, kMouseRight);
    expectReset("right click");
    view.SetModifiers({.alt = true});
    view.Click({60, 40});
    expectReset("ALT click");
    view.SetModifiers({});
    view.PressMouse(kMouseLeft, true);
    view.ReleaseMouse();
    expectReset("double click");
    view.Click({60, 40}, kMouseMiddle);
    EXPECT_THAT(window.TakeLog(), IsEmpty());
}

TEST_F(NumberTest, FineModeIsAsSlowAsItsTriggerSays) {
    const auto expectMove = [&](float way, const char* trigger) {
        EXPECT_NEAR(knob->GetValue() - 0.5f, way, 1e-6f) << trigger;
        knob->SetValue(0.5f);
    };
    knob->SetValue(0.5f);
    view.SetModifiers({.shift = true});
    DragUp(20);
    expectMove(0.05f, "none as made");
    knob->SetZoomingWithSHIFT();
    DragUp(20);
    expectMove(0.0025f, "SHIFT");
    view.SetModifiers({.alt = true});
    knob->SetZoomingWithALT();
    DragUp(20);
    expectMove(0.0025f, "ALT, which does not reset");
    view.SetModifiers({});
    knob->SetZoomingWithRightButton();
    view.PressMouse(kMouseRight);
    Up(20);
    view.ReleaseMouse(kMouseRight);
    expectMove(0.0025f, "right button");
}

TEST_F(NumberTest, ANotchHoldsForAHundredPixels) {
    knob->SetHasNotch(true);
    knob->SetValueOnReset(0.5f);
    knob->SetValue(0.49f);
    Press();
    for (const int pixels : {10, 90}) {
        Up(pixels);
        EXPECT_EQ(knob->GetValue(), 0.5f);
    }
    Up(36);
    EXPECT_GT(knob->GetValue(), 0.55f);
    EXPECT_LT(knob->GetValue(), 0.58f);
    view.ReleaseMouse();
}

TEST_F(NumberTest, AQuantisedKnobKeepsWhatWasDraggedBetween) {
    knob->SetQuantizing(7);
    Press();
    Up(400);
    const std::vector<float> values = window.TakeValues();
    ASSERT_EQ(values.size(), 6u);
    for (size_t i = 0; i < values.size(); ++i)
        EXPECT_FLOAT_EQ(values[i], static_cast<float>(i + 1) / 6.0f);
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
    view.ReleaseMouse();

    fader->SetRect(CRect(2, 2, 90, 16));
    fader->SetAxisX();
    fader->SetValue(0.0f);
    view.Drag({5, 5}, {25, 30});
    EXPECT_EQ(fader->GetHandleRect().left, 22);
}

}  // namespace
}  // namespace norava
