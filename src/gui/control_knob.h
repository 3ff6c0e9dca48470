#pragma once

#include "gui/control_number.h"

namespace norava {

// The rotary control: one picture of a filmstrip for each value, or without one a drawn knob. While
// it is dragged the value shows in a bubble below it.
class CControlKnob : public CControlNumber {
  public:
    // Number of positions; below 2 the knob is continuous. A drag goes on between the positions and
    // is reported when it reaches another one.
    virtual void SetQuantizing(int positions) { quantizing = positions > 0 ? positions : 0; }
    [[nodiscard]] int GetQuantizing() const { return quantizing; }
    // `frames` pictures of one size that follow each other downwards or to the right with `gap`
    // pixels between them, the first at `firstFrame`. An empty size means equal parts of the whole
    // picture. Without a picture or frames the knob is drawn. The bank keeps the picture.
    virtual void SetKnobAnimImage(CImage* picture, int frames, bool downwards, CSize frameSize,
                                  CPoint firstFrame, int gap);
    // On as made.
    virtual void SetShowComment(bool on) { showsComment = on; }

    using CControl::SetRect;
    void DrawToBuffer() override;
    void DrawOverlay() override;
    bool MouseMove() override;
    bool TimerEvent() override;
    bool LostFocus() override;

  protected:
    [[nodiscard]] float Quantize(float unit) const override;

  private:
    [[nodiscard]] int GetFrame() const;
    [[nodiscard]] CRect PlaceComment();
    void ShowComment();
    void DrawArrowKnob(CGraphicBuffer& buffer) const;

    int quantizing = 0;
    CImage* strip = nullptr;
    int frameCount = 0;
    bool goesDown = true;
    CSize frame;
    CPoint origin;
    int frameGap = 0;
    bool showsComment = true;
    float commentOpacity = 0.0f;
    std::string comment;
    CRect commentRect;
};

}  // namespace norava
