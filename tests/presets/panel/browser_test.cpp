#include <gtest/gtest.h>

#include "gui/control_display.h"
#include "gui/control_list.h"
#include "gui/control_text_field.h"
#include "gui/offscreen_window.h"
#include "presets/panel/preset_list_about_box.h"
#include "presets/panel/preset_list_editor.h"
#include "presets/program_folder.h"

namespace norava {
namespace {

using test::Block;
using test::LibrarySynth;
using test::NameOf;
using test::ProgramFolder;

// A browser over a window of the panel's size, with a library of its own.
class BrowserTest : public testing::Test {
  protected:
    void SetUp() override {
        instance = std::make_unique<LibrarySynth>(folder.Place());
        auto made = std::make_unique<CPresetListEditor>(&instance->list);
        browser = made.get();
        window.AttachControlGroup(std::move(made));
        browser->CreateControls(window.GetSize());
        view = &window.Show();
        browser->Open();
    }

    template <typename Control>
    Control* Find(int number) {
        for (const auto& control : browser->GetControls())
            if (auto* const found = dynamic_cast<Control*>(control.get()))
                if (number-- == 0) return found;
        return nullptr;
    }
    CControlList& Categories() { return *Find<CControlList>(0); }
    CControlList& Programs() { return *Find<CControlList>(1); }
    std::string Playing() { return NameOf(instance->synth); }
    bool IsOpen() { return !browser->IsDisabled(); }
    void Type(const std::string& text) {
        for (const char c : text)
            view->PressKey(static_cast<unsigned char>(c));
    }
    void ClickRow(const CControlList& list, int row) {
        view->Click(list.GetItemRect(row).GetCenter());
    }
    void ClickTool(int x) { view->Click({177 + x, 47}); }

    const ProgramFolder folder{"Bass/Deep.norava", "Bass/Round.norava", "Pads/Warm.norava",
                               "Pads/Wide.norava", "Pads/Wood.norava"};
    test::OffscreenWindow window{CSize(855, 532)};
    std::unique_ptr<LibrarySynth> instance;
    CPresetListEditor* browser = nullptr;
    OffscreenView* view = nullptr;
};

TEST_F(BrowserTest, ListsTheLibraryAndLoadsWhatIsClickedAtOnce) {
    folder.Write("Bass/Added.norava", Block(0.9f));
    EXPECT_TRUE(test::Eventually([&] {
        view->Tick();
        return Programs().GetNumItems() == 3;
    })) << "what others save shows by itself";
    EXPECT_EQ(Programs().GetSelectedItemID(), 1) << "the program that sounds stays selected";
    EXPECT_STREQ(Programs().GetItemText(2), "3. Round");
    ClickRow(Programs(), 2);
    EXPECT_EQ(Playing(), "Round");
    ClickRow(Categories(), 1);
    EXPECT_EQ(Playing(), "Warm");
    instance->synth.SetParamValue(5, 0.77f);
    ClickRow(Categories(), 1);
    EXPECT_EQ(instance->synth.GetParamValue(5), 0.77f) << "the same category loads nothing";
    instance->list.ResetProgram();
    browser->UpdateLists();
    EXPECT_STREQ(Find<CControlDisplay>(2)->GetText(), "<noname>")
        << "the name is that of what sounds";
    ClickRow(Programs(), 0);
    EXPECT_EQ(Playing(), "Warm") << "the selected one does not sound any more";
    folder.Write("Pads/Wide.norava", "no program at all");
    ClickRow(Programs(), 1);
    EXPECT_EQ(Playing(), "Warm");
    EXPECT_STREQ(Find<CControlDisplay>(2)->GetText(), "No program of this instrument: Wide");
}

TEST_F(BrowserTest, KeysAuditionKeepAndGoBack) {
    instance->synth.SetParamValue(5, 0.77f);
    browser->Close();
    browser->Open();
    view->PressKey(kKeyDown);
    EXPECT_EQ(Playing(), "Round");
    view->PressKey(kKeyRight);
    EXPECT_EQ(Playing(), "Warm");
    view->PressKey(kKeyEscape);
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(Playing(), "Deep");
    EXPECT_EQ(instance->synth.GetParamValue(5), 0.77f) << "edits from before come back";

    browser->Open();
    view->PressKey(kKeyDown);
    view->PressKey(kKeyEnter);
    EXPECT_FALSE(IsOpen());
    EXPECT_EQ(Playing(), "Round");
}

TEST_F(BrowserTest, SearchesAllCategories) {
    Type("WO");
    ASSERT_EQ(Programs().GetNumItems(), 1);
    EXPECT_STREQ(Programs().GetItemText(0), "Wood  -  Pads");
    ClickRow(Programs(), 0);
    EXPECT_EQ(Playing(), "Wood");
    view->PressKey(kKeyBackspace);
    EXPECT_EQ(Programs().GetNumItems(), 3);
    view->PressKey(kKeyUp);
    EXPECT_EQ(Playing(), "Wide");
    Type("zz");
    EXPECT_EQ(Programs().GetNumItems(), 0);
    view->PressKey(kKeyDown);
    EXPECT_EQ(Playing(), "Wide");
    view->PressKey(kKeyEscape);
    EXPECT_TRUE(IsOpen()) << "the first one ends the search";
    EXPECT_STREQ(Programs().GetItemText(0), "1. Warm");
    Type("wa");
    view->SetModifiers({.control = true});
    EXPECT_FALSE(view->PressKey('s')) << "the host's own";
    view->SetModifiers({});
    ClickRow(Programs(), 0);
    EXPECT_EQ(Playing(), "Warm") << "the first of the category that sounds already";
}

// Where there is nothing to load what sounds goes on, and can be saved there.
TEST_F(BrowserTest, EntersAnEmptyCategory) {
    std::filesystem::create_directory(folder.Path("New"));
    instance->list.CreateCatList();
    instance->list.SetCurrentCat(0);
    browser->UpdateLists();
    instance->synth.SetParamValue(5, 0.77f);
    view->PressKey(kKeyRight);
    EXPECT_EQ(Categories().GetSelectedItemID(), 1);
    EXPECT_EQ(Programs().GetNumItems(), 0);
    EXPECT_EQ(instance->synth.GetParamValue(5), 0.77f);
    view->PressKey(kKeyRight);
    EXPECT_EQ(Playing(), "Warm");
}

TEST_F(BrowserTest, ClosesWhereNothingElseIsMeant) {
    const auto doubleClick = [&](CPoint at) {
        view->Click(at);
        view->PressMouse(kMouseLeft, true);
        view->ReleaseMouse();
    };
    doubleClick(Programs().GetItemRect(9).GetCenter());
    EXPECT_TRUE(IsOpen()) << "a list where it is empty";
    doubleClick(Programs().GetItemRect(1).GetCenter());
    EXPECT_FALSE(IsOpen());
    browser->Open();
    view->MoveMouse({400, 75});
    view->PressMouse(kMouseLeft, true);
    view->ReleaseMouse();
    EXPECT_TRUE(IsOpen()) << "the second press of the click that opened it";
    doubleClick({400, 75});
    EXPECT_FALSE(IsOpen()) << "the empty panel";
    for (const CPoint outside : {CPoint(660, 16), CPoint(50, 300)}) {  // its button; beside it
        browser->Open();
        view->Click(outside);
        EXPECT_FALSE(IsOpen());
    }

    auto made = std::make_unique<CPresetListAboutBox>();
    CPresetListAboutBox* const about = made.get();
    window.AttachControlGroup(std::move(made));
    about->SetPicture(nullptr, CRect(257, 171, 340, 190));
    about->Open();
    EXPECT_EQ(window.GetSuperControlGroup(), about);
    view->Click({5, 5});
    EXPECT_FALSE(window.IsSuper());
}

TEST_F(BrowserTest, SavesUnderANameAndAsksBeforeItReplaces) {
    const std::string old = folder.Read("Bass/Round.norava");
    const auto save = [this](const std::string& name) {
        ClickTool(110);
        Type(name);
        view->PressKey(kKeyEnter);
    };
    save(folder.Path("New"));
    EXPECT_FALSE(std::filesystem::exists(folder.Path("New"))) << "no way into other folders";
    view->PressKey(kKeyEnter);
    EXPECT_EQ(std::string(Find<CControlTextField>(0)->GetText()), folder.Path("New")) << "to mend";
    view->PressKey(kKeyEscape);
    save(" New one ");
    EXPECT_TRUE(std::filesystem::exists(folder.Path("Bass/New one.norava")));
    EXPECT_EQ(Playing(), "New one");
    EXPECT_EQ(Programs().GetSelectedItemID(), 1);
    save("Round");
    view->PressKey(kKeyEnter);
    EXPECT_TRUE(IsOpen());
    EXPECT_EQ(folder.Read("Bass/Round.norava"), old) << "Enter alone does not replace";
    view->PressKey(kKeyEnter);
    view->PressKey(kKeyLeft);
    view->PressKey(kKeyEnter);
    EXPECT_NE(folder.Read("Bass/Round.norava"), old);
}

}  // namespace
}  // namespace norava
