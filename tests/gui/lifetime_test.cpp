#include <gtest/gtest.h>

#include "gui/offscreen_window.h"

// Handlers that pull the ground from under themselves. The address sanitizer is the judge.
namespace norava {
namespace {

using test::Log;
using test::OffscreenWindow;
using test::TestControl;

// Everything that a user can do to the control in the middle, as long as there is a window.
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

TEST(Lifetime, AGroupMayOutliveItsWindow) {
    Scene scene;
    scene.control->SetSuper(true);
    auto panel = scene.window->DetachControlGroup(scene.control->GetControlGroup());
    EXPECT_FALSE(scene.window->IsSuper());
    scene.window.reset();
    panel->DrawToBuffer();
    EXPECT_FALSE(panel->MouseDown());
    OffscreenWindow next;
    next.AttachControlGroup(std::move(panel));
    next.Show().Click({25, 25});
    EXPECT_EQ(test::Count(scene.log, "down 1"), 1);
}

// A view that handles a queue of events may find its window closed by one of them.
TEST(Lifetime, AViewOutlivesTheEventsItRuns) {
    Scene scene;
    scene.control->act = [&](TestControl&, const std::string& event) {
        if (event == "down") scene.window.reset();
        return true;
    };
    OffscreenView& view = *scene.window->view;
    for (int i = 0; i < 3; ++i)
        view.Post([&view] { view.Click({25, 25}); });
    scene.window->RunEvents();
    EXPECT_EQ(test::Count(scene.log, "down 1"), 1);
}

}  // namespace
}  // namespace norava
