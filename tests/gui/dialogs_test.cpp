#include <gtest/gtest.h>

#include <filesystem>

#include "files/scratch_folder.h"
#include "gui/control_button.h"
#include "gui/control_list.h"
#include "gui/control_menu.h"
#include "gui/control_text_field.h"
#include "gui/dialogs/file_dialog.h"
#include "gui/dialogs/message_box.h"
#include "gui/offscreen_window.h"

namespace norava {
namespace {

// A window over which dialogs are asked and answered as a user would.
struct DialogTest : testing::Test {
    DialogTest() {
        for (const char* name : {"b.norava", "A 2.fxp", "notes.txt", ".hidden.norava"})
            files.Write(name, "x");
        std::filesystem::create_directories(files.Path("Zoo/inner"));
    }

    bool Ask(bool save, const std::string& name = {}) {
        return CFileDialog::Ask(window,
                                {.title = "Load Program",
                                 .folder = files.Path(""),
                                 .suggestedName = name,
                                 .typeName = "Norava Program",
                                 .extensions = {"norava", "fxp"},
                                 .save = save},
                                [this](const std::string& path) { chosen = path; });
    }
    template <typename Control>
    Control* Find(int number) {
        CControlGroup* const dialog = window.GetSuperControlGroup();
        if (dialog == nullptr) return nullptr;
        for (const auto& control : dialog->GetControls())
            if (auto* const found = dynamic_cast<Control*>(control.get()))
                if (number-- == 0) return found;
        return nullptr;
    }
    CPoint PlaceOf(const char* button) {
        for (int i = 0; auto* const found = Find<CControlButton>(i); ++i)
            if (std::string(found->GetText()) == button) return found->GetRect().GetCenter();
        ADD_FAILURE() << "no button " << button;
        return {};
    }
    void Press(const char* button) { view->Click(PlaceOf(button)); }
    std::string Rows() {
        std::string rows;
        auto* const list = Find<CControlList>(0);
        for (int i = 0; list != nullptr && i < list->GetNumItems(); ++i)
            rows += std::string(list->GetItemText(i)) + '|';
        return rows;
    }

    test::ScratchFolder files;
    test::OffscreenWindow window{CSize(855, 532)};
    OffscreenView* view = &window.Show();
    std::string chosen = "nothing";
};

TEST_F(DialogTest, ChoosesAFileToLoad) {
    files.Write("A 10.fxp", "x");
    ASSERT_TRUE(Ask(false));
    EXPECT_EQ(Rows(), "Zoo/|A 2.fxp|A 10.fxp|b.norava|");
    auto* const filter = Find<CControlMenu>(0);
    view->Click(filter->GetRect().GetCenter());
    view->Click(filter->GetItemRect(1).GetCenter());
    EXPECT_EQ(Rows(), "Zoo/|A 2.fxp|A 10.fxp|b.norava|notes.txt|");
    test::Type(*view, "n");
    view->PressKey(kKeyEnter);
    EXPECT_EQ(chosen, files.Path("notes.txt"));
    EXPECT_EQ(window.GetControlGroups().size(), 1u) << "the dialog is gone";

    ASSERT_TRUE(Ask(false, "A 2"));
    EXPECT_EQ(Find<CControlList>(0)->GetSelectedItemID(), 1) << "what sounds now";
    Press("Load");
    EXPECT_EQ(chosen, files.Path("A 2.fxp"));
    ASSERT_TRUE(Ask(false));
    view->Click(Find<CControlTextField>(1)->GetRect().GetCenter());
    test::Type(*view, "b");
    view->PressKey(kKeyEnter);
    EXPECT_EQ(chosen, files.Path("b.norava"));
}

TEST_F(DialogTest, GoesThroughFolders) {
    ASSERT_TRUE(Ask(false));
    view->PressKey(kKeyDown);
    view->PressKey(kKeyEnter);
    EXPECT_EQ(Rows(), "inner/|");
    Press("Up");
    EXPECT_EQ(Find<CControlList>(0)->GetSelectedItemID(), 0) << "where one comes from";
    auto* const path = Find<CControlTextField>(0);
    view->Click(path->GetRect().GetCenter());
    path->SetText(files.Path("notes").c_str());
    view->PressKey(kKeyEnter);
    EXPECT_TRUE(window.IsSuper()) << "no such file";
    view->PressKey(kKeyEscape);
    EXPECT_FALSE(window.IsSuper());
    EXPECT_EQ(chosen, "nothing");
}

TEST_F(DialogTest, SavesAndAsksBeforeItReplaces) {
    ASSERT_TRUE(Ask(true, "b"));
    view->PressKey(kKeyEnter);
    EXPECT_TRUE(view->HasKeyboard()) << "a box without a field too";
    view->PressKey(kKeyEnter);
    EXPECT_EQ(chosen, "nothing") << "no file is lost by two Enters";
    EXPECT_TRUE(Find<CControlTextField>(1)->IsFocused()) << "where the user was";
    Press("Save");
    Press("Replace");
    EXPECT_EQ(chosen, files.Path("b.norava"));

    ASSERT_TRUE(Ask(true));
    view->Click(Find<CControlTextField>(0)->GetRect().GetCenter());
    test::Type(*view, "no folder");
    view->PressKey(kKeyEnter);
    EXPECT_TRUE(window.IsSuper()) << "the folder's line names no file";
    Press("New Folder");
    test::Type(*view, "Made");
    view->PressKey(kKeyEnter);
    view->Click(Find<CControlTextField>(1)->GetRect().GetCenter());
    test::Type(*view, "fresh");
    view->PressKey(kKeyEnter);
    EXPECT_EQ(chosen, files.Path("Made/fresh.norava"));
    EXPECT_TRUE(std::filesystem::is_directory(files.Path("Made")));
}

TEST_F(DialogTest, AHeldButtonActsOnlyWhenItIsLetGo) {
    for (const bool closes : {false, true}) {
        ASSERT_TRUE(Ask(true, "fresh"));
        view->MoveMouse(PlaceOf("Save"));
        view->PressMouse();
        EXPECT_TRUE(view->HasKeyboard()) << "nobody else gets the Escape";
        closes ? window.Close() : static_cast<void>(view->PressKey(kKeyEscape));
        EXPECT_FALSE(window.IsSuper());
        EXPECT_EQ(chosen, "nothing");
    }
}

TEST_F(DialogTest, LongWordsAreCutBetweenCharacters) {
    // As the letters show without their accents.
    const auto shown = [this](const std::string& letters) {
        std::string word = "a";
        for (int i = 0; i < 100; ++i)
            word += letters;
        CMessageBox::Tell(window, "Load Program", word);
        std::vector<uint32_t> pixels = view->GetPixels();
        view->PressKey(kKeyEscape);
        return pixels;
    };
    EXPECT_EQ(shown("é"), shown("e"));
}

}  // namespace
}  // namespace norava
