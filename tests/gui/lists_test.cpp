#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "gui/control_list.h"
#include "gui/control_menu.h"
#include "gui/control_text_field.h"
#include "gui/offscreen_window.h"

namespace norava {
namespace {

using test::OffscreenWindow;
using testing::ElementsAre;
using testing::IsEmpty;

struct MenuTest : testing::Test {
    MenuTest() {
        menu->AddCaptionItem("Slot");
        menu->AddTextItem("one");
        menu->AddTextItem("two");
        menu->AddSeparatorItem();
        menu->AddTextItem("three");
        menu->AddTextItem("four")->disabled = true;
    }
    CPoint Middle(int item) { return menu->GetItemRect(item).GetCenter(); }
    void Open() {
        view.Click({menu->GetRect().left + 5, menu->GetRect().top + 5});
        ASSERT_TRUE(menu->IsListOpen());
    }

    OffscreenWindow window{CSize(200, 200)};
    CControlMenu* menu = window.Add<CControlMenu>(1, CRect(20, 30, 40, 13));
    OffscreenView& view = window.Show();
};

TEST_F(MenuTest, AClickOpensAnotherChooses) {
    EXPECT_EQ(menu->GetSelectedItemID(), -1);
    for (int times = 0; times < 2; ++times) {  // a command may be given twice
        Open();
        EXPECT_TRUE(window.IsSuper() && view.HasKeyboard());
        view.Click(Middle(4));
        EXPECT_FALSE(menu->IsListOpen() || view.HasKeyboard());
        EXPECT_STREQ(menu->GetText(), "three");
        EXPECT_THAT(window.TakeLog(), ElementsAre("clicked 1", "changed 1", "released 1"));
    }
    for (const int item : {0, 3, 5}) {
        Open();
        view.Click(Middle(item));
        EXPECT_TRUE(menu->IsListOpen()) << "nothing to choose at " << item;
        view.Click({190, 190});
        EXPECT_THAT(window.TakeLog(), ElementsAre("clicked 1", "released 1"));
    }
    EXPECT_FALSE(window.IsSuper());
}

TEST_F(MenuTest, PressDragReleaseChooses) {
    view.MoveMouse({30, 35});
    view.PressMouse();
    view.MoveMouse({menu->GetListRect().left + 1, Middle(1).y});
    EXPECT_EQ(menu->GetHoveredItem(), 1) << "a row answers over its whole width";
    view.ReleaseMouse();
    EXPECT_THAT(window.TakeValues(), ElementsAre(1.0f));
    view.Drag({30, 35}, {150, 180}, 10);
    EXPECT_FALSE(menu->IsListOpen()) << "let go outside";
    EXPECT_THAT(window.TakeValues(), IsEmpty());
    EXPECT_TRUE(window.open.empty());
}

TEST_F(MenuTest, KeysGoOverWhatCannotBeChosen) {
    menu->SetValue(2);
    Open();
    for (const auto& [key, item] :
         {std::pair{kKeyDown, 4}, {kKeyDown, 4}, {kKeyPageUp, 1}, {kKeyUp, 1}}) {
        view.PressKey(key);
        EXPECT_EQ(menu->GetHoveredItem(), item);
    }
    view.PressKey(kKeyEnter);
    Open();
    EXPECT_FALSE(view.PressKey('q'));
    EXPECT_TRUE(view.PressKey(kKeyEscape));
    EXPECT_FALSE(menu->IsListOpen());
    EXPECT_FALSE(view.PressKey(kKeyEscape)) << "the next one is the host's";
    EXPECT_THAT(window.TakeValues(), ElementsAre(1.0f));
}

TEST_F(MenuTest, EveryItemHasAValueThatSelectsIt) {
    menu->SetValueIsIndex(false);
    menu->DeleteAllItems();
    for (int count = 1; count < 64; ++count) {
        menu->AddTextItem(std::to_string(count).c_str());
        for (int i = 0; i < count; ++i) {
            menu->SetValue(menu->GetItemValue(i));
            ASSERT_EQ(menu->GetSelectedItemID(), i) << "of " << count;
            ASSERT_NEAR(menu->GetValue(), count > 1 ? float(i) / float(count - 1) : 0, 1e-6);
        }
    }
    menu->SetValueIsIndex(true);
    menu->SetValue(3.99f);
    EXPECT_STREQ(menu->GetText(), "4");
    for (const float strange : {std::nanf(""), 1e30f, -7.0f}) {
        menu->SetValue(strange);
        EXPECT_EQ(menu->GetItemByNum(menu->GetSelectedItemID()), nullptr);
        Open();
        view.PressKey(kKeyEscape);
    }
}

TEST_F(MenuTest, ListsStayInTheWindow) {
    const auto listAt = [&](CRect rect) {
        view.PressKey(kKeyEscape);
        menu->SetRect(rect);
        Open();
        return menu->GetListRect();
    };
    EXPECT_EQ(listAt(CRect(20, 30, 40, 13)).GetLeftTop(), CPoint(20, 43)) << "below";
    EXPECT_EQ(listAt(CRect(190, 160, 40, 13)).GetBottom(), 160) << "above";
    EXPECT_EQ(menu->GetListRect().GetRight(), 200) << "moved to the left";
    EXPECT_EQ(listAt(CRect(20, 90, 40, 13)).GetBottom(), 200) << "neither has room: shifted";

    while (menu->GetNumItems() < 30)
        menu->AddTextItem("more");
    menu->SetValue(20);
    const CRect list = listAt(CRect(20, 90, 40, 13));
    EXPECT_EQ(list.top, 0) << "as high as whole rows go";
    EXPECT_EQ(menu->GetTopItemID(), 15) << "the selected one in the middle";
    view.MoveMouse({list.left + 10, 100});
    const int hovered = menu->GetHoveredItem();
    view.TurnWheel(1);
    EXPECT_EQ(menu->GetHoveredItem(), hovered - 3) << "the row under the mouse";
}

struct ListTest : testing::Test {
    ListTest() {
        for (int i = 1; i <= 30; ++i) {
            const std::string name = i % 10 == 0 ? "Écho" : i % 3 == 0 ? "Bell" : "Amber";
            list->AddItem((std::to_string(i) + ". " + name + " " + std::to_string(i)).c_str());
        }
        window.DrawToBuffer();
    }
    OffscreenWindow window{CSize(200, 120)};
    CControlList* list = window.Add<CControlList>(1, CRect(10, 10, 120, 98));  // five rows
    OffscreenView& view = window.Show();
};

TEST_F(ListTest, WheelAndBarScrollWithinTheRows) {
    view.MoveMouse({40, 40});
    // Parts of a notch add up.
    for (const auto& [turn, top] :
         {std::pair{-1.0f, 3}, {-0.25f, 3}, {-0.25f, 4}, {-1e3f, 25}, {NAN, 25}, {1e3f, 0}}) {
        EXPECT_TRUE(view.TurnWheel(turn));
        EXPECT_EQ(list->GetTopItemID(), top) << turn;
    }
    view.Drag({123, 16}, {123, 300});
    EXPECT_EQ(list->GetTopItemID(), 25);
    view.Drag({123, 100}, {190, 0}, 7);
    EXPECT_EQ(list->GetTopItemID(), 0);
    view.Click({123, 100});
    EXPECT_EQ(list->GetTopItemID(), 4) << "a page less a row";
    EXPECT_EQ(list->GetSelectedItemID(), -1);
    EXPECT_TRUE(window.open.empty());

    list->SetTopItemID(12);
    list->DeleteAllItems();
    for (int i = 0; i < 20; ++i)
        list->AddItem("new");
    EXPECT_EQ(list->GetTopItemID(), 12) << "new rows are shown where the old ones were";
}

TEST_F(ListTest, ClicksAndKeysMoveAndFind) {
    EXPECT_FALSE(view.PressKey(kKeyDown)) << "no focus yet";
    view.Click({40, 20});
    EXPECT_THAT(window.TakeLog(), ElementsAre("clicked 1", "changed 1", "released 1"));
    window.refuseValues = true;
    view.Click({40, 40});
    EXPECT_EQ(list->GetSelectedItemID(), 0) << "the owner has the last word";
    window.refuseValues = false;
    for (const auto& [key, row] :
         {std::pair{kKeyPageDown, 4}, {kKeyEnd, 29}, {kKeyDown, 29}, {kKeyHome, 0}, {kKeyUp, 0}}) {
        view.PressKey(key);
        EXPECT_EQ(list->GetSelectedItemID(), row);
    }
    // Behind the number; the next one; more letters; by number.
    for (const auto& [pauses, letters, row] :
         {std::tuple{true, "be", 2}, {true, "b", 5}, {false, "ell 12", 11}, {true, "23", 22}}) {
        if (pauses) view.Tick(31);
        test::Type(view, letters);
        EXPECT_EQ(list->GetSelectedItemID(), row) << letters;
    }
    view.Tick(31);
    view.PressKey(0xC9);  // E acute
    EXPECT_EQ(list->GetSelectedItemID(), 29);
    EXPECT_FALSE(view.PressKey(kKeyEscape));
    view.Tick(31);
    EXPECT_FALSE(view.PressKey(' ')) << "the host may have it";
    list->SetValue(std::nanf(""));
    EXPECT_EQ(list->GetSelectedItemID(), -1);
}

struct TextFieldTest : testing::Test {
    TextFieldTest() {
        view.Click({20, 20});
        window.TakeLog();
    }
    void PressWith(Modifiers modifiers, unsigned key) {
        view.SetModifiers(modifiers);
        view.PressKey(key);
        view.SetModifiers({});
    }
    OffscreenWindow window{CSize(200, 120)};
    CControlTextField* field = window.Add<CControlTextField>(1, CRect(10, 10, 100, 22));
    OffscreenView& view = window.Show();
};

TEST_F(TextFieldTest, Edits) {
    EXPECT_TRUE(view.HasKeyboard());
    test::Type(view, "two words");
    view.PressKey(kKeyBackspace);
    PressWith({.control = true}, kKeyLeft);
    test::Type(view, "x");
    EXPECT_STREQ(field->GetText(), "two xword");
    view.PressKey(kKeyHome);
    view.PressKey(kKeyDelete);
    PressWith({.shift = true}, kKeyEnd);
    EXPECT_EQ(field->GetSelectedText(), "wo xword");
    view.PressKey(kKeyRight);
    EXPECT_EQ(field->GetCaret(), 8u) << "the end of what was selected";
    PressWith({.control = true}, 'a');
    test::Type(view, "n");
    EXPECT_THAT(window.TakeLog(), testing::Each("changed 1"));
    EXPECT_EQ(window.TakeValues().back(), CControlTextField::kEdited);
    view.PressKey(kKeyEnter);
    EXPECT_EQ(window.TakeValues().back(), CControlTextField::kEntered);
    for (const unsigned key : {unsigned{kKeyEscape}, unsigned{kKeyTab}, 0x1FFFFFu})
        EXPECT_FALSE(view.PressKey(key));
    view.SetModifiers({.control = true});
    EXPECT_TRUE(view.PressKey('x')) << "not the host's scissors";
    EXPECT_FALSE(view.PressKey('s'));
    EXPECT_STREQ(field->GetText(), "n");
}

TEST_F(TextFieldTest, CharactersStayWhole) {
    for (const unsigned key : {0xE9u, 0x20ACu, 0x1F3B8u, unsigned{'a'}})
        view.PressKey(key);
    EXPECT_STREQ(field->GetText(), "é€🎸a");
    for (const unsigned key : {kKeyLeft, kKeyBackspace, kKeyLeft, kKeyDelete})
        view.PressKey(key);
    EXPECT_STREQ(field->GetText(), "éa");
    field->Select(1, 99);
    EXPECT_EQ(field->GetSelectedText(), field->GetText());
    field->SetMaxLength(4);
    field->SetText("abcé");
    test::Type(view, "de");
    EXPECT_STREQ(field->GetText(), "abcd") << "what does not fit is left out";
    field->SetRect(CRect(10, 10, 5, 22));  // narrower than its margins
    field->SetText("\xFF\xC3\x80\x80");
    for (int i = 0; i < 4; ++i)
        view.PressKey(kKeyBackspace);
    EXPECT_STREQ(field->GetText(), "") << "stray bytes are characters too";
}

}  // namespace
}  // namespace norava
