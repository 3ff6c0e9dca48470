#include "editor/norava_editor.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "editor/name_plate.h"
#include "editor/panel_layout.h"
#include "editor/panel_text.h"
#include "framework/plugin_instance.h"
#include "framework/plugin_renderer.h"
#include "framework/text_copy.h"
#include "gui/control_display.h"
#include "parameters/parameter_table.h"
#include "presets/panel/preset_list_about_box.h"
#include "presets/panel/preset_list_editor.h"
#include "presets/preset_list.h"

namespace norava {

namespace {

constexpr CPoint kAboutPlace{257, 171};
constexpr const char* kNoProgram =
    "\nholds no program of this instrument. Programs are files that end in .norava or .fxp.";

bool IsProgramFile(std::string_view path) {
    return path.ends_with(".norava") || path.ends_with(".fxp");
}

}  // namespace

CNoravaEditor::CNoravaEditor(InstrumentLinkMaker linkMaker,
                             std::span<const BuiltInPicture> builtInPictures)
    : makeLink(std::move(linkMaker)) {
    SetBuiltInPictures(builtInPictures);
    SetSize(kPanelSize);
}

CNoravaEditor::~CNoravaEditor() {
    Close();
}

void CNoravaEditor::Connect(CPluginRenderer* newRenderer, CPluginWrapper* newWrapper) {
    CPluginEditor::Connect(newRenderer, newWrapper);
    link = newRenderer != nullptr ? makeLink(*newRenderer) : nullptr;
}

// Pictures

bool CNoravaEditor::CanOpen() {
    if (!ImportPictures()) return false;
    BindPictures();
    MakePanels();
    namePlate->SetZoom(GetZoom());
    // What sounded while nobody looked is over.
    strings.Still();
    if (link != nullptr) (void)link->TakeStringPeaks();
    return true;
}

bool CNoravaEditor::ImportPictures() {
    std::array<char, kPathCapacity> folder{};
    CPluginInstance::GetPluginDirectory(folder);
    SetImageLibraryDir((std::string(folder.data()) + "/Graphics").c_str());
    return std::ranges::all_of(GetPanelPictures(), [this](const PanelPicture& picture) {
        return ImportImageFromFile(picture.fileName, picture.id, nullptr) != nullptr;
    });
}

void CNoravaEditor::MakePanels() {
    if (link == nullptr) return;
    if (browser == nullptr) {
        auto made = std::make_unique<CPresetListEditor>(&link->GetPresetList());
        browser = made.get();
        AttachControlGroup(std::move(made));
        browser->CreateControls(GetSize());
    }
    if (aboutBox == nullptr) {
        auto made = std::make_unique<CPresetListAboutBox>();
        aboutBox = made.get();
        AttachControlGroup(std::move(made));
    }
    aboutBox->SetPicture(ImportImageFromFile("About.tga", -1, nullptr),
                         CRect(kAboutPlace, FindPanelPicture(kAboutPicture)->frame));
}

// Background and strings

void CNoravaEditor::DrawBackground(CRect part) {
    CPluginEditor::DrawBackground(part);
    CGraphicBuffer* const target = GetGraphicBuffer();
    if (target == nullptr) return;
    const CRect clip = target->GetClipRect();
    strings.Draw(*target, part);
    target->SetClipRect(clip);
}

void CNoravaEditor::Repaint(CRect part) {
    UpdateScreen(RepaintPart(part));
}

void CNoravaEditor::FollowDampers() {
    const auto follow = [this](int string, int offset, int amount) {
        return strings.SetDamper(string, GetParamValue(offset), GetParamValue(amount));
    };
    const bool upper = follow(0, param::kString1DampOffset, param::kString1DampAmount);
    const bool lower = follow(1, param::kString2DampOffset, param::kString2DampAmount);
    if (upper || lower) Repaint(StringPicture::kWindow);
}

void CNoravaEditor::MoveStrings() {
    if (link == nullptr) return;
    const InstrumentLink::StringPeaks peaks = link->TakeStringPeaks();
    if (IsSuper()) return;  // nothing moves behind what is modal
    const CRect moved = strings.Tick(peaks.string1, peaks.string2);
    if (!moved.IsEmpty()) Repaint(moved);
}

bool CNoravaEditor::TimerEvent() {
    const bool used = CPluginEditor::TimerEvent();
    if (!IsOpen()) return used;
    if (!IsSuper())
        FollowDampers();  // as the controls, which follow when nothing is modal any more
    MoveStrings();
    return used;
}

// Values

void CNoravaEditor::UpdateAllValues() {
    CPluginEditor::UpdateAllValues();
    FollowDampers();
}

bool CNoravaEditor::GetParamText(CControl* control, char* text) {
    text[0] = '\0';
    if (control == nullptr || !IsParameter(control->GetID())) return false;
    const int id = control->GetID();
    std::array<char, kNameBufferBytes> value{};
    if (!FormatPanelValue(id, GetParamValue(id), value)) {
        if (!CPluginEditor::GetParamText(control, value.data())) return false;
        CopyText(value, std::string(value.data()) + " %");
    }
    CopyText(std::span<char>(text, kNameBufferBytes),
             std::string(GetParameter(id).name) + "  " + value.data());
    return true;
}

bool CNoravaEditor::ControlValueChanged(CControl* control, float value) {
    if (control == nullptr) return false;
    switch (control->GetID()) {
        case kOptionsMenu:
            if (value >= 0.0f && value < 100.0f) processProgramOption(static_cast<int>(value));
            return true;
        case kNamePlate:
            if (value >= 0.0f && value < 3.0f) SetZoom(static_cast<int>(value) + 1);
            namePlate->SetZoom(GetZoom());  // also where the window stays as it is
            return true;
        default:
            return CPluginEditor::ControlValueChanged(control, value);
    }
}

bool CNoravaEditor::ControlReleased(CControl* control) {
    if (control == nullptr || !control->GetRect().IsPointInside(GetMousePos()))
        return CPluginEditor::ControlReleased(control);
    switch (control->GetID()) {
        case kProgramDisplay:
            ShowBrowser();
            return true;
        case kPreviousProgram:
            StepProgram(false);
            return true;
        case kNextProgram:
            StepProgram(true);
            return true;
        default:
            return CPluginEditor::ControlReleased(control);
    }
}

// Programs

void CNoravaEditor::ProgramChanged() {
    if (GetRenderer() == nullptr || programDisplay == nullptr) return;
    std::array<char, kProgramNameCapacity> name{};
    GetRenderer()->GetProgramName(name);
    if (programDisplay->SetText(name.data())) RedrawControl(programDisplay, true);
    if (browser != nullptr && !browser->IsDisabled()) browser->UpdateLists();
}

void CNoravaEditor::StepProgram(bool forward) {
    if (link == nullptr) return;
    CPresetList& list = link->GetPresetList();
    const bool moved = forward ? list.NextProgram() : list.PrevProgram();
    if (!moved || list.LoadProgramFromFile(list.GetProgramPath().c_str())) return;
    ShowMessage("Load Program", list.GetProgramPath() + kNoProgram);
}

void CNoravaEditor::processProgramOption(int item) {
    if (link == nullptr) return;
    enum { save = 0, load = 2, reset = 4 };  // separators lie between
    switch (item) {
        case save:
            if (browser != nullptr) browser->OpenToSave();
            break;
        case load:
            link->GetPresetList().LoadProgramFromFile(nullptr);
            break;
        case reset:
            link->GetPresetList().ResetProgram();
            break;
        default:
            break;
    }
}

bool CNoravaEditor::DragEntered(const char*) {
    return link != nullptr;  // what cannot be used is told when it is dropped
}

bool CNoravaEditor::DropFile(const char* path) {
    if (link == nullptr || path == nullptr) return false;
    if (IsProgramFile(path) && link->GetPresetList().LoadProgramFromFile(path)) return true;
    ShowMessage("Load Program", std::string(path) + kNoProgram);
    return true;
}

void CNoravaEditor::ShowBrowser() {
    if (browser != nullptr) browser->Open();
}

void CNoravaEditor::ShowAboutBox() {
    if (aboutBox != nullptr) aboutBox->Open();
}

}  // namespace norava
