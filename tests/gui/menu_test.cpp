#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "gui/control_menu.h"
#include "gui/control_scene.h"

namespace norava {
namespace {

using test::GestureWindow;
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

    GestureWindow window{CSize(200, 200)};
    CControlMenu* menu = window.Add<CControlMenu>(1, CRect(20, 30, 40, 13));
    OffscreenView& view = window.Show();
};

TEST_F(MenuTest, AClickOpensAnotherChooses) {
    EXPECT_EQ(menu->GetSelectedItemID(), -1);
    for (int times = 0; times < 2; ++times) {  // a command may be given twice
        Open();
        EXPECT_TRUE(window.IsSuper());
        EXPECT_TRUE(view.HasKeyboard());
        view.Click(Middle(4));
        EXPECT_FALSE(menu->IsListOpen());
        EXPECT_FALSE(view.HasKeyboard());
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
    view.MoveMouse(Middle(2));
    EXPECT_EQ(menu->GetHoveredItem(), 2);
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
    EXPECT_THAT(window.TakeValues(), ElementsAre(1.0f));
    Open();
    EXPECT_FALSE(view.PressKey('q'));
    EXPECT_TRUE(view.PressKey(kKeyEscape));
    EXPECT_FALSE(menu->IsListOpen());
    EXPECT_FALSE(view.PressKey(kKeyEscape)) << "the next one is the host's";
    EXPECT_THAT(window.TakeValues(), IsEmpty());
}

TEST_F(MenuTest, EveryItemHasAValueThatSelectsIt) {
    menu->SetValueIsIndex(false);
    for (int count = 1; count < 64; ++count) {
        menu->DeleteAllItems();
        for (int i = 0; i < count; ++i)
            menu->AddTextItem(std::to_string(i).c_str());
        for (int i = 0; i < count; ++i) {
            menu->SetValue(menu->GetItemValue(i));
            ASSERT_EQ(menu->GetSelectedItemID(), i) << "of " << count;
            ASSERT_NEAR(menu->GetValue(), count > 1 ? float(i) / float(count - 1) : 0, 1e-6);
        }
    }
    menu->SetValueIsIndex(true);
    menu->SetValue(3.99f);
    EXPECT_STREQ(menu->GetText(), "3");
    for (const float strange : {std::nanf(""), 1e30f, -7.0f}) {
        menu->SetValue(strange);
        EXPECT_EQ(menu->GetItemByNum(menu->GetSelectedItemID()), nullptr);
        Open();
        view.PressKey(kKeyEscape);
    }
}

TEST_F(MenuTest, ListsStayInTheWindow) {
    const auto listAt = [&](CRect rect) {
        menu->SetRect(rect);
        Open();
        return menu->GetListRect();
    };
    CRect list = listAt(CRect(20, 30, 40, 13));
    EXPECT_EQ(list.GetLeftTop(), CPoint(20, 43)) << "below";
    EXPECT_EQ(list.height, 6 * 18 + 20);
    view.PressKey(kKeyEscape);
    menu->AddTextItem("a text that is wider than the menu");
    list = listAt(CRect(190, 160, 40, 13));
    EXPECT_EQ(list.GetBottom(), 160) << "above";
    EXPECT_EQ(list.GetRight(), 200) << "moved to the left";
    EXPECT_GT(list.width, 120);
    view.PressKey(kKeyEscape);
    EXPECT_EQ(listAt(CRect(20, 90, 40, 13)).GetBottom(), 200) << "neither has room: shifted";
    view.PressKey(kKeyEscape);

    while (menu->GetNumItems() < 30)
        menu->AddTextItem("more");
    menu->SetValue(20);
    list = listAt(CRect(20, 90, 40, 13));
    EXPECT_EQ(list.top, 0) << "as high as whole rows go";
    EXPECT_EQ(menu->GetTopItemID(), 15) << "the selected one in the middle";
    view.MoveMouse({list.left + 10, 100});
    view.TurnWheel(-100);
    EXPECT_EQ(menu->GetTopItemID(), 20);
    const int hovered = menu->GetHoveredItem();
    view.TurnWheel(1);
    EXPECT_EQ(menu->GetHoveredItem(), hovered - 3) << "the row under the mouse";
    view.Drag({list.GetRight() - 12, 150}, {0, -50}, 10);
    EXPECT_EQ(menu->GetTopItemID(), 0);
    EXPECT_TRUE(menu->IsListOpen());
    view.PressMouse(kMouseLeft);
    EXPECT_FALSE(menu->IsListOpen());
}

TEST_F(MenuTest, AnEmptyListIsNotOpen) {
    Open();
    menu->DeleteAllItems();
    EXPECT_FALSE(menu->IsListOpen());
    view.Click({30, 35});
    EXPECT_FALSE(menu->IsListOpen()) << "nothing to show";
    EXPECT_TRUE(window.open.empty());
}

}  // namespace
}  // namespace norava
