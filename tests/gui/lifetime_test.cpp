#include <gtest/gtest.h>

#include <random>

#include "gui/offscreen_window.h"

// Handlers that pull the ground from under themselves. The address sanitizer is the judge.
namespace norava {
namespace {

using test::Log;
using test::OffscreenWindow;
using test::TestControl;

const std::vector<std::string> kEvents = {"move",  "down",       "up",         "double", "wheel up",
                                          "timer", "took focus", "lost focus", "key 65"};

// Everything that a user can do to the control in the middle.
void DoEverything(OffscreenView& view, const std::function<bool()>& isOpen) {
    const std::vector<std::function<void()>> steps = {[&] {
                                                          view.MoveMouse({25, 25});
                                                      },
                                                      [&] { view.PressMouse(); },
                                                      [&] { view.ReleaseMouse(); },
                                                      [&] { view.PressMouse(kMouseLeft, true); },
                                                      [&] { view.TurnWheel(1); },
                                                      [&] { view.PressKey('A'); },
                                                      [&] { view.Tick(); }};
    for (const auto& step : steps)
        if (isOpen()) step();
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
    for (const std::string& fatal : kEvents) {
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
        if (scene.window && scene.window->IsOpen())
            DoEverything(*scene.window->view,
                         [&] { return scene.window && scene.window->IsOpen(); });
        EXPECT_TRUE(done);
    }
}

TEST(Lifetime, ControlsMayDestroyThemselves) {
    TryInEveryHandler([](Scene& scene, TestControl& self) { scene.window->DestroyControl(&self); });
}

TEST(Lifetime, ControlsMayDestroyTheirGroup) {
    TryInEveryHandler([](Scene& scene, TestControl& self) {
        scene.window->DestroyControlGroup(self.GetControlGroup());
    });
}

TEST(Lifetime, ControlsMayCloseTheirWindow) {
    TryInEveryHandler([](Scene& scene, TestControl&) { scene.window->Close(); });
}

TEST(Lifetime, ControlsMayDeleteTheirWindow) {
    TryInEveryHandler([](Scene& scene, TestControl&) {
        if (scene.window) scene.window.reset();
    });
}

TEST(Lifetime, TheRootGroupStays) {
    OffscreenWindow window;
    CControlGroup* root = window.GetRootControlGroup();
    window.DestroyControlGroup(root);
    EXPECT_EQ(window.DetachControlGroup(root), nullptr);
    EXPECT_EQ(window.GetRootControlGroup(), root);
}

TEST(Lifetime, AGroupMayOutliveItsWindow) {
    Log log;
    std::unique_ptr<CControlGroup> panel;
    {
        OffscreenWindow window;
        CControlGroup* group = window.AttachControlGroup(std::make_unique<CControlGroup>());
        CControl* control = group->Add<TestControl>(log, 1, CRect(0, 0, 10, 10));
        window.Show();
        control->GrabFocus();
        control->SetSuper(true);
        panel = window.DetachControlGroup(group);
        EXPECT_FALSE(window.IsSuper());
        EXPECT_EQ(window.GetFocusControlGroup(), nullptr);
    }
    EXPECT_EQ(panel->GetWindowPort(), nullptr);
    panel->DrawToBuffer();
    EXPECT_FALSE(panel->MouseDown());
    OffscreenWindow next;
    next.AttachControlGroup(std::move(panel));
    next.Show().Click({5, 5});
    EXPECT_EQ(test::Count(log, "down 1"), 1);
}

// A view that handles a queue of events may find its window closed or deleted by one of them.
TEST(Lifetime, AViewOutlivesTheEventsItRuns) {
    for (const bool deletes : {false, true}) {
        Scene scene;
        scene.control->act = [&](TestControl&, const std::string& event) {
            if (event == "down") deletes ? scene.window.reset() : scene.window->Close();
            return true;
        };
        OffscreenView& view = *scene.window->view;
        for (int i = 0; i < 3; ++i)
            view.Post([&view] { view.Click({25, 25}); });
        scene.window->RunEvents();
        EXPECT_EQ(test::Count(scene.log, "down 1"), 1);
        if (!deletes) scene.window->RunEvents();
    }
}

TEST(Lifetime, WindowsOpenAndCloseManyTimes) {
    Scene scene;
    for (int i = 0; i < 200; ++i) {
        OffscreenView& view = scene.window->Show();
        view.MoveMouse({25, 25});
        view.PressMouse();
        if (i % 2) scene.control->StartTracking(true);
        if (i % 3) scene.control->SetSuper(true);
        view.GetEvents().ViewLost();
        EXPECT_FALSE(scene.window->IsOpen());
        EXPECT_FALSE(scene.window->IsSuper());
    }
}

// Users and hosts do everything at any time, and controls of a bad mood answer with anything.
class Storm {
  public:
    explicit Storm(uint32_t seed) : engine(seed) {
        for (int i = 0; i < 3; ++i)
            window.AttachControlGroup(std::make_unique<CControlGroup>())->SetID(i);
    }

    void Rage(int events) {
        for (int i = 0; i < events; ++i) {
            window.Show();
            Event();
            log.clear();
            window.log.clear();
        }
    }

  private:
    int Number(int below) { return static_cast<int>(engine() % static_cast<unsigned>(below)); }
    CControlGroup* AnyGroup() {
        const int count = static_cast<int>(window.GetControlGroups().size());
        return window.GetControlGroupByNum(Number(count));
    }
    CControl* AnyControl() {
        const auto& controls = AnyGroup()->GetControls();
        return controls.empty() ? nullptr : controls[engine() % controls.size()].get();
    }
    void Event() {
        OffscreenView& view = *window.view;
        view.SetModifiers({Number(2) == 0, Number(2) == 0, Number(2) == 0});
        switch (Number(10)) {
            case 0:
                return view.MoveMouse({Number(120) - 10, Number(100) - 10});
            case 1:
                return view.PressMouse(Number(3), Number(4) == 0);
            case 2:
                return view.ReleaseMouse(Number(3));
            case 3:
                return static_cast<void>(view.TurnWheel(static_cast<float>(Number(3) - 1)));
            case 4:
                return static_cast<void>(view.PressKey(static_cast<unsigned>(Number(200))));
            case 5:
                return view.Drag({Number(100), Number(80)}, {Number(100), Number(80)}, 9);
            case 6:
                return view.GetEvents().FocusChanged(Number(2) == 0);
            case 7:
                return Number(5) == 0 ? view.GetEvents().MouseTakenAway() : view.Tick();
            case 8:
                return Number(9) == 0 ? view.GetEvents().ViewLost() : view.Tick();
            default:
                return Act();
        }
    }
    void Act() {
        CControl* control = AnyControl();
        const int kind = Number(16);
        if (kind < 3 || !control) return Populate();
        switch (kind) {
            case 3:
                return window.DestroyControl(control);
            case 4:
                return control->GrabFocus();
            case 5:
                return control->StartTracking(Number(2) == 0);
            case 6:
                return control->FinishTracking();
            case 7:
                return control->SetSuper(true);
            case 8:
                return control->SetSuper(false);
            case 9:
                return control->Disable(Number(3) == 0);
            case 10:
                return static_cast<void>(control->SetValueAndRedraw(static_cast<float>(Number(5))));
            case 11:
                return AnyGroup()->SetSuper(Number(3) == 0);
            case 12:
                return AnyGroup()->Disable(Number(4) == 0);
            case 13:
                return Number(20) == 0 ? window.Close() : window.UpdateScreen();
            case 14:
                return Number(8) == 0 ? window.DestroyControlGroup(AnyGroup()) : Populate();
            default:
                return static_cast<void>(control->SendClicked());
        }
    }
    void Populate() {
        if (window.GetControlGroups().size() < 3)
            window.AttachControlGroup(std::make_unique<CControlGroup>());
        CControlGroup* group = AnyGroup();
        if (group->GetControls().size() > 8) return group->DestroyControl(AnyControl());
        const CRect rect(Number(90), Number(70), Number(50), Number(50));
        auto* control = group->Add<TestControl>(log, Number(20), rect);
        control->act = [this](TestControl&, const std::string&) {
            if (depth < 5 && Number(4) == 0) {
                ++depth;
                Act();
                --depth;
            }
            return Number(2) == 0;
        };
    }

    std::mt19937 engine;
    Log log;
    OffscreenWindow window;
    int depth = 0;
};

TEST(Lifetime, SurvivesEventStorms) {
    for (uint32_t seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(seed);
        Storm(seed).Rage(1500);
    }
}

}  // namespace
}  // namespace norava
