#pragma once

#include <array>

#include "editor/panel_layout.h"
#include "gui/geometry.h"

namespace norava {

class CGraphicBuffer;
class CImage;

// The two strings in the panel's window, with their dampers: what moves there follows the sound and
// the damper parameters. Paints; whoever owns the window decides when.
class StringPicture {
  public:
    struct Pictures {
        const CImage* string = nullptr;  // frames of growing amplitude, from the top
        const CImage* upperDamper = nullptr;
        const CImage* lowerDamper = nullptr;
    };

    // In the panel.
    static constexpr CRect kWindow = kStringWindow;
    // The rows in which each string moves.
    static constexpr std::array<CRect, 2> kMovingRows = {CRect(270, 193, 215, 25),
                                                         CRect(270, 219, 215, 25)};

    void SetPictures(const Pictures& newPictures) { pictures = newPictures; }

    // 30 times a second, with the largest magnitudes that the strings have reached since the last
    // call. The rows that must be painted again, empty when nothing moves.
    CRect Tick(float peak1, float peak2);
    // Parameter values, 0 .. 1. True when the whole window must be painted again.
    bool SetDamper(int string, float offset, float amount);
    // At rest, as a silent instrument shows them.
    void Still();

    // Inside the part; the buffer's clip is moved.
    void Draw(CGraphicBuffer& buffer, CRect part) const;

  private:
    struct String {
        float level = 0.0f;  // 0 .. 1, dies away between peaks
        int shown = 0;       // the frame of the picture
        CPoint damper;
    };

    std::array<String, 2> strings{String{.damper = {286, 154}}, String{.damper = {286, 243}}};
    Pictures pictures;
    bool evenTick = false;
};

}  // namespace norava
