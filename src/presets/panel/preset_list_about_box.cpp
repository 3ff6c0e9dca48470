#include "presets/panel/preset_list_about_box.h"

#include <string>

#include "framework/plugin_instance.h"
#include "gui/image.h"
#include "gui/label.h"
#include "gui/window_port.h"

namespace norava {

namespace {

constexpr CColor kPlate(43);
constexpr CColor kText(255, 217, 204);
constexpr CRect kTextPlace(41, 149, 258, 20);  // in the picture

const char* FormatSuffix(const CPluginInstance& plugin) {
    if (plugin.IsVST()) return " VST 64 bit";
    if (plugin.IsAU()) return " AU 64 bit";
    return plugin.IsTQ() ? " TQi 64 bit" : "";
}

std::string AboutText() {
    const CPluginInstance* const plugin = GetPluginInstance();
    if (plugin == nullptr) return {};
    return std::string(plugin->GetPluginName()) + " v." + plugin->GetPluginVersionLabel() + "  :" +
           FormatSuffix(*plugin);
}

}  // namespace

CPresetListAboutBox::CPresetListAboutBox() {
    CControlGroup::Disable(true);
}

void CPresetListAboutBox::SetPicture(CImage* newPicture, CRect place) {
    picture = newPicture;
    SetRect(place);
}

void CPresetListAboutBox::Open() {
    CWindowPort* const window = GetWindowPort();
    if (window == nullptr || !IsDisabled()) return;
    Disable(false);
    SetSuper(true);
    GrabFocus();
    DrawToBuffer();
    window->UpdateScreen(GetRect());
}

void CPresetListAboutBox::Close() {
    if (IsDisabled()) return;
    CWindowPort* const window = GetWindowPort();
    SetSuper(false);
    Disable(true);
    if (window == nullptr) return;
    window->DrawToBuffer();
    window->UpdateScreen();
}

bool CPresetListAboutBox::MouseDown() {
    Close();
    return true;
}

bool CPresetListAboutBox::KeyDown(int) {
    Close();
    return true;
}

void CPresetListAboutBox::WindowCloses() {
    Close();
}

bool CPresetListAboutBox::LostFocus() {
    Close();
    return true;
}

void CPresetListAboutBox::DrawBackground(CRect part) {
    CGraphicBuffer* const buffer = GetGraphicBuffer();
    if (buffer == nullptr || IsDisabled()) return;
    const PaintScope scope(buffer, part.GetIntersection(GetRect()));
    if (!scope) return;
    if (picture != nullptr) {
        buffer->DrawImage(picture, GetRect(), {0, 0});
    } else {
        CColor plate = kPlate;
        buffer->FillRect(GetRect(), &plate);
    }
    CRect place = kTextPlace;
    place.left += GetRect().left;
    place.top += GetRect().top;
    DrawLabel(*buffer, AboutText(), place, {kText, TextAlign::center, false});
}

}  // namespace norava
