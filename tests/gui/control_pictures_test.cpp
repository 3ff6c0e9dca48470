#include <gtest/gtest.h>

#include "gui/control_button.h"
#include "gui/control_list.h"
#include "gui/control_menu.h"
#include "gui/control_scene.h"
#include "gui/control_slider.h"
#include "gui/control_state_selector.h"
#include "gui/control_text_field.h"
#include "gui/pictures.h"

// What each family of controls looks like, looked at once and compared to the bit ever since.
namespace norava {
namespace {

class ControlPicture : public testing::TestWithParam<int> {
  protected:
    ControlPicture() {
        window.paintBackground = [](CGraphicBuffer& buffer, CRect part) {
            CColor plate(47, 44, 42);
            buffer.FillRect(part, &plate);
        };
    }
    void ExpectLooks(const std::string& subject) {
        test::ExpectLooksLike(*window.GetGraphicBuffer(),
                              subject + "_scale" + std::to_string(GetParam()));
    }
    test::GestureWindow window{CSize(160, 114), GetParam()};
    OffscreenView& view = window.Show();
    int nextId = 0;
    template <typename Control>
    Control* Add(CRect rect, float value = 0.0f) {
        auto* control = window.Add<Control>(nextId++, rect);
        control->SetValue(value);
        return control;
    }
};
INSTANTIATE_TEST_SUITE_P(Scales, ControlPicture, testing::Values(1, 2));

TEST_P(ControlPicture, KnobsAndFaders) {
    Add<CControlKnob>(CRect(4, 4, 43, 43), 0.0f);
    auto* dragged = Add<CControlKnob>(CRect(52, 4, 30, 30), 0.7f);
    Add<CControlSlider>(CRect(90, 4, 20, 60), 0.25f);
    Add<CControlSlider>(CRect(116, 4, 40, 14), 0.5f)->SetAxisX();
    window.DrawToBuffer();
    view.MoveMouse(dragged->GetRect().GetCenter());
    view.PressMouse();
    view.Tick(3);
    ExpectLooks("knobs");
}

TEST_P(ControlPicture, Buttons) {
    auto* held = Add<CControlButton>(CRect(4, 4, 60, 22));
    held->SetText("Load");
    Add<CControlButton>(CRect(70, 4, 60, 22))->SetText("Save");
    Add<CControlButton>(CRect(4, 32, 60, 22), 1.0f)->SetKind_Switch();
    for (const float value : {0.0f, 1.0f}) {
        auto* lamp =
            Add<CControlButton>(CRect(70 + static_cast<int>(40 * value), 32, 40, 20), value);
        lamp->SetKind_LED();
        lamp->SetText("on");
    }
    auto* states = Add<CControlStateSelector>(CRect(4, 60, 120, 18), 0.5f);
    states->SetNumStates(3);
    states->SetStateSelectorImage(nullptr, true, false, CSize(40, 18), {});
    states->SetStatesGap(CSize(40, 0));
    states->SetStateText(1, "saw");
    window.DrawToBuffer();
    view.Tick(6);
    view.MoveMouse(held->GetRect().GetCenter());
    view.PressMouse();
    ExpectLooks("buttons");
}

TEST_P(ControlPicture, OpenMenu) {
    auto* menu = Add<CControlMenu>(CRect(4, 4, 80, 15));
    menu->SetBackgroundSelfDrawn();
    menu->AddTextItem("envelope");
    menu->AddTextItem("lfo");
    menu->AddSeparatorItem();
    menu->AddTextItem("velocity")->disabled = true;
    menu->SetValue(1);
    window.DrawToBuffer();
    view.Click({10, 10});
    view.Tick(4);
    view.MoveMouse(menu->GetItemRect(0).GetCenter());
    ExpectLooks("menu");
}

TEST_P(ControlPicture, ListsAndTexts) {
    auto* list = Add<CControlList>(CRect(4, 4, 90, 66), 1.0f);
    for (const char* name : {"Amber Lute", "Bone Zither", "A name that is too long", "Wren", "Oak"})
        list->AddItem(name);
    auto* name = Add<CControlDisplay>(CRect(98, 4, 58, 20));
    name->SetText("Plain");
    name->SetBackgroundSelfDrawn();
    auto* field = Add<CControlTextField>(CRect(4, 74, 152, 22));
    field->SetText("Silver Thread");
    window.DrawToBuffer();
    field->GrabFocus();
    field->Select(7, 13);
    ExpectLooks("texts");
}

}  // namespace
}  // namespace norava
