#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "files/scratch_folder.h"
#include "gui/offscreen_window.h"
#include "gui/targa.h"
#include "pictures/picture_packer.h"

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
    CControlGroup* AddGroup() {
        return window.AttachControlGroup(std::make_unique<CControlGroup>());
    }
    Log TakeLog() { return std::exchange(log, {}); }

    Log log;
    OffscreenWindow window;
    OffscreenView& view = window.Show();
    CControlGroup* other = AddGroup();
    TestControl* a = Add(1, CRect(0, 0, 20, 20));
    TestControl* b = Add(2, CRect(10, 10, 20, 20));
    TestControl* c = Add(3, CRect(10, 10, 40, 20), other);
};

TEST(WindowPort, OpensOnlyWhenItCan) {
    OffscreenWindow window(CSize(0, 0));
    EXPECT_FALSE(window.Open()) << "without a size";
    EXPECT_EQ(window.GetGraphicBuffer(), nullptr);
    window.SetSize(40, 30);
    ASSERT_TRUE(window.Open());
    EXPECT_FALSE(window.Open()) << "open already";
    OffscreenWindow inner, closed;
    EXPECT_TRUE(inner.Open(&window));
    EXPECT_FALSE(inner.Open(&closed));
    window.Close();
    window.Close();
    EXPECT_FALSE(window.IsOpen());
    window.SetViewFactory([](PlatformEvents&, void*, CSize, int) { return nullptr; });
    EXPECT_FALSE(window.Open()) << "no system";
    EXPECT_FALSE(window.IsOpen());
}

TEST(WindowPort, ShowsWhatWasPainted) {
    OffscreenWindow window(CSize(40, 30), 2);
    window.paintBackground = [](CGraphicBuffer& buffer, CRect part) {
        CColor green(0, 200, 0);
        buffer.FillRect(part, &green);
    };
    OffscreenView& view = window.Show();
    EXPECT_EQ(view.GetStoredSize(), CSize(80, 60));
    EXPECT_EQ(view.GetPixel(79, 59), 0x00C800u);
    EXPECT_THAT(view.TakePresented(), ElementsAre(CRect(0, 0, 80, 60)));
    window.GetGraphicBuffer()->SetColorAt(0, 29, CColor(255, 0, 0));
    window.UpdateScreen(CRect(0, 28, 2, 100));
    EXPECT_EQ(view.GetPixel(1, 58), 0x0000FEu);
    EXPECT_EQ(view.GetPixel(1, 57), 0x00C800u);
    EXPECT_THAT(view.TakePresented(), ElementsAre(CRect(0, 56, 4, 4)));
    window.UpdateScreen(CRect(100, 100, 5, 5));
    view.Tick(30);
    EXPECT_THAT(view.TakePresented(), IsEmpty()) << "nothing moves, nothing is drawn";
    window.SetSize(20, 10);
    EXPECT_EQ(view.GetStoredSize(), CSize(40, 20));
    EXPECT_EQ(view.GetPixel(39, 19), 0x00C800u);
    EXPECT_EQ(window.GetRootControlGroup()->GetRect(), CRect(0, 0, 20, 10));
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

    CControl loose;
    EXPECT_TRUE(loose.SetValueAndRedraw(1.0f));
    loose.GrabFocus();
    loose.SetSuper(true);
    loose.StartTracking(true);
    loose.DrawToBuffer();
    EXPECT_FALSE(loose.SendClicked());
    EXPECT_EQ(loose.GetMousePos(), CPoint(-1, -1));
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
    a->GrabFocus();
    b->GrabFocus();
    EXPECT_FALSE(view.HasKeyboard()) << "what takes no keys leaves them to the host";
    c->wantsKeys = true;
    c->GrabFocus();
    EXPECT_THAT(TakeLog(), ElementsAre("took focus 1", "lost focus 1", "took focus 2",
                                       "lost focus 2", "took focus 3"));
    EXPECT_TRUE(other->IsFocused());
    view.Tick();
    EXPECT_TRUE(view.HasKeyboard());
    TakeLog();
    EXPECT_TRUE(view.PressKey(kKeyUp));
    EXPECT_THAT(TakeLog(), ElementsAre("key " + std::to_string(kKeyUp) + " 3", "key up 3"));
    a->SetSuper(true);
    view.PressKey('q');
    EXPECT_THAT(TakeLog(), ElementsAre("key 113 1", "key up 1"));
    EXPECT_FALSE(view.HasKeyboard());
    a->SetSuper(false);
    c->act = [](TestControl&, const std::string&) { return false; };
    EXPECT_FALSE(view.PressKey('q')) << "the host may have it";
    TakeLog();
    c->Disable(true);
    view.PressKey('q');
    EXPECT_THAT(TakeLog(), ElementsAre("lost focus 3"));
}

// A handler that answers the loss of the focus by taking it back, or by destroying who asked.
TEST_F(WindowTest, FocusSurvivesStubbornControls) {
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

TEST_F(WindowTest, AModalControlHasTheWindowForItself) {
    b->SetSuper(true);
    EXPECT_EQ(window.GetSuperControl(), b);
    view.Click({5, 5});
    view.Click({45, 15});
    view.PressKey('x');
    EXPECT_THAT(TakeLog(), testing::Each(testing::EndsWith("2")));
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
    EXPECT_EQ(a->drawn + c->drawn, 2);
}

TEST_F(WindowTest, EndingAModalOneRestoresTheOneBefore) {
    a->SetSuper(true);
    other->SetSuper(true);
    EXPECT_EQ(window.GetSuperControlGroup(), other);
    EXPECT_FALSE(other->GetSuperControl()) << "all of a dialog works";
    TestControl* menu = Add(4, CRect(60, 0, 10, 10), other);
    menu->SetSuper(true);
    EXPECT_EQ(window.GetSuperControl(), menu);
    EXPECT_FALSE(window.GetRootControlGroup()->MouseDown()) << "the lower one is shut";
    a->SetSuper(false);
    a->SetSuper(false);
    EXPECT_EQ(window.GetSuperControl(), menu) << "a lower one may end first";
    a->SetSuper(true);
    EXPECT_EQ(window.GetSuperControl(), a);
    a->SetSuper(false);
    menu->SetSuper(false);
    view.Click({45, 15});
    EXPECT_THAT(TakeLog(), Contains("down 3"));
    EXPECT_TRUE(other->IsSuper());
    other->Disable(true);
    EXPECT_FALSE(window.IsSuper()) << "a hidden dialog must not freeze the window";
    other->Disable(false);
    EXPECT_TRUE(window.IsSuper());
    c->SetSuper(true);
    window.DestroyControlGroup(other);
    EXPECT_FALSE(window.IsSuper());
    view.Click({5, 5});
    EXPECT_THAT(TakeLog(), Contains("down 1"));
}

TEST_F(WindowTest, TrackingKeepsTheMouse) {
    view.MoveMouse({-1, -1});
    c->StartTracking(true);
    window.StartTracking(false);
    EXPECT_TRUE(window.GetTrackingOption()) << "the first option stays";
    EXPECT_TRUE(view.IsPointerHidden());
    view.MoveMouse({300, -20});
    EXPECT_THAT(TakeLog(), ElementsAre("move 3"));
    EXPECT_EQ(c->GetMouseDelta(), CSize(301, -19));
    EXPECT_EQ(c->GetMousePos(), CPoint(-1, -1)) << "a hidden pointer stays where it was";
    view.PressMouse(kMouseRight);
    EXPECT_TRUE(window.IsMouseButtonDown(kMouseRight));
    EXPECT_FALSE(window.IsMouseButtonDown(kMouseLeft));
    a->FinishTracking();
    EXPECT_TRUE(c->IsTracking()) << "nobody ends the tracking of another";
    c->FinishTracking();
    EXPECT_FALSE(window.IsTracking());
    EXPECT_FALSE(view.IsTracking());

    c->StartTracking(false);
    a->StartTracking(false);
    EXPECT_FALSE(c->IsTracking());
    EXPECT_TRUE(a->IsTracking());
    window.Close();
    c->StartTracking(true);
    EXPECT_FALSE(window.IsTracking()) << "a closed window has no mouse";
}

// Drags that end because the control goes away must end their gesture too.
TEST_F(WindowTest, EveryWayOutOfADragTellsTheControl) {
    CControlGroup& root = *window.GetRootControlGroup();
    TestControl* dragged = nullptr;
    const std::pair<const char*, std::function<void()>> ways[] = {
        {"disabled", [&] { dragged->Disable(true); }},
        {"taken by the system", [&] { view.GetEvents().MouseTakenAway(); }},
        {"group disabled", [&] { root.Disable(true); }},
        {"destroyed", [&] { window.DestroyControl(dragged); }},
        {"closed", [&] { window.Close(); }},
    };
    for (const auto& [how, end] : ways) {
        SCOPED_TRACE(how);
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
        EXPECT_THAT(std::exchange(window.log, {}), ElementsAre("clicked 4", "released 4"));
        EXPECT_FALSE(window.IsTracking());
        EXPECT_EQ(window.GetTrackingControlGroup(), nullptr);
        window.DestroyControl(window.GetControlByID(4));
    }
}

TEST(WindowPortPictures, ComeFromTheFolderOrTheModule) {
    const auto pack = [](int scale) {
        return PackPicture({{3, 2}, scale, true, 0},
                           std::vector<uint32_t>(static_cast<size_t>(6 * scale * scale), 77u));
    };
    const std::vector<uint8_t> once = pack(1), twice = pack(2), thrice = pack(3);
    const BuiltInPicture set[] = {{"knob.tga", {once, twice, thrice}}, {"broken.tga", {}}};
    const test::ScratchFolder folder;
    folder.Write("fader.tga", test::Targa{}.Text());
    CWindowPort window, large(2);
    const auto import = [&](const char* name) {
        return window.ImportImageFromFile(name, 9, "named");
    };
    window.SetBuiltInPictures(set);
    window.SetImageLibraryDir(folder.Path().c_str());
    CImage* fader = import("fader.tga");
    ASSERT_NE(fader, nullptr);
    EXPECT_EQ(window.GetImageByName("named"), fader);
    EXPECT_EQ(large.GetImageByID(9), fader) << "shared by all windows";
    EXPECT_EQ(import("knob.tga"), nullptr) << "a folder that exists must be complete";
    window.SetImageLibraryDir(std::string(1023, 'x').c_str());
    EXPECT_EQ(import("knob.tga"), nullptr) << "never cut";
    window.SetImageLibraryDir(nullptr);
    EXPECT_NE(import(folder.Path("fader.tga").c_str()), nullptr);

    for (CWindowPort* port : {&window, &large}) {
        port->SetBuiltInPictures(set);
        port->SetImageLibraryDir(folder.Path("Graphics/").c_str());
        CImage* knob = port->ImportImageFromFile("knob.tga", 1, nullptr);
        ASSERT_NE(knob, nullptr);
        EXPECT_EQ(knob->GetSclFactor(), port->GetSclFactor()) << "drawn for it, not magnified";
        EXPECT_EQ(knob->GetSize(), CSize(3, 2));
        EXPECT_EQ(port->GetImageByID(1), knob);
    }
    for (const char* missing : {"fader.tga", "broken.tga", "", static_cast<const char*>(nullptr)})
        EXPECT_EQ(import(missing), nullptr);
}

}  // namespace
}  // namespace norava
