#pragma once

#include <algorithm>
#include <cmath>

#include "gui/graphic_buffer.h"

namespace norava {

// The bar at the side of rows of which only some are shown. A part of a list or menu, not a
// control: its owner tells it of the mouse.
class ScrollBar {
  public:
    struct Colors {
        CColor track{18, 20, 25};
        CColor thumbTop{93};
        CColor thumbBottom{74};
        CColor thumbHeld{133, 120, 97};
    };

    // `total` rows of which `visible` are seen at once. The place is kept, also while rows are
    // taken away and filled in again.
    void SetRows(int totalRows, int visibleRows) {
        total = std::max(0, totalRows);
        visible = std::max(1, visibleRows);
    }
    void SetTrack(CRect newTrack) { track = newTrack; }
    [[nodiscard]] CRect GetTrack() const { return track; }
    [[nodiscard]] bool IsNeeded() const { return total > visible; }

    // First row that is seen; limited to what there is.
    void SetTop(float row) {
        const auto last = static_cast<float>(GetLastTop());
        top = row > 0 ? static_cast<int>(std::min(row, last)) : 0;
    }
    [[nodiscard]] int GetTop() const { return std::min(top, GetLastTop()); }
    [[nodiscard]] int GetVisible() const { return visible; }
    // Scrolls as little as shows that row. Whether anything moved.
    bool Reveal(int row);
    // Notches of the wheel, upwards, of three rows each; parts of rows add up. Whether anything
    // moved.
    bool TurnWheel(float up);

    // Grabs the thumb, or goes a page towards the mouse.
    void Press(CPoint mouse);
    // Whether the shown rows moved.
    bool Drag(CPoint mouse);
    void Release() { held = false; }
    [[nodiscard]] bool IsHeld() const { return held; }

    void Draw(CGraphicBuffer& buffer, const Colors& colors) const;

  private:
    [[nodiscard]] int GetLastTop() const { return std::max(0, total - visible); }
    [[nodiscard]] CRect GetThumb() const;

    CRect track;
    int total = 0;
    int visible = 1;
    int top = 0;  // as it was set; there may be fewer rows now
    float wheelRest = 0.0f;
    bool held = false;
    int grabbedAt = 0;  // pixels from the thumb's top
};

}  // namespace norava
