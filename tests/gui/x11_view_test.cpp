#include <gmock/gmock.h>

#include <filesystem>

#include "gallery/gallery.h"
#include "gui/control_knob.h"
#include "gui/offscreen_window.h"
#include "gui/pixel_target.h"
#include "gui/window_port_standalone.h"
#include "gui/x11_server.h"

namespace norava::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

constexpr CSize kSize(200, 120);
constexpr CPoint kPlace(100, 80);  // of the host's window on the screen
constexpr CRect kKnob(20, 20, 60, 60);
constexpr CPoint kInKnob(40, 40);

// Runs events as a host's idle call does, until something is so or two seconds have gone.
bool RunUntil(CWindowPort& window, const std::function<bool()>& condition) {
    for (int i = 0; i < 400 && !condition(); ++i) {
        window.RunEvents();
        usleep(5000);
    }
    return condition();
}

// A window in the system's own view, with what happens to it written down.
template <typename Base>
class Written : public Base {
  public:
    explicit Written(int scale = 1) : Base(scale) {
        Base::SetSize(kSize);
        knob = Base::GetRootControlGroup()->template Add<TestControl>(log, 1, kKnob);
        knob->act = [this](TestControl& control, const std::string& event) {
            if (event == "down" && hidesPointer) control.StartTracking(true);
            if (event == "up" && control.IsTracking()) control.FinishTracking();
            if (event == "move") moved.Shift(control.GetMouseDelta());
            return event != "key 113";  // 'q' is the host's
        };
    }
    ~Written() override { Base::Close(); }

    bool DragEntered(const char* path) override { return Note("entered ", path); }
    void DragLeft(const char* path) override { Note("left ", path); }
    bool DropFile(const char* path) override { return Note("dropped ", path); }

    bool Until(const std::function<bool()>& condition) { return RunUntil(*this, condition); }
    // Long enough for everything that is under way.
    void Settle() {
        for (int i = 0; i < 20; ++i) {
            Base::RunEvents();
            usleep(5000);
        }
    }
    bool UntilLogged(const std::string& entry) {
        return Until([&] { return Count(log, entry) > 0; });
    }
    [[nodiscard]] xcb_window_t Window() const {
        return static_cast<xcb_window_t>(
            reinterpret_cast<uintptr_t>(Base::GetView()->GetNativeHandle()));
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
using HostedWindow = Written<CWindowPort>;
using OwnWindow = Written<CWindowPortStandalone>;

struct Painted : PixelTarget {
    void ShowPixels(const uint32_t* words, CSize size, CRect) override {
        for (int y = size.cy - 1; y >= 0; --y)
            for (int x = 0; x < size.cx; ++x)
                pixels.push_back(words[y * size.cx + x] & 0xFFFFFFu);
    }
    std::vector<uint32_t> pixels;
};

size_t OpenDescriptors() {
    namespace fs = std::filesystem;
    return static_cast<size_t>(
        std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

class X11View : public ::testing::Test {
  protected:
    void SetUp() override { Start(); }

    void Start(const std::vector<std::string>& options = {}) {
        desktop.reset();
        server = std::make_unique<Server>(options);
        if (!server->IsRunning()) GTEST_SKIP() << "Xvfb is not installed: no display to try on";
        desktop = std::make_unique<Desktop>();
        parent = desktop->MakeWindow({kPlace, kSize}, XCB_EVENT_MASK_KEY_PRESS);
    }
    bool Open(HostedWindow& window) {
        return window.Open(reinterpret_cast<void*>(uintptr_t{parent})) &&
               window.Until([&] { return IsShown(window); });
    }
    // Whether the screen shows exactly what was painted.
    bool IsShown(CWindowPort& window) {
        Painted painted;
        window.GetGraphicBuffer()->Present(&painted, {{0, 0}, kSize}, {0, 0});
        const int scale = window.GetSclFactor();
        const CSize stored(kSize.cx * scale, kSize.cy * scale);
        return desktop->Picture({kPlace, stored}) == painted.pixels;
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
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{}, {"-extension", "MIT-SHM"}}) {
        Start(options);
        HostedWindow window;
        ASSERT_TRUE(Open(window)) << options.size();

        // Something comes between, paints over it and goes: nothing keeps its picture for us.
        const xcb_window_t cover = desktop->MakeWindow({130, 90, 50, 50});
        window.knob->SetValueAndRedraw(1.0f);
        window.Settle();
        xcb_unmap_window(desktop->raw, cover);
        EXPECT_TRUE(window.Until([&] { return IsShown(window); }));
        xcb_unmap_window(desktop->raw, parent);
        desktop->Synchronise();
        xcb_map_window(desktop->raw, parent);
        desktop->Synchronise();
        EXPECT_TRUE(window.Until([&] { return IsShown(window); }));

        // Only what changed is sent: a pixel painted without asking for it stays as it was.
        window.GetGraphicBuffer()->SetColorAt(150, 5, CColor(255, 255, 255));
        window.knob->SetValueAndRedraw(0.5f);
        window.Settle();
        EXPECT_FALSE(IsShown(window));
        window.UpdateScreen(CRect(0, 0, 200, 200));
        EXPECT_TRUE(window.Until([&] { return IsShown(window); }));
    }
}

TEST_F(X11View, PassesOnWhatTheMouseDoes) {
    for (const int scale : {1, 2}) {
        HostedWindow window(scale);
        desktop->MoveMouse({0, 0});
        ASSERT_TRUE(scale == 2 || Open(window));
        if (!window.IsOpen()) {
            ASSERT_TRUE(window.Open(reinterpret_cast<void*>(uintptr_t{parent})));
        }
        PointAt({30, 30}, scale);
        ASSERT_TRUE(window.UntilLogged("move 1"));
        EXPECT_EQ(window.GetMousePos(), CPoint(30, 30));
        desktop->Press();
        ASSERT_TRUE(window.UntilLogged("down 1"));
        PointAt({150, 31}, scale);  // a drag that leaves the control, and then the window
        desktop->MoveMouse({2, 3});
        desktop->Release();
        ASSERT_TRUE(window.Until([&] { return !window.IsMouseButtonDown(kMouseLeft); }));
        EXPECT_LT(window.GetMousePos().x, 0);

        PointAt({30, 30}, scale);
        window.log.clear();
        desktop->Click(3);
        ASSERT_TRUE(window.UntilLogged("up 1"));
        EXPECT_EQ(window.GetMouseButtonID(), kMouseRight);
        desktop->Click();
        desktop->Click();
        desktop->Click();
        desktop->Click(4);
        ASSERT_TRUE(window.UntilLogged("wheel up 1"));
        std::erase_if(window.log, [](const std::string& entry) {
            return entry == "timer 1" || entry == "move 1";
        });
        EXPECT_THAT(window.log, ElementsAre("down 1", "up 1", "down 1", "up 1", "double 1", "up 1",
                                            "down 1", "up 1", "wheel up 1"));
    }
}

TEST_F(X11View, HidesThePointerAndPutsItBack) {
    HostedWindow window(2);
    window.hidesPointer = true;
    ASSERT_TRUE(window.Open(reinterpret_cast<void*>(uintptr_t{parent})));
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
    ASSERT_TRUE(window.UntilLogged("up 1"));
    EXPECT_TRUE(window.Until([&] { return desktop->WhereIsMouse() == before; }));
    window.log.clear();
    desktop->MoveMouseBy({2, 0});
    ASSERT_TRUE(window.UntilLogged("move 1"));
    EXPECT_EQ(window.GetMousePos(), CPoint(kInKnob.x + 1, kInKnob.y));
}

TEST_F(X11View, TakesKeysOnlyWhileTheyAreWanted) {
    HostedWindow window;
    ASSERT_TRUE(Open(window));
    xcb_set_input_focus(desktop->raw, XCB_INPUT_FOCUS_PARENT, parent, XCB_CURRENT_TIME);
    const auto run = [&] { window.RunEvents(); };
    PointAt(kInKnob);
    window.UntilLogged("move 1");
    desktop->Type('a');
    ASSERT_TRUE(desktop->Await(XCB_KEY_PRESS, run)) << "with the mouse over the window";
    EXPECT_THAT(window.log, Not(Contains("key 97 1")));

    window.knob->wantsKeys = true;
    window.knob->GrabFocus();
    desktop->Click();
    ASSERT_TRUE(window.Until([&] { return desktop->WhoHasFocus() == window.Window(); }));
    desktop->Type('a');
    desktop->Type(0xFF51);
    EXPECT_TRUE(window.UntilLogged("key " + std::to_string(kKeyLeft) + " 1"));
    EXPECT_THAT(window.log, Contains("key 97 1"));
    desktop->Type('q');
    const auto passed = desktop->Await(XCB_KEY_PRESS, run);
    ASSERT_TRUE(passed) << "a key that nobody used belongs to the host";
    EXPECT_TRUE(window.UntilLogged("key 113 1"));

    // The host takes the keyboard, and a click in the field takes it again.
    xcb_set_input_focus(desktop->raw, XCB_INPUT_FOCUS_PARENT, parent, XCB_CURRENT_TIME);
    desktop->Synchronise();
    window.RunEvents();
    desktop->Click();
    ASSERT_TRUE(window.Until([&] { return desktop->WhoHasFocus() == window.Window(); }));
    window.knob->wantsKeys = false;
    desktop->Click();
    EXPECT_TRUE(window.Until([&] { return desktop->WhoHasFocus() == parent; }));
}

TEST_F(X11View, TakesADroppedFile) {
    HostedWindow window;
    ASSERT_TRUE(Open(window));
    const xcb_window_t source = desktop->MakeWindow({0, 0, 5, 5});
    const xcb_atom_t selection = desktop->Atom("XdndSelection");
    const xcb_atom_t files = desktop->Atom("text/uri-list");
    const xcb_atom_t copy = desktop->Atom("XdndActionCopy");
    const std::string list = "#\r\nfile:///tmp/My%20%C3%89toile.norava\r\nfile:///tmp/b\r\n";
    xcb_set_selection_owner(desktop->raw, source, selection, XCB_CURRENT_TIME);
    const auto run = [&] { window.RunEvents(); };
    const auto enter = [&](xcb_atom_t type) {
        desktop->Send(window.Window(), desktop->Atom("XdndEnter"), {source, 5u << 24, type, 0, 0});
        desktop->Send(window.Window(), desktop->Atom("XdndPosition"), {source, 0, 0, 7, copy});
    };
    const auto status = [&] {
        const auto event = desktop->Await(XCB_CLIENT_MESSAGE, run);
        return event ? reinterpret_cast<xcb_client_message_event_t&>(*event).data.data32[1] & 1u
                     : 99u;
    };

    enter(desktop->Atom("text/plain"));
    EXPECT_EQ(status(), 0u) << "no file, not wanted";
    desktop->Send(window.Window(), desktop->Atom("XdndLeave"), {source});
    enter(files);
    const auto asked = desktop->Await(XCB_SELECTION_REQUEST, run);
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
    EXPECT_EQ(status(), 1u);
    desktop->Send(window.Window(), desktop->Atom("XdndDrop"), {source, 0, 8});
    EXPECT_TRUE(window.UntilLogged("dropped /tmp/My Étoile.norava"));
    EXPECT_THAT(window.log, Not(Contains("left /tmp/My Étoile.norava")));
}

TEST_F(X11View, OwnWindowHasATitleAndClosesWhenAsked) {
    OwnWindow window;
    window.SetTitle("Panél");
    ASSERT_TRUE(window.Open());
    window.RunEvents();
    const auto title = Own(
        xcb_get_property_reply(desktop->raw,
                               xcb_get_property(desktop->raw, 0, window.Window(),
                                                desktop->Atom("_NET_WM_NAME"), XCB_ATOM_ANY, 0, 64),
                               nullptr));
    EXPECT_EQ(std::string(static_cast<char*>(xcb_get_property_value(title.get())),
                          static_cast<size_t>(xcb_get_property_value_length(title.get()))),
              "Panél");
    desktop->Send(window.Window(), desktop->Atom("WM_PROTOCOLS"),
                  {desktop->Atom("WM_DELETE_WINDOW"), 0});
    window.Run();
    EXPECT_FALSE(window.IsOpen());
    EXPECT_GE(Count(window.log, "timer 1"), 0);
    EXPECT_TRUE(window.Open());
}

TEST_F(X11View, SurvivesTheHostsWindowAndTheServer) {
    // In the middle of a drag with the pointer hidden and of a modal control that wants keys.
    const auto start = [&](HostedWindow& window) {
        window.hidesPointer = true;
        window.knob->wantsKeys = true;
        ASSERT_TRUE(Open(window));
        PointAt(kInKnob);
        desktop->Press();
        ASSERT_TRUE(window.UntilLogged("down 1"));
        window.knob->SetSuper(true);
    };
    {
        HostedWindow window;
        start(window);
        xcb_destroy_window(desktop->raw, parent);
        desktop->Synchronise();
        EXPECT_TRUE(window.Until([&] { return !window.IsOpen(); }));
        EXPECT_GE(Count(window.log, "lost focus 1"), 1);
    }
    desktop->Release();
    parent = desktop->MakeWindow({kPlace, kSize});
    {
        HostedWindow window;
        start(window);
        window.Close();
        EXPECT_TRUE(window.Open(reinterpret_cast<void*>(uintptr_t{parent})));
        // Gone before the window hears of it.
        xcb_destroy_window(desktop->raw, parent);
        desktop->Synchronise();
        window.Close();
        EXPECT_FALSE(window.Open(reinterpret_cast<void*>(uintptr_t{parent}))) << "no such parent";
    }
    desktop->Release();
    parent = desktop->MakeWindow({kPlace, kSize});
    HostedWindow seeing;
    HostedWindow busy;
    start(seeing);
    ASSERT_TRUE(busy.Open(reinterpret_cast<void*>(uintptr_t{parent})));
    server->Kill();
    // One writes to the server that is not there, one finds out by reading.
    busy.UpdateScreen();
    busy.SetSize(100, 50);
    EXPECT_TRUE(seeing.Until([&] { return !seeing.IsOpen(); }));
    EXPECT_TRUE(busy.Until([&] { return !busy.IsOpen(); }));
    EXPECT_FALSE(seeing.Open());
}

TEST_F(X11View, OpensAndClosesManyTimes) {
    HostedWindow window;
    ASSERT_TRUE(Open(window));
    window.Close();
    const size_t before = OpenDescriptors();
    for (int i = 0; i < 100; ++i) {
        ASSERT_TRUE(window.Open(reinterpret_cast<void*>(uintptr_t{parent}))) << i;
        window.RunEvents();
        window.Close();
    }
    EXPECT_EQ(OpenDescriptors(), before);
    EXPECT_TRUE(Open(window)) << "and still shows";
}

TEST_F(X11View, WorksWithRealControls) {
    CGallery gallery(1);
    ASSERT_TRUE(gallery.Open());
    ASSERT_TRUE(RunUntil(gallery, [&] {
        Painted painted;
        gallery.GetGraphicBuffer()->Present(&painted, {{0, 0}, CGallery::kSize}, {0, 0});
        return desktop->Picture({{0, 0}, CGallery::kSize}) == painted.pixels;
    }));
    const auto point = [&](CRect at) { desktop->MoveMouse(at.GetCenter()); };

    const float before = gallery.knob->GetValue();
    point(gallery.knob->GetRect());
    desktop->Press();
    ASSERT_TRUE(RunUntil(gallery, [&] { return gallery.knob->IsTracking(); }));
    desktop->MoveMouseBy({0, before < 0.5f ? -30 : 30});
    EXPECT_TRUE(RunUntil(gallery, [&] { return gallery.knob->GetValue() != before; }));
    desktop->Release();
    EXPECT_TRUE(RunUntil(gallery, [&] { return !gallery.knob->IsTracking(); }));

    CControlMenu& menu = *gallery.menu;
    int wanted = menu.GetNumItems() - 1;
    while (!menu.GetItemByNum(wanted)->CanBeChosen() || wanted == menu.GetSelectedItemID())
        --wanted;
    point(menu.GetRect());
    desktop->Click();
    ASSERT_TRUE(RunUntil(gallery, [&] { return menu.IsListOpen(); }));
    point(menu.GetItemRect(wanted));
    desktop->Click();
    EXPECT_TRUE(RunUntil(gallery, [&] { return menu.GetSelectedItemID() == wanted; }));

    point(gallery.list->GetRect());
    desktop->Click(5);
    EXPECT_TRUE(RunUntil(gallery, [&] { return gallery.list->GetTopItemID() > 0; }));

    // By the window manager, with a list open.
    point(menu.GetRect());
    desktop->Click();
    ASSERT_TRUE(RunUntil(gallery, [&] { return menu.IsListOpen(); }));
    const auto window = static_cast<xcb_window_t>(
        reinterpret_cast<uintptr_t>(gallery.GetView()->GetNativeHandle()));
    desktop->Send(window, desktop->Atom("WM_PROTOCOLS"), {desktop->Atom("WM_DELETE_WINDOW"), 0});
    gallery.Run();
    EXPECT_FALSE(menu.IsListOpen());
}

TEST_F(X11View, TicksThirtyTimesASecond) {
    HostedWindow window;
    ASSERT_TRUE(Open(window));
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
