#pragma once

#include "gui/control_knob.h"

namespace norava {

// The fader: a handle that follows the mouse one to one along the axis, upwards or to the right.
// The bottom or left end is 0.
class CControlSlider : public CControlKnob {
  public:
    CControlSlider();

    // The part of the picture that is drawn as the handle; a width or height below 1 means the
    // picture's. The track is then what lies under the control. The bank keeps the picture.
    virtual void SetSliderHandleImage(CImage* picture, CRect part);
    // Moves the handle across the axis from the middle, in pixels.
    virtual void SetHandleShift(int pixels) { shift = pixels; }
    // In window coordinates, at the present value.
    [[nodiscard]] CRect GetHandleRect() const;

    using CControl::SetRect;
    void SetRect(CRect newRect) override;
    void SetAxisX() override;
    void SetAxisY() override;
    void DrawToBuffer() override;

  private:
    [[nodiscard]] CSize GetHandleSize() const;
    [[nodiscard]] int GetTravel() const;
    // As many value units a pixel as make the handle follow the mouse.
    void FitSpeed();
    void Slider_DrawToBufferWithImages(CGraphicBuffer& buffer) const;
    void DrawTrack(CGraphicBuffer& buffer) const;
    void DrawHandle(CGraphicBuffer& buffer) const;

    bool hasHandleImage = false;
    CImage* handleImage = nullptr;
    CRect handlePart;
    int shift = 0;
};

}  // namespace norava
