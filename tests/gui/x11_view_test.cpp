#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>

#include "gui/offscreen_window.h"
#include "gui/x11_server.h"

// The system's own view. That it outlives its host's window and the server, the module's test of
// the panel sees.
namespace norava::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

constexpr CSize kSize(200, 120);
constexpr CPoint kPlace(100, 80);  // of the host's window on the screen
constexpr CRect kKnob(20, 20, 60, 60);
constexpr CPoint kInKnob(40, 40);

// A window in the system's own view, with what happens to it written down.
class HostedWindow : public CWindowPort {
  public:
    explicit HostedWindow(int scale = 1) : CWindowPort(scale) {
        SetSize(kSize);
        knob = GetRootControlGroup()->Add<TestControl>(log, 1, kKnob);
        knob->act = [this](TestControl& control, const std::string& event) {
            if (event == "down" && hidesPointer) control.StartTracking(true);
            if (event == "up" && control.IsTracking()) control.FinishTracking();
            if (event == "move") moved.Shift(control.GetMouseDelta());
            return event != "key 113";  // 'q' is the host's
        };
    }
    ~HostedWindow() override { Close(); }

    bool DragEntered(const char* path) override { return Note("entered ", path); }
    bool DropFile(const char* path) override { return Note("dropped ", path); }

    bool OpenIn(xcb_window_t parent) { return Open(reinterpret_cast<void*>(uintptr_t{parent})); }
    // Runs events as a host's idle call does, until something is so or two seconds have gone.
    bool Until(const std::function<bool()>& condition) {
        for (int i = 0; i < 400 && !condition(); ++i) {
            RunEvents();
            usleep(5000);
        }
        return condition();
    }
    bool UntilLogged(const std::string& entry) {
        return Until([&] { return Count(log, entry) > 0; });
    }
    [[nodiscard]] xcb_window_t Window() const {
        return static_cast<xcb_window_t>(reinterpret_cast<uintptr_t>(GetView()->GetNativeHandle()));
    }

    Log log;
    TestControl* knob;
    bool hidesPointer = false;
    CPoint moved;

  private:
    bool Note(const char* what, const char* path) {
        log.push_back(std::string(what) + path);
        return true;
    }
};

class X11View : public ::testing::Test {
  protected:
    void SetUp() override { Start(); }

    void Start(const std::string& options = {}) {
        desktop.reset();
        server = std::make_unique<Server>(options);
        if (!server->IsRunning()) GTEST_SKIP() << "Xvfb is not installed: no display to try on";
        desktop = std::make_unique<Desktop>();
        parent = desktop->MakeWindow({kPlace, kSize}, XCB_EVENT_MASK_KEY_PRESS);
    }
    // Until the screen shows exactly what was painted.
    bool UntilShown(HostedWindow& window) {
        return window.Until([&] {
            std::vector<uint32_t> painted;
            for (int y = 0; y < kSize.cy; ++y)
                for (int x = 0; x < kSize.cx; ++x)
                    painted.push_back(window.GetGraphicBuffer()->GetColorAt(x, y).GetWord());
            return desktop->Picture({kPlace, kSize}) == painted;
        });
    }
    // Logical pixels of the window.
    void PointAt(CPoint place, int scale = 1) {
        desktop->MoveMouse({kPlace.x + place.x * scale, kPlace.y + place.y * scale});
    }

    std::unique_ptr<Server> server;
    std::unique_ptr<Desktop> desktop;
    xcb_window_t parent = 0;
};

TEST_F(X11View, ShowsThePixelsAndShowsThemAgain) {
    // Shared memory, then requests only.
    for (const char* options : {"", "-extension MIT-SHM"}) {
        Start(options);
        HostedWindow window;
        ASSERT_TRUE(window.OpenIn(parent) && UntilShown(window)) << options;
        // Something comes between, paints over it and goes: nothing keeps its picture for us.
        const xcb_window_t cover = desktop->MakeWindow({130, 90, 50, 50});
        window.knob->SetValueAndRedraw(1.0f);
        window.UntilLogged("timer 1");
        xcb_destroy_window(desktop->raw, cover);
        EXPECT_TRUE(UntilShown(window)) << options;
    }
}

TEST_F(X11View, PassesOnWhatTheMouseDoes) {
    HostedWindow window(2);
    ASSERT_TRUE(window.OpenIn(parent));
    PointAt({30, 30}, 2);
    ASSERT_TRUE(window.UntilLogged("move 1"));
    EXPECT_EQ(window.GetMousePos(), CPoint(30, 30));
    desktop->Press();
    ASSERT_TRUE(window.UntilLogged("down 1"));
    desktop->MoveMouse({2, 3});  // a drag that leaves the window
    desktop->Release();
    ASSERT_TRUE(window.Until([&] { return !window.IsMouseButtonDown(kMouseLeft); }));
    EXPECT_LT(window.GetMousePos().x, 0);
    PointAt({30, 30}, 2);
    window.log.clear();
    desktop->Click(3);
    ASSERT_TRUE(window.UntilLogged("up 1"));
    for (const auto button : std::to_array<uint8_t>({1, 1, 1, 4}))
        desktop->Click(button);
    ASSERT_TRUE(window.UntilLogged("wheel up 1"));
    std::erase(window.log, "timer 1");
    std::erase(window.log, "move 1");
    EXPECT_THAT(window.log, ElementsAre("down 1", "up 1", "down 1", "up 1", "double 1", "up 1",
                                        "down 1", "up 1", "wheel up 1"));
}

TEST_F(X11View, HidesThePointerAndPutsItBack) {
    HostedWindow window(2);
    window.hidesPointer = true;
    ASSERT_TRUE(window.OpenIn(parent));
    PointAt(kInKnob, 2);
    ASSERT_TRUE(window.UntilLogged("move 1"));
    const CPoint before = desktop->WhereIsMouse();
    desktop->Press();
    ASSERT_TRUE(window.UntilLogged("down 1"));
    window.moved = {};
    // Further than the screen is high, in steps that are no whole logical pixels.
    for (int i = 1; i <= 300; ++i) {
        desktop->MoveMouseBy({0, -3});
        if (i % 10 != 0) continue;
        ASSERT_TRUE(window.Until([&] { return window.moved == CPoint(0, -3 * i / 2); })) << i;
    }
    EXPECT_EQ(window.GetMousePos(), kInKnob) << "the mouse has not moved for anybody else";
    desktop->Release();
    EXPECT_TRUE(window.Until([&] { return desktop->WhereIsMouse() == before; }));
    PointAt({50, 50}, 2);
    const CPoint elsewhere = desktop->WhereIsMouse();
    desktop->Press();
    ASSERT_TRUE(window.Until([&] { return Count(window.log, "down 1") == 2; }));
    desktop->MoveMouseBy({0, -30});
    window.Close();
    EXPECT_TRUE(window.Until([&] { return desktop->WhereIsMouse() == elsewhere; }));
}

TEST_F(X11View, TakesKeysOnlyWhileTheyAreWanted) {
    HostedWindow window;
    ASSERT_TRUE(window.OpenIn(parent) && UntilShown(window));
    const auto hostGetsKey = [&] {
        return desktop->Await(XCB_KEY_PRESS, [&] { window.RunEvents(); }) != nullptr;
    };
    const auto untilFocused = [&](xcb_window_t wanted) {
        return window.Until([&] { return desktop->WhoHasFocus() == wanted; });
    };
    xcb_set_input_focus(desktop->raw, XCB_INPUT_FOCUS_PARENT, parent, XCB_CURRENT_TIME);
    PointAt(kInKnob);
    window.UntilLogged("move 1");
    desktop->Type('a');
    ASSERT_TRUE(hostGetsKey()) << "with the mouse over the window";

    window.knob->wantsKeys = true;
    window.knob->GrabFocus();
    desktop->Click();
    ASSERT_TRUE(untilFocused(window.Window()));
    EXPECT_THAT(window.log, Not(Contains("key 97 1")));
    desktop->Type('a');
    desktop->Type(0xFF51);
    EXPECT_TRUE(window.UntilLogged("key " + std::to_string(kKeyLeft) + " 1"));
    EXPECT_THAT(window.log, Contains("key 97 1"));
    desktop->ChangeKey('a', 'z');
    desktop->Type('z');
    EXPECT_TRUE(window.UntilLogged("key 122 1")) << "the user chose another layout";
    desktop->Type('q');
    ASSERT_TRUE(hostGetsKey()) << "a key that nobody used belongs to the host";
    window.knob->wantsKeys = false;
    desktop->Click();
    EXPECT_TRUE(untilFocused(parent));
}

TEST_F(X11View, TakesADroppedFile) {
    HostedWindow window;
    ASSERT_TRUE(window.OpenIn(parent) && UntilShown(window));
    const xcb_window_t source = desktop->MakeWindow({0, 0, 5, 5});
    const xcb_atom_t selection = desktop->Atom("XdndSelection");
    const xcb_atom_t files = desktop->Atom("text/uri-list");
    const std::string list = "#\r\nfile:///tmp/My%20%C3%89toile.norava\r\nfile:///tmp/b\r\n";
    xcb_set_selection_owner(desktop->raw, source, selection, XCB_CURRENT_TIME);
    const auto send = [&](const char* type, const std::vector<uint32_t>& words) {
        desktop->Send(window.Window(), desktop->Atom(type), words);
    };
    send("XdndEnter", {source, 5u << 24, files, 0, 0});
    send("XdndPosition", {source, 0, 0, 7, desktop->Atom("XdndActionCopy")});
    const auto asked = desktop->Await(XCB_SELECTION_REQUEST, [&] { window.RunEvents(); });
    ASSERT_TRUE(asked);
    const auto& request = reinterpret_cast<xcb_selection_request_event_t&>(*asked);
    xcb_change_property(desktop->raw, XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                        files, 8, static_cast<uint32_t>(list.size()), list.data());
    xcb_selection_notify_event_t answer{};
    answer.response_type = XCB_SELECTION_NOTIFY;
    answer.requestor = request.requestor;
    answer.selection = selection;
    answer.target = files;
    answer.property = request.property;
    xcb_send_event(desktop->raw, 0, request.requestor, 0, reinterpret_cast<char*>(&answer));
    desktop->Synchronise();
    EXPECT_TRUE(window.UntilLogged("entered /tmp/My Étoile.norava"));
    send("XdndDrop", {source, 0, 8});
    EXPECT_TRUE(window.UntilLogged("dropped /tmp/My Étoile.norava"));
}

TEST_F(X11View, OpensManyTimesAndTicksThirtyTimesASecond) {
    const auto countDescriptors = [] {
        using Entries = std::filesystem::directory_iterator;
        return std::distance(Entries("/proc/self/fd"), Entries());
    };
    HostedWindow window;
    ASSERT_TRUE(window.OpenIn(parent));
    const auto before = countDescriptors();
    for (int i = 0; i < 100; ++i) {
        window.Close();
        ASSERT_TRUE(window.OpenIn(parent)) << i;
        window.RunEvents();
    }
    EXPECT_EQ(countDescriptors(), before);
    window.log.clear();
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    while (std::chrono::steady_clock::now() < end) {
        window.GetView()->WaitForEvents();
        window.RunEvents();
    }
    EXPECT_LE(Count(window.log, "timer 1"), 32);
    EXPECT_GE(Count(window.log, "timer 1"), 15) << "even on a busy machine";
}

}  // namespace
}  // namespace norava::test
