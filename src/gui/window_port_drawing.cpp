#include "gui/window_port.h"

namespace norava {

void CWindowPort::DrawToBuffer() {
    if (!buffer.IsSafe()) return;
    buffer.SetClipRect();
    DrawBackground(CRect({0, 0}, size));
    buffer.SetClipRect();
    DrawControlsToBuffer();
}

std::vector<CControlGroup*> CWindowPort::ListGroupsInDrawingOrder() const {
    std::vector<CControlGroup*> list;
    for (const auto& group : groups)
        if (!superGroups.Holds(group.get())) list.push_back(group.get());
    for (CControlGroup* group : superGroups.GetMembers())
        if (list.empty() || list.back() != group) list.push_back(group);
    return list;
}

void CWindowPort::DrawControlsToBuffer() {
    for (CControlGroup* group : ListGroupsInDrawingOrder())
        group->DrawToBuffer();
    DrawOverlays(CRect({0, 0}, size));
}

// In the root group a picture must not hide what a derived window paints, so it lies under that.
// Where there is none the window is black: what blends must not blend over its own last picture.
void CWindowPort::DrawBackground(CRect part) {
    const CControlGroup& root = *GetRootControlGroup();
    const CImage* picture = root.IsDisabled() ? nullptr : root.GetBackgroundImage();
    const bool covers =
        picture && !picture->GetHasAlpha() &&
        part.GetIntersection(CRect(root.GetRect().GetLeftTop(), picture->GetSize())) == part;
    CColor black(0);
    if (!covers) buffer.FillRect(part, &black);
    buffer.DrawImage(picture, root.GetRect(), {0, 0});
}

void CWindowPort::UpdateScreen(CRect part) {
    if (IsOpen()) view->Redraw(part);
}

void CWindowPort::UpdateScreen() {
    UpdateScreen(CRect({0, 0}, size));
}

bool CWindowPort::MayRedraw(const CControl* control) const {
    const CControlGroup* modalGroup = GetSuperControlGroup();
    if (!modalGroup) return true;
    const CControl* modal = modalGroup->GetSuperControl();
    return control->GetControlGroup() == modalGroup && (!modal || modal == control);
}

void CWindowPort::RedrawControl(CControl* control, bool toScreen) {
    if (!control || control->IsDisabled() || control->GetWindowPort() != this) return;
    if (!buffer.IsSafe() || control->GetControlGroup()->IsDisabled()) return;
    if (!MayRedraw(control)) {
        redrawMissed = true;
        return;
    }
    control->DrawToBuffer();
    const CRect painted = control->GetRect();
    for (const Overlay& overlay : std::vector(overlays)) {
        if (!overlay.place.Intersects(painted)) continue;
        const CRect repainted = RepaintPart(overlay.place);
        if (toScreen) UpdateScreen(repainted);
    }
    if (toScreen) control->UpdateScreen();
}

void CWindowPort::RedrawControl(int id, bool toScreen) {
    RedrawControl(GetControlByID(id), toScreen);
}

}  // namespace norava
