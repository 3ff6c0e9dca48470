#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "files/scratch_folder.h"
#include "gui/offscreen_window.h"
#include "gui/targa.h"
#include "gui/window_port_standalone.h"
#include "pictures/picture_packer.h"

namespace norava {
namespace {

using test::Log;
using test::OffscreenWindow;
using test::TestControl;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(WindowPort, OpensOnlyWhenItCan) {
    OffscreenWindow window(CSize(0, 0));
    EXPECT_FALSE(window.Open()) << "without a size";
    EXPECT_EQ(window.GetGraphicBuffer(), nullptr);
    window.SetSize(40, 30);
    ASSERT_TRUE(window.Open());
    EXPECT_FALSE(window.Open()) << "open already";
    OffscreenWindow inner;
    EXPECT_TRUE(inner.Open(&window));
    OffscreenWindow closed;
    EXPECT_FALSE(inner.Open(&closed));
    window.Close();
    window.Close();
    EXPECT_FALSE(window.IsOpen());
    EXPECT_TRUE(window.Open());

    CWindowPort noSystem;
    noSystem.SetSize(10, 10);
    noSystem.SetViewFactory([](PlatformEvents&, void*, CSize, int) { return nullptr; });
    EXPECT_FALSE(noSystem.Open());
    EXPECT_FALSE(noSystem.IsOpen());
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

struct RoutingTest : testing::Test {
    RoutingTest() {
        second = window.AttachControlGroup(std::make_unique<CControlGroup>());
        second->SetID(7);
        a = window.GetRootControlGroup()->Add<TestControl>(log, 1, CRect(0, 0, 20, 20));
        b = second->Add<TestControl>(log, 2, CRect(10, 10, 20, 20));
        b->wantsKeys = true;
    }
    Log TakeLog() { return std::exchange(log, {}); }

    Log log;
    OffscreenWindow window;
    OffscreenView& view = window.Show();
    CControlGroup* second = nullptr;
    TestControl* a = nullptr;
    TestControl* b = nullptr;
};

TEST_F(RoutingTest, TheFirstGroupThatUsesTheMouseEndsTheWalk) {
    view.MoveMouse({15, 15});
    TakeLog();
    view.PressMouse();
    EXPECT_THAT(TakeLog(), ElementsAre("down 1"));
    a->act = [](TestControl&, const std::string&) { return false; };
    view.PressMouse();
    EXPECT_TRUE(view.TurnWheel(-1));
    EXPECT_THAT(TakeLog(), ElementsAre("down 1", "down 2", "wheel down 1", "wheel down 2"));
    second->Disable(true);
    EXPECT_FALSE(view.TurnWheel(1));
    EXPECT_THAT(TakeLog(), ElementsAre("wheel up 1"));
    window.DisableControlGroup(7, false);
    EXPECT_FALSE(second->IsDisabled());
    EXPECT_EQ(window.GetControlGroupByNum(1), second);
    EXPECT_EQ(window.GetControlGroupByNum(2), nullptr);
    EXPECT_EQ(window.GetControlGroupByNum(-1), nullptr);
}

TEST_F(RoutingTest, AnUnusedDoubleClickIsASecondClick) {
    view.MoveMouse({5, 5});
    TakeLog();
    view.PressMouse(kMouseLeft, true);
    EXPECT_THAT(TakeLog(), ElementsAre("double 1"));
    a->act = [](TestControl&, const std::string& event) { return event != "double"; };
    view.PressMouse(kMouseLeft, true);
    EXPECT_THAT(TakeLog(), ElementsAre("double 1", "down 1"));
}

TEST_F(RoutingTest, KeysGoToEveryGroupOrToTheSuperGroup) {
    a->GrabFocus();
    EXPECT_FALSE(view.HasKeyboard()) << "what takes no keys leaves them to the host";
    view.MoveMouse({25, 25});
    b->GrabFocus();
    view.Tick();
    EXPECT_TRUE(view.HasKeyboard());
    TakeLog();
    EXPECT_TRUE(view.PressKey(kKeyUp));
    EXPECT_THAT(TakeLog(), ElementsAre("key " + std::to_string(kKeyUp) + " 2", "key up 2"));
    a->SetSuper(true);
    view.PressKey('q');
    EXPECT_THAT(TakeLog(), ElementsAre("key 113 1", "key up 1"));
    EXPECT_FALSE(view.HasKeyboard());
    a->SetSuper(false);
    b->act = [](TestControl&, const std::string&) { return false; };
    EXPECT_FALSE(view.PressKey('q')) << "the host may have it";
}

TEST_F(RoutingTest, TrackingKeepsTheMouse) {
    b->StartTracking(true);
    window.StartTracking(false);
    EXPECT_TRUE(window.GetTrackingOption()) << "the first option stays";
    EXPECT_TRUE(view.IsPointerHidden());
    TakeLog();
    view.MoveMouse({300, -20});
    EXPECT_THAT(TakeLog(), ElementsAre("move 2"));
    EXPECT_EQ(b->GetMouseDelta(), CSize(301, -19));
    EXPECT_EQ(b->GetMousePos(), CPoint(-1, -1)) << "a hidden pointer stays where it was";
    view.Tick();
    view.PressMouse(kMouseRight);
    EXPECT_TRUE(window.IsMouseButtonDown(kMouseRight));
    EXPECT_FALSE(window.IsMouseButtonDown(kMouseLeft));
    a->FinishTracking();
    EXPECT_TRUE(b->IsTracking()) << "nobody ends the tracking of another";
    b->FinishTracking();
    EXPECT_FALSE(window.IsTracking());
    EXPECT_FALSE(view.IsTracking());

    b->StartTracking(false);
    a->StartTracking(false);
    EXPECT_FALSE(b->IsTracking());
    EXPECT_TRUE(a->IsTracking());
    view.MoveMouse({25, 25});
    a->FinishTracking();
    TakeLog();
    view.MoveMouse({26, 26});
    EXPECT_THAT(TakeLog(), ElementsAre("move 2"));

    window.Close();
    b->StartTracking(true);
    EXPECT_FALSE(window.IsTracking()) << "a closed window has no mouse";
}

TEST_F(RoutingTest, TheTimerFollowsTheMouse) {
    struct Elsewhere : OffscreenView {
        using OffscreenView::OffscreenView;
        std::optional<CPoint> GetMouseLocation() override { return CPoint(77, 66); }
    };
    window.Close();
    window.SetViewFactory([this](PlatformEvents& events, void*, CSize size, int scale) {
        auto made = std::make_unique<Elsewhere>(events, size, scale);
        window.view = made.get();
        return made;
    });
    OffscreenView& other = window.Show();
    other.MoveMouse({25, 25});
    other.Tick();
    EXPECT_EQ(window.GetMousePos(), CPoint(77, 66));
    b->StartTracking(false);
    other.MoveMouse({25, 25});
    other.Tick();
    EXPECT_EQ(window.GetMousePos(), CPoint(25, 25));
}

TEST(WindowPortPictures, ComeFromTheFolderOrTheModule) {
    const auto pack = [](int scale) {
        return PackPicture({{3, 2}, scale, true, 0},
                           std::vector<uint32_t>(static_cast<size_t>(6 * scale * scale), 77u));
    };
    const std::vector<uint8_t> once = pack(1), twice = pack(2), thrice = pack(3);
    const BuiltInPicture set[] = {{"knob.tga", {once, twice, thrice}}, {"broken.tga", {}}};
    const test::ScratchFolder folder;
    test::Targa wide;
    wide.width = 9;
    folder.Write("fader.tga", wide.Text());
    {
        CWindowPort window;
        window.SetBuiltInPictures(set);
        window.SetImageLibraryDir((folder.Path() + "/").c_str());
        EXPECT_EQ(window.GetImageLibraryDir(), folder.Path() + "/");
        window.SetImageLibraryDir(folder.Path().c_str());
        EXPECT_EQ(window.GetImageLibraryDir(), folder.Path() + "/");
        CImage* fader = window.ImportImageFromFile("fader.tga", 9, "fader");
        ASSERT_NE(fader, nullptr);
        EXPECT_EQ(window.GetImageByID(9), fader);
        EXPECT_EQ(window.GetImageByName("fader"), fader);
        EXPECT_EQ(window.ImportImageFromFile("knob.tga", 1, nullptr), nullptr)
            << "a folder that exists must be complete";

        window.SetImageLibraryDir(folder.Path("Graphics").c_str());
        CImage* knob = window.ImportImageFromFile("knob.tga", 1, nullptr);
        ASSERT_NE(knob, nullptr);
        EXPECT_EQ(window.ImportImageFromFile("knob.tga", 2, nullptr), knob);
        EXPECT_EQ(window.ImportImageFromFile("fader.tga", 2, nullptr), nullptr);
        EXPECT_EQ(window.ImportImageFromFile("broken.tga", 2, nullptr), nullptr);
        EXPECT_EQ(window.ImportImageFromFile("", 2, nullptr), nullptr);
        EXPECT_EQ(window.ImportImageFromFile(nullptr, 2, nullptr), nullptr);

        window.SetImageLibraryDir(std::string(1023, 'x').c_str());
        EXPECT_EQ(window.ImportImageFromFile("knob.tga", 2, nullptr), nullptr) << "never cut";
        window.SetImageLibraryDir(nullptr);
        EXPECT_NE(window.ImportImageFromFile(folder.Path("fader.tga").c_str(), 3, nullptr),
                  nullptr);
        const CWindowPort second;
        EXPECT_EQ(second.GetImageByID(9), fader) << "shared by all windows";

        CWindowPort large(2);
        large.SetBuiltInPictures(set);
        large.SetImageLibraryDir(folder.Path("Graphics").c_str());
        CImage* largeKnob = large.ImportImageFromFile("knob.tga", 1, nullptr);
        ASSERT_NE(largeKnob, nullptr);
        EXPECT_EQ(largeKnob->GetSclFactor(), 2) << "drawn for this scale, not magnified";
        EXPECT_EQ(largeKnob->GetSize(), knob->GetSize());
        EXPECT_EQ(large.GetImageByID(1), largeKnob);
        EXPECT_EQ(window.GetImageByID(1), knob);

        // A user's folder may hold some pictures for a higher scale.
        wide.width = 18, wide.height = 4;
        folder.Write("fader@2x.tga", wide.Text());
        large.SetImageLibraryDir(folder.Path().c_str());
        const CImage* largeFader = large.ImportImageFromFile("fader.tga", 9, nullptr);
        ASSERT_NE(largeFader, nullptr);
        EXPECT_EQ(largeFader->GetSclFactor(), 2);
        EXPECT_EQ(largeFader->GetSize(), CSize(9, 2));
    }
    EXPECT_EQ(image_bank::FindByID(9), nullptr) << "freed with the last";
}

TEST(WindowPortStandalone, HasAWindowOfItsOwn) {
    CWindowPortStandalone window;
    OffscreenView* view = nullptr;
    bool hadParent = true;
    window.SetViewFactory([&](PlatformEvents& events, void* parent, CSize size, int scale) {
        hadParent = parent != nullptr;
        auto made = std::make_unique<OffscreenView>(events, size, scale);
        view = made.get();
        return made;
    });
    window.SetSize(CSize(-5, 0));
    EXPECT_EQ(window.GetSize(), CSize(1, 1));
    int parent = 0;
    ASSERT_TRUE(window.Open(&parent));
    EXPECT_FALSE(hadParent);
    window.SetSize(30, 20);
    EXPECT_EQ(view->GetStoredSize(), CSize(30, 20));
    view->GetEvents().CloseRequested();
    EXPECT_FALSE(window.IsOpen());
}

}  // namespace
}  // namespace norava
