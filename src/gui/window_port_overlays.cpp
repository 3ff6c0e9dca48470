#include <algorithm>

#include "gui/window_port.h"

namespace norava {

namespace {

CRect Enclose(const CRect& a, const CRect& b) {
    const int left = std::min(a.left, b.left);
    const int top = std::min(a.top, b.top);
    return {left, top, std::max(a.GetRight(), b.GetRight()) - left,
            std::max(a.GetBottom(), b.GetBottom()) - top};
}

}  // namespace

void CWindowPort::ShowOverlay(CControl* control, CRect place, float opacity) {
    if (!control || control->GetWindowPort() != this || !buffer.IsSafe()) return;
    place = place.GetIntersection(CRect({0, 0}, size));
    const auto found = std::find_if(overlays.begin(), overlays.end(),
                                    [=](const Overlay& shown) { return shown.control == control; });
    if (found == overlays.end()) {
        overlays.push_back({control, place, opacity});
    } else {
        const CRect before = std::exchange(found->place, place);
        found->opacity = opacity;
        if (before != place) {
            RepaintPart(before);
            UpdateScreen(before);
        }
    }
    RepaintPart(place);
    UpdateScreen(place);
}

void CWindowPort::HideOverlay(const CControl* control) {
    const auto found = std::find_if(overlays.begin(), overlays.end(),
                                    [=](const Overlay& shown) { return shown.control == control; });
    if (found == overlays.end()) return;
    const CRect place = found->place;
    overlays.erase(found);
    RepaintPart(place);
    UpdateScreen(place);
}

// The control paints opaque; for less, what was there is laid over it again.
void CWindowPort::DrawOverlay(const Overlay& overlay) {
    const CRect place = overlay.place;
    if (place.IsEmpty()) return;
    const bool solid = overlay.opacity >= 1.0f;
    if (!solid) {
        underOverlay.SetSize(place.GetSize());
        underOverlay.DrawImage(&buffer, CRect({0, 0}, place.GetSize()), place.GetLeftTop());
    }
    overlay.control->DrawOverlay();
    buffer.SetClipRect();
    if (!solid) buffer.DrawImage(&underOverlay, place, {0, 0}, 1.0f - overlay.opacity);
}

void CWindowPort::DrawOverlays(CRect part) {
    for (const Overlay& overlay : std::vector(overlays))
        if (overlay.place.Intersects(part)) DrawOverlay(overlay);
}

// The picture of a full repaint inside that part. Controls are repainted whole, as gradients and
// shadows want it.
void CWindowPort::RepaintPart(CRect part) {
    if (!buffer.IsSafe()) return;
    // Overlays that meet are painted anew together: half of a faint one would become too strong.
    for (size_t i = 0; i < overlays.size();) {
        const CRect grown = Enclose(part, overlays[i].place);
        const bool changes = overlays[i].place.Intersects(part) && grown != part;
        i = changes ? 0 : i + 1;
        if (changes) part = grown;
    }
    if (!buffer.SetClipRect(part)) return;
    DrawBackground(part);
    buffer.SetClipRect();
    for (CControlGroup* group : ListGroupsInDrawingOrder()) {
        if (group->IsDisabled()) continue;
        group->DrawBackground(part);
        buffer.SetClipRect();
        group->DrawControls(part);
    }
    DrawOverlays(part);
}

}  // namespace norava
