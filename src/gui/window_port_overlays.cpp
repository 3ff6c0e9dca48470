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
        if (before != place) UpdateScreen(RepaintPart(before));
    }
    UpdateScreen(RepaintPart(place));
}

void CWindowPort::HideOverlay(const CControl* control) {
    const auto found = std::find_if(overlays.begin(), overlays.end(),
                                    [=](const Overlay& shown) { return shown.control == control; });
    if (found == overlays.end()) return;
    const CRect place = found->place;
    overlays.erase(found);
    UpdateScreen(RepaintPart(place));
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

// Controls are repainted whole, as gradients and shadows want it. Where one lies under another
// group or an overlay, that has to be painted again over all of it. Overlays that meet are painted
// anew together too: half of a faint one would become too strong.
CRect CWindowPort::GrowToWhatIsPaintedWhole(CRect part,
                                            const std::vector<CControlGroup*>& drawn) const {
    const CRect window({0, 0}, size);
    for (;;) {
        CRect grown = part;
        const auto grow = [&grown, &window](const CRect& whole) {
            const CRect visible = whole.GetIntersection(window);
            if (visible.Intersects(grown)) grown = Enclose(grown, visible);
        };
        for (const Overlay& overlay : overlays)
            grow(overlay.place);
        for (const CControlGroup* group : drawn) {
            for (const auto& control : group->GetControls()) {
                const CRect place = control->GetRect();
                const bool isCovered =
                    group != drawn.back() ||
                    std::ranges::any_of(overlays, [&place](const Overlay& overlay) {
                        return overlay.place.Intersects(place);
                    });
                if (isCovered && !control->IsDisabled()) grow(place);
            }
        }
        if (grown == part) return part;
        part = grown;
    }
}

CRect CWindowPort::RepaintPart(CRect part) {
    if (!buffer.IsSafe()) return {};
    std::vector<CControlGroup*> drawn = ListGroupsInDrawingOrder();
    std::erase_if(drawn, [](const CControlGroup* group) { return group->IsDisabled(); });
    part = GrowToWhatIsPaintedWhole(part, drawn);
    if (!buffer.SetClipRect(part)) return {};
    DrawBackground(part);
    buffer.SetClipRect();
    for (CControlGroup* group : drawn) {
        group->DrawBackground(part);
        buffer.SetClipRect();
        group->DrawControls(part);
    }
    DrawOverlays(part);
    return part;
}

}  // namespace norava
