#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "gui/control_group.h"
#include "gui/offscreen_window.h"
#include "gui/pictures.h"
#include "gui/targa.h"

namespace norava {
namespace {

using test::Count;
using test::Log;
using test::OffscreenWindow;
using test::TestControl;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

struct ControlsTest : testing::Test {
    TestControl* Add(int id, CRect rect, CControlGroup* group = nullptr) {
        return (group ? group : window.GetRootControlGroup())->Add<TestControl>(log, id, rect);
    }
    CControlGroup* AddGroup() {
        return window.AttachControlGroup(std::make_unique<CControlGroup>());
    }
    Log TakeLog() { return std::exchange(log, {}); }

    Log log;
    OffscreenWindow window;
    OffscreenView& view = window.Show();
};

TEST_F(ControlsTest, TheFirstAttachedGetsTheMouse) {
    Add(1, CRect(10, 10, 20, 20));
    TestControl* second = Add(2, CRect(20, 20, 20, 20));
    view.MoveMouse({25, 25});
    view.PressMouse();
    EXPECT_THAT(TakeLog(), ElementsAre("move 1", "down 1"));
    view.MoveMouse({30, 30});
    EXPECT_THAT(TakeLog(), ElementsAre("move 2")) << "edges are exclusive";
    window.GetControlByID(1)->Disable(true);
    view.Click({25, 25}, kMouseRight);
    EXPECT_THAT(TakeLog(), ElementsAre("move 2", "down 2", "up 2"));
    EXPECT_EQ(second->GetMouseBtn(), kMouseRight);
    EXPECT_EQ(second->GetMousePos(), CPoint(25, 25));
    second->Disable(true);
    view.Click({25, 25});
    EXPECT_THAT(TakeLog(), IsEmpty());
    EXPECT_FALSE(window.ProcessMouseDown());
}

TEST_F(ControlsTest, RedrawsOnlyWhatChanged) {
    TestControl* control = Add(1, CRect(10, 12, 20, 8));
    Add(2, CRect(50, 50, 10, 10));
    static_cast<void>(view.TakePresented());
    EXPECT_FALSE(control->SetValueAndRedraw(0.0f));
    EXPECT_EQ(control->drawn, 0);
    EXPECT_THAT(view.TakePresented(), IsEmpty());
    EXPECT_TRUE(control->SetValueAndRedraw(0.5f));
    EXPECT_THAT(view.TakePresented(), ElementsAre(CRect(10, 12, 20, 8)));
    EXPECT_TRUE(window.SetControlValueAndRedraw(1, 0.25f));
    control->Disable(true);
    EXPECT_TRUE(control->SetValueAndRedraw(1.0f)) << "stored all the same";
    EXPECT_EQ(control->drawn, 2);
    window.GetRootControlGroup()->Disable(true);
    window.RedrawControl(2, true);
    EXPECT_EQ(static_cast<TestControl*>(window.GetControlByID(2))->drawn, 0);

    CControl loose;
    EXPECT_TRUE(loose.SetValueAndRedraw(1.0f));
    loose.GrabFocus();
    loose.SetSuper(true);
    loose.StartTracking(true);
    loose.DrawToBuffer();
    EXPECT_FALSE(loose.SendClicked());
    EXPECT_EQ(loose.GetMousePos(), CPoint(-1, -1));
}

TEST_F(ControlsTest, FocusMovesWithinAndBetweenGroups) {
    CControlGroup* other = AddGroup();
    TestControl* a = Add(1, CRect(0, 0, 10, 10));
    TestControl* b = Add(2, CRect(20, 0, 10, 10));
    TestControl* c = Add(3, CRect(40, 0, 10, 10), other);
    a->GrabFocus();
    a->GrabFocus();
    EXPECT_THAT(TakeLog(), ElementsAre("took focus 1"));
    b->GrabFocus();
    EXPECT_THAT(TakeLog(), ElementsAre("lost focus 1", "took focus 2"));
    c->GrabFocus();
    EXPECT_THAT(TakeLog(), ElementsAre("lost focus 2", "took focus 3"));
    EXPECT_FALSE(b->IsFocused());
    EXPECT_TRUE(other->IsFocused());
    EXPECT_TRUE(view.PressKey('x'));
    EXPECT_THAT(TakeLog(), ElementsAre("key 120 3", "key up 3"));
    c->Disable(true);
    EXPECT_THAT(TakeLog(), ElementsAre("lost focus 3"));
    EXPECT_FALSE(view.PressKey('x'));
}

// A handler that answers the loss of the focus by taking it back, or by destroying who asked.
TEST_F(ControlsTest, FocusSurvivesStubbornControls) {
    TestControl* a = Add(1, CRect(0, 0, 10, 10));
    TestControl* b = Add(2, CRect(20, 0, 10, 10));
    a->GrabFocus();
    a->act = [](TestControl& self, const std::string& event) {
        if (event == "lost focus") self.GrabFocus();
        return true;
    };
    b->GrabFocus();
    EXPECT_TRUE(a->IsFocused());
    a->act = [&](TestControl&, const std::string& event) {
        if (event == "lost focus") window.DestroyControl(b);
        return true;
    };
    b->GrabFocus();
    EXPECT_EQ(window.GetControlByID(2), nullptr);
    a->act = [](TestControl& self, const std::string& event) {
        if (event == "lost focus") self.Disable(true);
        return true;
    };
    a->GrabFocus();
    a->Disable(true);
    EXPECT_TRUE(a->IsDisabled());
}

TEST_F(ControlsTest, SuperControlHasTheWindowForItself) {
    CControlGroup* other = AddGroup();
    TestControl* a = Add(1, CRect(0, 0, 10, 10));
    TestControl* b = Add(2, CRect(20, 0, 10, 10));
    TestControl* c = Add(3, CRect(40, 0, 10, 10), other);
    b->SetSuper(true);
    EXPECT_TRUE(b->IsSuper());
    EXPECT_EQ(window.GetSuperControl(), b);
    view.Click({5, 5});
    view.Click({45, 5});
    view.PressKey('x');
    for (const std::string& entry : TakeLog())
        EXPECT_THAT(entry, testing::EndsWith("2"));
    view.Tick();
    EXPECT_THAT(TakeLog(), ElementsAre("timer 1", "timer 2"));

    // The others' values change meanwhile; their pictures follow when it ends.
    a->SetValueAndRedraw(1.0f);
    c->SetValueAndRedraw(1.0f);
    EXPECT_EQ(a->drawn + c->drawn, 0);
    EXPECT_TRUE(b->SetValueAndRedraw(1.0f));
    EXPECT_EQ(b->drawn, 1);
    b->act = [](TestControl& self, const std::string& event) {
        if (event == "down") self.SetSuper(false);
        return true;
    };
    view.Click({5, 5});
    EXPECT_FALSE(window.IsSuper());
    EXPECT_EQ(a->drawn, 1);
    EXPECT_EQ(c->drawn, 1);
}

TEST_F(ControlsTest, EndingAModalOneRestoresTheOneBefore) {
    CControlGroup* dialog = AddGroup();
    TestControl* menu = Add(1, CRect(0, 0, 10, 10));
    TestControl* field = Add(2, CRect(20, 0, 10, 10), dialog);
    TestControl* subMenu = Add(3, CRect(40, 0, 10, 10), dialog);
    menu->SetSuper(true);
    dialog->SetSuper(true);
    EXPECT_EQ(window.GetSuperControlGroup(), dialog);
    EXPECT_FALSE(dialog->GetSuperControl()) << "all of a dialog works";
    subMenu->SetSuper(true);
    EXPECT_EQ(window.GetSuperControl(), subMenu);
    EXPECT_FALSE(window.GetRootControlGroup()->MouseDown()) << "the lower menu is shut";
    menu->SetSuper(false);
    menu->SetSuper(false);
    EXPECT_EQ(window.GetSuperControl(), subMenu) << "a lower one may end first";
    menu->SetSuper(true);
    EXPECT_EQ(window.GetSuperControl(), menu);
    menu->SetSuper(false);
    subMenu->SetSuper(false);
    view.Click({25, 5});
    EXPECT_THAT(TakeLog(), Contains("down 2"));
    EXPECT_TRUE(dialog->IsSuper());
    dialog->Disable(true);
    EXPECT_FALSE(window.IsSuper()) << "a hidden dialog must not freeze the window";
    dialog->Disable(false);
    EXPECT_TRUE(window.IsSuper());
    field->SetSuper(true);
    window.DestroyControlGroup(dialog);
    EXPECT_FALSE(window.IsSuper());
    subMenu = nullptr;
    view.Click({5, 5});
    EXPECT_THAT(TakeLog(), Contains("down 1"));
}

// Drags that end because the control goes away must end their gesture too.
TEST_F(ControlsTest, EveryWayOutOfADragTellsTheControl) {
    const auto drag = [&](TestControl* control) {
        control->act = [](TestControl& self, const std::string& event) {
            if (event == "down" && self.SendClicked()) {
                self.GrabFocus();
                self.StartTracking(true);
            }
            if (event == "lost focus" && self.IsTracking()) {
                self.FinishTracking();
                self.SendReleased();
            }
            return true;
        };
        view.MoveMouse({5, 5});
        view.PressMouse();
        EXPECT_TRUE(control->IsTracking());
        EXPECT_TRUE(view.IsPointerHidden());
    };
    const auto expectEnded = [&](const std::string& how) {
        EXPECT_THAT(std::exchange(window.log, {}), ElementsAre("clicked 1", "released 1")) << how;
        EXPECT_FALSE(window.IsTracking()) << how;
        EXPECT_FALSE(view.IsTracking()) << how;
        EXPECT_EQ(window.GetTrackingControlGroup(), nullptr) << how;
    };
    TestControl* control = Add(1, CRect(0, 0, 10, 10));
    drag(control);
    control->Disable(true);
    expectEnded("disabled");
    TakeLog();
    view.ReleaseMouse();
    EXPECT_THAT(TakeLog(), IsEmpty()) << "a disabled control receives nothing";
    control->Disable(false);
    drag(control);
    view.GetEvents().MouseTakenAway();
    expectEnded("taken by the system");
    drag(control);
    window.GetRootControlGroup()->Disable(true);
    expectEnded("group disabled");
    window.GetRootControlGroup()->Disable(false);
    drag(control);
    window.DestroyControl(control);
    expectEnded("destroyed");
    control = Add(1, CRect(0, 0, 10, 10));
    drag(control);
    window.Close();
    EXPECT_THAT(window.log, ElementsAre("clicked 1", "released 1"));
    EXPECT_FALSE(window.IsTracking());
}

TEST_F(ControlsTest, BackgroundsLieInTheirOrder) {
    CImage picture;
    test::Targa targa;
    targa.width = targa.height = 30;
    targa.depth = 24;
    targa.color = [](int, int) { return 0xFFFF0000u; };  // blue
    ASSERT_TRUE(picture.LoadFromMemory(targa.Bytes(), "blue"));
    window.paintBackground = [](CGraphicBuffer& buffer, CRect) {
        CColor red(255, 0, 0);
        buffer.FillRect(CRect(0, 0, 20, 20), &red);
    };
    window.GetRootControlGroup()->SetBackgroundImage(&picture);
    window.DrawToBuffer();
    const auto at = [&](int x, int y) { return window.GetGraphicBuffer()->GetColorAt(x, y); };
    EXPECT_EQ(at(19, 19), CColor(255, 0, 0)) << "the root's picture hides nothing";
    EXPECT_EQ(at(20, 20), CColor(0, 0, 255));

    CControlGroup* panel = AddGroup();
    panel->SetRect(CRect(10, 10, 8, 8));
    panel->SetBackgroundImage(&picture);
    TestControl* control = Add(1, CRect(14, 14, 10, 10), panel);
    window.DrawToBuffer();
    EXPECT_EQ(at(11, 11), CColor(0, 0, 255)) << "a panel's covers the window's";
    window.GetGraphicBuffer()->Clear(CColor(9));
    control->DrawBackground();
    EXPECT_EQ(at(13, 13), CColor(9)) << "only what was asked for is repainted";
    EXPECT_EQ(at(14, 14), CColor(0, 0, 255));
    EXPECT_EQ(at(18, 18), CColor(255, 0, 0));
    control->DrawBackground(CRect(200, 200, 10, 10));
    EXPECT_EQ(at(13, 13), CColor(9)) << "and nothing outside of the window";
}

// Value changes must leave the same picture as a full repaint, whatever lies around the control.
TEST_F(ControlsTest, RepaintingOneEqualsRepaintingAll) {
    window.paintBackground = [](CGraphicBuffer& buffer, CRect) {
        for (int y = 0; y < 80; y += 4) {
            CColor stripe(y * 3, 255 - y, 90);
            buffer.FillRect(CRect(0, y, 100, 2), &stripe);
        }
    };
    for (int i = 0; i < 12; ++i)
        Add(i, CRect(3 + i % 4 * 24, 3 + i / 4 * 25, 22, 23));
    window.DrawToBuffer();
    for (int round = 0; round < 40; ++round)
        window.SetControlValueAndRedraw(round * 5 % 12, static_cast<float>(round % 7) / 7.0f);
    CGraphicBuffer onceMore;
    onceMore.SetSize(CSize(100, 80));
    onceMore.DrawImage(window.GetGraphicBuffer(), CRect(0, 0, 100, 80), {0, 0});
    window.DrawToBuffer();
    test::ExpectSamePixels(*window.GetGraphicBuffer(), onceMore);
}

}  // namespace
}  // namespace norava
