#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "gui/control_display.h"
#include "gui/offscreen_window.h"

// How a window, its groups and their controls share events, focus, mouse and screen.
namespace norava {
namespace {

using test::Log;
using test::OffscreenWindow;
using test::TestControl;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

struct WindowTest : testing::Test {
    TestControl* Add(int id, CRect rect, CControlGroup* group = nullptr) {
        return (group ? group : window.GetRootControlGroup())->Add<TestControl>(log, id, rect);
    }
    Log TakeLog() { return std::exchange(log, {}); }

    Log log;
    OffscreenWindow window;
    OffscreenView& view = window.Show();
    CControlGroup* other = window.AttachControlGroup(std::make_unique<CControlGroup>());
    TestControl* a = Add(1, CRect(0, 0, 20, 20));
    TestControl* b = Add(2, CRect(10, 10, 20, 20));
    TestControl* c = Add(3, CRect(10, 10, 40, 20), other);
};

TEST(WindowPort, OpensOnlyWhenItCan) {
    OffscreenWindow window(CSize(0, 0)), inner, closed;
    EXPECT_FALSE(window.Open()) << "without a size";
    window.SetSize(40, 30);
    ASSERT_TRUE(window.Open());
    EXPECT_FALSE(window.Open()) << "open already";
    EXPECT_TRUE(inner.Open(&window));
    EXPECT_FALSE(inner.Open(&closed));
    window.Close();
    window.SetViewFactory([](PlatformEvents&, void*, CSize, int) { return nullptr; });
    EXPECT_FALSE(window.Open() || window.IsOpen()) << "no system";
}

TEST(WindowPort, WhatIsFaintLeavesTheFinePictureUnderIt) {
    OffscreenWindow window(CSize(40, 30));
    window.SetSclFactor(2);
    auto* const letters = window.Add<CControlDisplay>(1, CRect(0, 0, 40, 30));
    letters->SetText("fine");
    OffscreenView& view = window.Show();
    const std::vector<uint32_t> before = view.GetPixels();
    window.ShowOverlay(letters, letters->GetRect(), 0.5f);  // of which it paints nothing
    constexpr uint32_t kOneLevel = 0x010101;                // a blend may darken by it
    EXPECT_TRUE(std::ranges::equal(view.GetPixels(), before, [](uint32_t now, uint32_t was) {
        return was - now <= kOneLevel;
    }));
}

TEST_F(WindowTest, RedrawsOnlyWhatChanged) {
    static_cast<void>(view.TakePresented());
    EXPECT_FALSE(a->SetValueAndRedraw(0.0f));
    EXPECT_THAT(view.TakePresented(), IsEmpty());
    EXPECT_TRUE(window.SetControlValueAndRedraw(1, 0.5f));
    EXPECT_THAT(view.TakePresented(), ElementsAre(a->GetRect()));
    a->Disable(true);
    EXPECT_TRUE(a->SetValueAndRedraw(1.0f)) << "stored all the same";
    other->Disable(true);
    window.RedrawControl(3, true);
    EXPECT_EQ(a->drawn, 1);
    EXPECT_EQ(c->drawn, 0);
}

TEST_F(WindowTest, APartUnderAnotherGroupIsRepaintedAsTheWhole) {
    window.DrawToBuffer();
    window.UpdateScreen();
    const std::vector<uint32_t> whole = view.GetPixels();
    EXPECT_EQ(window.RepaintPart({0, 0, 5, 5}), CRect(0, 0, 30, 30)) << "with what is cut by it";
    window.UpdateScreen();
    EXPECT_EQ(view.GetPixels(), whole);
}

TEST_F(WindowTest, TheFirstUnderTheMouseInTheFirstGroupThatUsesItGetsIt) {
    view.MoveMouse({15, 15});
    view.PressMouse();
    EXPECT_THAT(TakeLog(), ElementsAre("move 1", "down 1"));
    view.MoveMouse({20, 20});
    EXPECT_THAT(TakeLog(), ElementsAre("move 2")) << "edges are exclusive";
    a->Disable(true);
    view.Click({15, 15}, kMouseRight);
    EXPECT_THAT(TakeLog(), ElementsAre("move 2", "down 2", "up 2"));
    EXPECT_EQ(b->GetMouseBtn(), kMouseRight);
    b->act = [](TestControl&, const std::string& event) { return event == "down"; };
    EXPECT_TRUE(view.TurnWheel(-1));
    EXPECT_THAT(TakeLog(), ElementsAre("wheel down 2", "wheel down 3"));
    other->Disable(true);
    EXPECT_FALSE(view.TurnWheel(1));
    view.PressMouse(kMouseLeft, true);
    EXPECT_THAT(TakeLog(), ElementsAre("wheel up 2", "double 2", "down 2"))
        << "an unused double click is a second click";
}

TEST_F(WindowTest, KeysFollowTheFocus) {
    a->GrabFocus();
    b->GrabFocus();
    EXPECT_FALSE(view.HasKeyboard()) << "what takes no keys leaves them to the host";
    c->wantsKeys = true;
    c->GrabFocus();
    EXPECT_THAT(TakeLog(), ElementsAre("took focus 1", "lost focus 1", "took focus 2",
                                       "lost focus 2", "took focus 3"));
    view.Tick();
    EXPECT_TRUE(view.HasKeyboard());
    TakeLog();
    EXPECT_TRUE(view.PressKey('p'));
    EXPECT_THAT(TakeLog(), ElementsAre("key 112 3", "key up 3"));
    a->SetSuper(true);
    view.PressKey('q');
    EXPECT_THAT(TakeLog(), ElementsAre("key 113 1", "key up 1"));
    EXPECT_FALSE(view.HasKeyboard());
    a->SetSuper(false);
    c->act = [](TestControl&, const std::string&) { return false; };
    EXPECT_FALSE(view.PressKey('q')) << "the host may have it";
}

TEST_F(WindowTest, AModalControlHasTheWindowForItself) {
    b->SetSuper(true);
    view.Click({5, 5});
    view.Click({45, 15});
    view.PressKey('x');
    EXPECT_THAT(TakeLog(), testing::Each(testing::EndsWith("2")));
    view.Tick();
    EXPECT_THAT(TakeLog(), ElementsAre("timer 1", "timer 2"));

    // The others' values change meanwhile; their pictures follow when it ends.
    for (TestControl* control : {a, b, c})
        control->SetValueAndRedraw(1.0f);
    EXPECT_EQ(a->drawn + c->drawn, 0);
    EXPECT_EQ(b->drawn, 1);
    b->act = [](TestControl& self, const std::string& event) {
        if (event == "down") self.SetSuper(false);
        return true;
    };
    view.Click({5, 5});
    EXPECT_FALSE(window.IsSuper());
    EXPECT_EQ(a->drawn + c->drawn, 2);
}

TEST_F(WindowTest, EndingAModalOneRestoresTheOneBefore) {
    a->SetSuper(true);
    other->SetSuper(true);
    EXPECT_EQ(window.GetSuperControlGroup(), other);
    EXPECT_FALSE(other->GetSuperControl()) << "all of a dialog works";
    TestControl* menu = Add(4, CRect(60, 0, 10, 10), other);
    menu->SetSuper(true);
    a->SetSuper(false);
    EXPECT_EQ(window.GetSuperControl(), menu) << "a lower one may end first";
    menu->SetSuper(false);
    view.Click({45, 15});
    EXPECT_THAT(TakeLog(), Contains("down 3"));
    other->Disable(true);
    EXPECT_FALSE(window.IsSuper()) << "a hidden dialog must not freeze the window";
    other->Disable(false);
    EXPECT_TRUE(window.IsSuper());
    c->SetSuper(true);
    window.DestroyControlGroup(other);
    view.Click({5, 5});
    EXPECT_THAT(TakeLog(), Contains("down 1"));
}

TEST_F(WindowTest, TrackingKeepsTheMouse) {
    view.MoveMouse({-1, -1});
    c->StartTracking(true);
    window.StartTracking(false);
    EXPECT_TRUE(view.IsPointerHidden()) << "the first option stays";
    view.MoveMouse({300, -20});
    EXPECT_THAT(TakeLog(), ElementsAre("move 3"));
    EXPECT_EQ(c->GetMouseDelta(), CSize(301, -19));
    EXPECT_EQ(c->GetMousePos(), CPoint(-1, -1)) << "a hidden pointer stays where it was";
    a->FinishTracking();
    EXPECT_TRUE(c->IsTracking()) << "nobody ends the tracking of another";
    c->FinishTracking();
    EXPECT_FALSE(window.IsTracking() || view.IsTracking());
}

// Drags that end because the control goes away must end their gesture too.
TEST_F(WindowTest, EveryWayOutOfADragTellsTheControl) {
    CControlGroup& root = *window.GetRootControlGroup();
    TestControl* dragged = nullptr;
    const std::function<void()> ways[] = {
        [&] { dragged->Disable(true); }, [&] { view.GetEvents().MouseTakenAway(); },
        [&] { root.Disable(true); },     [&] { window.DestroyControl(dragged); },
        [&] { window.Close(); },
    };
    for (const auto& end : ways) {
        SCOPED_TRACE(&end - ways);
        root.Disable(false);
        dragged = Add(4, CRect(60, 40, 10, 10));
        dragged->act = [](TestControl& self, const std::string& event) {
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
        view.MoveMouse({65, 45});
        view.PressMouse();
        EXPECT_TRUE(dragged->IsTracking());
        end();
        EXPECT_THAT(window.TakeLog(), ElementsAre("clicked 4", "released 4"));
        EXPECT_FALSE(window.IsTracking());
        window.DestroyControl(window.GetControlByID(4));
    }
}

// Handlers that pull the ground from under themselves; the address sanitizer is the judge. First
// everything that a user can do to the control in the middle, as long as there is a window.
void DoEverything(const std::unique_ptr<OffscreenWindow>& window) {
    for (int step = 0; step < 7 && window && window->IsOpen(); ++step) {
        OffscreenView& view = *window->view;
        if (step == 0) view.MoveMouse({25, 25});
        if (step == 1) view.PressMouse();
        if (step == 2) view.ReleaseMouse();
        if (step == 3) view.PressMouse(kMouseLeft, true);
        if (step == 4) static_cast<void>(view.TurnWheel(1));
        if (step == 5) static_cast<void>(view.PressKey('A'));
        if (step == 6) view.Tick();
    }
}

struct Scene {
    Scene() {
        CControlGroup* group = window->AttachControlGroup(std::make_unique<CControlGroup>());
        control = group->Add<TestControl>(log, 1, CRect(20, 20, 10, 10));
        window->GetRootControlGroup()->Add<TestControl>(log, 2, CRect(0, 0, 10, 10));
        window->Show();
        control->GrabFocus();
    }
    Log log;
    std::unique_ptr<OffscreenWindow> window = std::make_unique<OffscreenWindow>();
    TestControl* control = nullptr;
};

// In every handler, with the focus and the mouse held and the control modal.
template <typename Destroy>
void TryInEveryHandler(const Destroy& destroy) {
    for (const std::string fatal : {"move", "down", "up", "double", "wheel up", "timer",
                                    "took focus", "lost focus", "key 65"}) {
        SCOPED_TRACE(fatal);
        Scene scene;
        bool done = false;
        scene.control->act = [&](TestControl& self, const std::string& event) {
            if (event == "took focus") self.SetSuper(true);
            if (event == "down") self.StartTracking(true);
            if (event == fatal && !done) {
                done = true;
                destroy(scene, self);
                // What a handler does after: none of it may reach into what is gone.
                self.SendClicked();
                self.SetValueAndRedraw(self.GetValue() + 1.0f);
                self.StartTracking(true);
                self.GrabFocus();
                self.SetSuper(true);
                self.SetSuper(false);
                self.FinishTracking();
                self.DrawToBuffer();
            }
            return true;
        };
        if (fatal == "took focus" || fatal == "lost focus") {
            scene.window->GetControlByID(2)->GrabFocus();
            if (scene.window && scene.window->GetControlByID(1)) scene.control->GrabFocus();
        }
        DoEverything(scene.window);
        EXPECT_TRUE(done);
    }
}

TEST(Lifetime, ControlsMayDestroyThemselves) {
    TryInEveryHandler([](Scene& scene, TestControl& self) { scene.window->DestroyControl(&self); });
}

TEST(Lifetime, ControlsMayDestroyWhatTheyAreIn) {
    TryInEveryHandler([](Scene& scene, TestControl& self) {
        scene.window->DestroyControlGroup(self.GetControlGroup());
    });
    TryInEveryHandler([](Scene& scene, TestControl&) { scene.window->Close(); });
    TryInEveryHandler([](Scene& scene, TestControl&) { scene.window.reset(); });
}

}  // namespace
}  // namespace norava
