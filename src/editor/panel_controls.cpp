#include <memory>
#include <utility>

#include "editor/name_plate.h"
#include "editor/norava_editor.h"
#include "editor/panel_layout.h"
#include "framework/plugin_renderer.h"
#include "gui/control_button.h"
#include "gui/control_display.h"
#include "gui/control_menu.h"
#include "gui/control_slider.h"
#include "parameters/parameter_table.h"

// The panel's controls, made from the layout and from what the parameter table says of each.

namespace norava {

namespace {

constexpr CColor kDisplayText(255, 217, 204);
constexpr CColor kMenuText(246, 234, 211);
constexpr float kCentre = 0.5f;
constexpr float kFineFactor = 0.05f;
constexpr int kOctavePositions = 7;
constexpr int kLampPicture = 7;
constexpr int kResonatorCapPicture = 10;
constexpr int kMenuTextLeft = 4;
// The narrow menus hold "16/4", which leaves two pixels on either side.
constexpr int kNarrowMenu = 35;
constexpr int kNarrowMenuTextLeft = 2;

CSize FrameSize(int imageId) {
    const PanelPicture* const picture = FindPanelPicture(imageId);
    return picture != nullptr ? picture->frame : CSize();
}

template <typename Control>
Control* Attach(CPluginEditor& editor, int id, CRect rect) {
    auto made = std::make_unique<Control>();
    Control* const control = made.get();
    control->SetID(id);
    control->SetRect(rect);
    editor.AttachControl(std::move(made));
    return control;
}

void FitKnob(CControlKnob& knob, const Parameter& parameter) {
    knob.SetZoomFactor(kFineFactor);
    knob.SetZoomingWithSHIFT();
    knob.SetValueOnReset(parameter.defaultValue);
    if (parameter.control == ControlKind::knobWithPositions) knob.SetQuantizing(kOctavePositions);
    if (parameter.control == ControlKind::knobWithCentre ||
        parameter.control == ControlKind::faderWithCentre) {
        knob.SetHasNotch(true);
        knob.SetNotchValue(kCentre);  // not where a reset leads
    }
}

}  // namespace

CControlKnob* CNoravaEditor::createKnob(int id, int x, int y, int imageId) {
    auto* const knob = Attach<CControlKnob>(*this, id, CRect({x, y}, FrameSize(imageId)));
    FitKnob(*knob, GetParameter(id));
    return knob;
}

CControlButton* CNoravaEditor::createButton(int id, int x, int y, int imageId) {
    auto* const button = Attach<CControlButton>(*this, id, CRect({x, y}, FrameSize(imageId)));
    if (imageId == kPreviousArrowPicture || imageId == kNextArrowPicture) {
        button->SetKind_Click();
    } else if (imageId == kLampPicture) {
        button->SetKind_LED();
    } else {
        button->SetKind_Switch();
    }
    return button;
}

CControlSlider* CNoravaEditor::createFader(int id, CRect rect, int imageId) {
    auto* const fader = Attach<CControlSlider>(*this, id, rect);
    if (rect.width > rect.height) fader->SetAxisX();
    if (imageId == kResonatorCapPicture) fader->SetHandleShift(1);
    FitKnob(*fader, GetParameter(id));
    fader->SetTrackingOption(false);
    return fader;
}

CControlMenu* CNoravaEditor::createMenu(int id, int x, int y, int width) {
    const int height = FindPanelControl(id)->rect.height;
    auto* const menu = Attach<CControlMenu>(*this, id, CRect(x, y, width, height));
    setMenuProfile(menu);
    menu->SetTextOffset({width > kNarrowMenu ? kMenuTextLeft : kNarrowMenuTextLeft, 0});
    return menu;
}

void CNoravaEditor::setMenuProfile(CControlMenu* menu) {
    menu->SetTextColor(kMenuText);
    menu->SetPaletteColor(CControlMenu::kListTop, CColor(43));
    menu->SetPaletteColor(CControlMenu::kListBottom, CColor(25));
    menu->SetPaletteColor(CControlMenu::kListFrame, CColor(133, 120, 97));
    menu->SetPaletteColor(CControlMenu::kHoveredRow, CColor(190, 172, 139, 40));
    menu->SetPaletteColor(CControlMenu::kCaptionText, CColor(218, 195, 150));
}

void CNoravaEditor::CreateControls() {
    for (const PanelControl& row : GetPanelControls())
        if (IsParameter(row.id)) CreateParameterControl(row);
    CreateProgramControls();
    CreateNamePlate();
}

void CNoravaEditor::CreateParameterControl(const PanelControl& row) {
    const Parameter& parameter = GetParameter(row.id);
    switch (parameter.control) {
        case ControlKind::knob:
        case ControlKind::knobWithCentre:
        case ControlKind::knobWithPositions:
            createKnob(row.id, row.rect.left, row.rect.top, row.picture);
            break;
        case ControlKind::fader:
        case ControlKind::faderWithCentre:
            createFader(row.id, row.rect, row.picture);
            break;
        case ControlKind::button:
            createButton(row.id, row.rect.left, row.rect.top, row.picture);
            break;
        case ControlKind::menu: {
            CControlMenu* const menu =
                createMenu(row.id, row.rect.left, row.rect.top, row.rect.width);
            for (const char* item : parameter.items)
                menu->AddTextItem(item);
            break;
        }
        case ControlKind::none:
            break;
    }
}

void CNoravaEditor::CreateProgramControls() {
    programDisplay =
        Attach<CControlDisplay>(*this, kProgramDisplay, FindPanelControl(kProgramDisplay)->rect);
    programDisplay->SetTextColor(kDisplayText);
    programDisplay->SetAlignCenter();

    for (const int id : {int{kPreviousProgram}, int{kNextProgram}}) {
        const PanelControl& row = *FindPanelControl(id);
        createButton(id, row.rect.left, row.rect.top, row.picture);
    }

    const CRect place = FindPanelControl(kOptionsMenu)->rect;
    CControlMenu* const options = createMenu(kOptionsMenu, place.left, place.top, place.width);
    options->SetShowsSelection(false);
    options->AddTextItem("Save Program");
    options->AddSeparatorItem();
    options->AddTextItem("Load Program");
    options->AddSeparatorItem();
    options->AddTextItem("Reset Program");
}

void CNoravaEditor::CreateNamePlate() {
    auto made = std::make_unique<NamePlate>([this] { ShowAboutBox(); });
    namePlate = made.get();
    namePlate->SetID(kNamePlate);
    namePlate->SetRect(FindPanelControl(kNamePlate)->rect);
    setMenuProfile(namePlate);
    AttachControl(std::move(made));
}

void CNoravaEditor::BindPictures() {
    GetRootControlGroup()->SetBackgroundImage(GetImageByID(kBackgroundPicture));
    strings.SetPictures({GetImageByID(kStringPicture), GetImageByID(kUpperDamperPicture),
                         GetImageByID(kLowerDamperPicture)});
    for (const PanelControl& row : GetPanelControls()) {
        const PanelPicture* const picture = FindPanelPicture(row.picture);
        if (picture == nullptr) continue;
        CControl* const control = GetControlByID(row.id);
        CImage* const image = GetImageByID(row.picture);
        // A fader is a knob too, drawn with a cap.
        if (auto* const fader = dynamic_cast<CControlSlider*>(control)) {
            fader->SetSliderHandleImage(image, CRect({0, 0}, picture->frame));
        } else if (auto* const knob = dynamic_cast<CControlKnob*>(control)) {
            knob->SetKnobAnimImage(image, picture->frames, true, picture->frame, {0, 0}, 0);
        } else if (auto* const button = dynamic_cast<CControlButton*>(control)) {
            button->SetButtonImage(image, picture->frame, {0, 0});
        } else if (auto* const menu = dynamic_cast<CControlMenu*>(control)) {
            menu->SetImage(image);
        }
    }
}

}  // namespace norava
