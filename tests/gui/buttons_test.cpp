#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "gui/control_button.h"
#include "gui/control_scene.h"
#include "gui/control_state_selector.h"
#include "gui/targa.h"

namespace norava {
namespace {

using test::GestureWindow;
using testing::ElementsAre;
using testing::IsEmpty;

struct ButtonTest : testing::Test {
    GestureWindow window{CSize(120, 60)};
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
    window.refuse = true;
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

}  // namespace
}  // namespace norava
