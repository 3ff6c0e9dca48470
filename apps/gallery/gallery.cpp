#include "gallery/gallery.h"

#include <cstdio>
#include <string>

#include "gallery/gallery_pictures.h"
#include "gui/control_state_selector.h"
#include "gui/unit_value.h"

namespace norava {

namespace {

constexpr CColor kIvory(246, 234, 211);
constexpr CColor kTitle(224, 203, 160);
constexpr CColor kPlateTop(56, 53, 51);
constexpr CColor kPlate(47, 44, 42);
constexpr CColor kPlateEdge(106, 98, 89);
constexpr CColor kChassis(20, 19, 18);

struct Section {
    CRect rect;
    const char* title;
};

constexpr Section kSections[] = {
    {{2, 2, 330, 100}, "Knobs"},    {{334, 2, 304, 100}, "Faders"}, {{2, 104, 330, 90}, "Buttons"},
    {{334, 104, 304, 90}, "Menus"}, {{2, 196, 330, 176}, "Texts"},  {{334, 196, 304, 176}, "Lists"},
};
constexpr int kTitleHeight = 18;
constexpr CRect kPicturedTrack(485, 30, 4, 60);

}  // namespace

CGallery::CGallery(int scale) : CWindowPortStandalone(scale) {
    CWindowPortStandalone::SetSize(kSize);
    status = Place<CControlDisplay>(CRect(2, 376, 636, 20));
    status->SetAlignLeft();
    status->SetTextOffset({8, 0});
    status->SetTextColor(CColor(190, 172, 139));
    status->SetText("Drag, click, turn and type.");
    AddKnobs();
    AddFaders();
    AddButtons();
    AddMenus();
    AddTexts();
    AddLists();
}

template <typename Control>
Control* CGallery::Place(CRect rect, float value) {
    auto* const control = GetRootControlGroup()->Add<Control>();
    control->SetID(nextId++);
    control->SetRect(rect);
    control->SetValue(value);
    return control;
}

CImage* CGallery::Keep(std::unique_ptr<CImage> picture) {
    return pictures.emplace_back(std::move(picture)).get();
}

void CGallery::AddKnobs() {
    int left = 10;
    for (const int side : {60, 43, 30}) {
        knob = Place<CControlKnob>(CRect(left, 28 + (64 - side) / 2, side, side),
                                   static_cast<float>(left) / 130.0f);
        knob->SetValueOnReset(0.5f);
        knob->SetZoomingWithSHIFT();
        left += side + 8;
    }
    auto* notched = Place<CControlKnob>(CRect(left, 39, 43, 43), 0.5f);
    notched->SetHasNotch(true);
    notched->SetValueOnReset(0.5f);
    auto* steps = Place<CControlKnob>(CRect(left + 51, 39, 43, 43), 1.0f);
    steps->SetQuantizing(7);
    CImage* strip = Keep(PaintKnobStrip());
    for (const int row : {0, 1}) {
        auto* filmed = Place<CControlKnob>(CRect({left + 105, 26 + row * 36}, kStripFrame),
                                           row == 0 ? 0.3f : 0.9f);
        filmed->SetKnobAnimImage(strip, kStripFrames, true, kStripFrame, {}, 0);
    }
}

void CGallery::AddFaders() {
    int left = 344;
    for (const float value : {0.0f, 0.35f, 1.0f}) {
        fader = Place<CControlSlider>(CRect(left, 24, 24, 72), value);
        fader->SetValueOnReset(0.5f);
        left += 32;
    }
    auto* notched = Place<CControlSlider>(CRect(left, 24, 24, 72), 0.5f);
    notched->SetHasNotch(true);
    notched->SetValueOnReset(0.5f);
    auto* pictured = Place<CControlSlider>(CRect(left + 32, 24, 30, 72), 0.7f);
    pictured->SetSliderHandleImage(Keep(PaintFaderCap()), CRect());
    for (const int row : {0, 1, 2}) {
        auto* flat = Place<CControlSlider>(CRect(left + 76, 26 + row * 24, 116, 18),
                                           0.2f + 0.3f * static_cast<float>(row));
        flat->SetAxisX();
    }
}

void CGallery::AddButtons() {
    button = Place<CControlButton>(CRect(12, 126, 60, 22));
    button->SetText("Load");
    button->SetTextColor(kIvory);
    other = Place<CControlButton>(CRect(78, 126, 60, 22));
    other->SetText("Save");
    other->SetTextColor(kIvory);
    auto* key = Place<CControlButton>(CRect(144, 126, 60, 22));
    key->SetKind_Key();
    key->SetText("Key");
    for (const bool on : {false, true}) {
        const int left = on ? 78 : 12;
        auto* toggle = Place<CControlButton>(CRect(left, 156, 60, 22), on ? 1.0f : 0.0f);
        toggle->SetKind_Switch();
        toggle->SetText(on ? "On" : "Off");
        auto* lamp = Place<CControlButton>(CRect(on ? 176 : 146, 157, 22, 22), on ? 1.0f : 0.0f);
        lamp->SetKind_LED();
        lamp->SetButtonImage(Keep(PaintLamp()), kLampFrame, {});
        auto* drawn = Place<CControlButton>(CRect(216, on ? 148 : 128, 44, 16), on ? 1.0f : 0.0f);
        drawn->SetKind_LED();
        drawn->SetText("LED");
    }
    auto* row = Place<CControlStateSelector>(CRect(210, 170, 112, 18), 2.0f / 3.0f);
    row->SetNumStates(4);
    row->SetStateSelectorImage(nullptr, true, false, CSize(28, 18), {});
    row->SetStatesGap(CSize(28, 0));
    auto* column = Place<CControlStateSelector>(CRect(268, 120, 54, 48), 0.0f);
    column->SetNumStates(3);
    column->SetStateSelectorImage(nullptr, true, false, CSize(54, 16), {});
    column->SetStatesGap(CSize(0, 16));
    for (int i = 0; i < 4; ++i)
        row->SetStateText(i, std::to_string(1 << i).c_str());
    column->SetStateText(0, "sine");
    column->SetStateText(1, "square");
    column->SetStateText(2, "saw");
}

void CGallery::AddMenus() {
    menu = Place<CControlMenu>(CRect(344, 126, 84, 15));
    menu->SetBackgroundSelfDrawn();
    menu->SetTextColor(kIvory);
    menu->SetPaletteColor(CControlMenu::kListTop, CColor(43));
    menu->AddCaptionItem("Sources");
    for (const char* item : {"---", "envelope", "lfo", "mod whl", "velocity"})
        menu->AddTextItem(item);
    menu->AddSeparatorItem();
    menu->AddCaptionItem("Later");
    menu->AddTextItem("aftertouch")->disabled = true;
    menu->AddTextItem("key number")->marked = true;
    menu->SetValue(4);

    longMenu = Place<CControlMenu>(CRect(440, 126, 84, 15));
    longMenu->SetBackgroundSelfDrawn();
    longMenu->SetTextColor(kIvory);
    for (int i = 1; i <= 60; ++i)
        longMenu->AddTextItem(("Program " + std::to_string(i)).c_str());
    longMenu->SetValue(11);

    auto* plain = Place<CControlMenu>(CRect(536, 126, 60, 15));
    plain->SetTextColor(kIvory);
    for (const char* item : {"4 : 1", "3 : 1", "2 : 1", "1 : 1"})
        plain->AddTextItem(item);
    plain->SetValue(3);

    options = Place<CControlMenu>(CRect({344, 156}, kOptionsFrame));
    options->SetImage(Keep(PaintOptions()));
    options->SetShowsSelection(false);
    options->AddTextItem("Save Program");
    options->AddSeparatorItem();
    options->AddTextItem("Load Program");
    options->AddSeparatorItem();
    options->AddTextItem("Reset Program");
}

void CGallery::AddTexts() {
    auto* name = Place<CControlDisplay>(CRect(12, 218, 150, 24));
    name->SetText("Silver Thread");
    name->SetTextColor(CColor(255, 217, 204));
    name->SetBackgroundSelfDrawn();
    name->SetBackgroundColor(CColor(25, 28, 36));
    auto* bold = Place<CControlDisplay>(CRect(170, 218, 150, 24));
    bold->SetText("Presets Library");
    bold->SetTextFontBold();
    bold->SetTextColor(kTitle);
    for (const int align : {0, 1, 2}) {
        auto* text = Place<CControlDisplay>(CRect(12, 248 + 20 * align, 150, 18));
        text->SetText(align == 0 ? "left" : align == 1 ? "centred" : "right");
        if (align == 0) text->SetAlignLeft();
        if (align == 2) text->SetAlignRight();
        text->SetBackgroundSelfDrawn();
        text->SetBackgroundColor(CColor(0, 60));
    }
    auto* tooLong = Place<CControlDisplay>(CRect(170, 248, 150, 18));
    tooLong->SetText("A name that is longer than its place, with \xC3\xA9, \xC3\xBC and \xC3\xB1");
    tooLong->SetAlignLeft();
    auto* accents = Place<CControlDisplay>(CRect(170, 268, 150, 18));
    accents->SetText("Caf\xC3\xA9 del Mar \xE2\x80\x93 \xE2\x80\x9CNo\xC3\xABl\xE2\x80\x9D");
    accents->SetAlignLeft();
    auto* number = Place<CControlNumber>(CRect(170, 290, 60, 18), 0.42f);
    number->SetBackgroundSelfDrawn();
    number->SetBackgroundColor(CColor(25, 28, 36));
    field = Place<CControlTextField>(CRect(12, 316, 308, 22));
    field->SetText("Harbour Light");
    auto* empty = Place<CControlTextField>(CRect(12, 344, 308, 22));
    empty->SetHint("Name");
}

void CGallery::AddLists() {
    auto* categories = Place<CControlList>(CRect(344, 218, 110, 146), 1.0f);
    int number = 0;
    for (const char* name : {"Plucked", "Bowed Air", "Basses", "Keys", "Bells and Glass"})
        categories->AddItem((std::to_string(++number) + ". " + name).c_str());
    list = Place<CControlList>(CRect(462, 218, 166, 146), 6.0f);
    for (int i = 1; i <= 40; ++i)
        list->AddItem((std::to_string(i) + (i % 4 == 0   ? ". Silver Thread in the Evening Light"
                                            : i % 3 == 0 ? ". Amber Lute"
                                                         : ". Hollow Oak"))
                          .c_str());
}

void CGallery::DrawBackground(CRect part) {
    CWindowPortStandalone::DrawBackground(part);
    CGraphicBuffer& canvas = *GetGraphicBuffer();
    const PaintScope scope(&canvas, part);
    canvas.SetFillColor(kChassis);
    canvas.FillRect(CRect({0, 0}, GetSize()));
    for (const Section& section : kSections) {
        const CRect& plate = section.rect;
        canvas.SetFillColor(kPlateTop);
        canvas.DrawRectWithRoundCorner(plate, true, 3, 3);
        canvas.SetFillColor(kPlate);
        canvas.DrawRectWithRoundCorner(
            CRect(plate.left, plate.top + kTitleHeight, plate.width, plate.height - kTitleHeight),
            true, 3, 3);
        CColor edge = kPlateEdge;
        canvas.FillRect(CRect(plate.left + 2, plate.top, plate.width - 4, 1), &edge);
        DrawLabel(canvas, section.title,
                  CRect(plate.left, plate.top + 1, plate.width, kTitleHeight),
                  {kTitle, TextAlign::center, true});
    }
    // The track of the fader with a picture.
    canvas.SetFillColor(CColor(14, 13, 12));
    canvas.DrawRectWithRoundCorner(kPicturedTrack, true, 2, 2);
}

void CGallery::Report(const char* what, const CControl* control, float value) {
    if (control == status) return;
    char text[kNameBufferBytes];
    std::snprintf(text, sizeof text, "Control %d: %s, value %.4f", control->GetID(), what,
                  static_cast<double>(value));
    if (status->SetText(text)) RedrawControl(status, true);
}

bool CGallery::ControlClicked(CControl* control) {
    Report("clicked", control, control->GetValue());
    return true;
}

bool CGallery::ControlReleased(CControl* control) {
    Report("released", control, control->GetValue());
    return true;
}

bool CGallery::ControlValueChanged(CControl* control, float value) {
    Report("changed", control, value);
    return true;
}

bool CGallery::GetParamText(CControl* control, char* text) {
    std::snprintf(text, kNameBufferBytes, "%.1f %%",
                  static_cast<double>(ToUnit(control->GetValue())) * 100.0);
    return true;
}

}  // namespace norava
