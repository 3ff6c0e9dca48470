#pragma once

#include "gui/control_display.h"

namespace norava {

// Push button, switch, key and lamp. The value is 0 when off, anything else is on.
//
// A click button is 1 while it is held; who acts on the release asks whether the mouse is still
// inside. A switch and a lamp change at once when they are pressed; a lamp's light follows in a few
// ticks. A key changes as long as it is held.
class CControlButton : public CControlDisplay {
  public:
    enum class Kind { click = 0, switched = 1, key = 2, led = 3 };

    CControlButton();

    virtual void SetKind_Click() { kind = Kind::click; }
    virtual void SetKind_Switch() { kind = Kind::switched; }
    virtual void SetKind_Key() { kind = Kind::key; }
    virtual void SetKind_LED() { kind = Kind::led; }
    [[nodiscard]] Kind GetKind() const { return kind; }

    // Frames one below the other from the origin: off, on or pressed, and if there are more: off
    // under the mouse, on under the mouse. An empty size means half of the picture. The bank keeps
    // the picture.
    virtual void SetButtonImage(CImage* picture, CSize frameSize, CPoint frameOrigin);
    // Without a picture: the face from top to bottom, and what surrounds it.
    void SetButtonColors(CColor faceTop, CColor faceBottom, CColor edge);

    using CControl::SetRect;
    void DrawToBuffer() override;
    bool MouseDown() override;
    bool MouseUp() override;
    bool MouseMove() override;
    bool TimerEvent() override;
    bool LostFocus() override;

  private:
    [[nodiscard]] bool IsOn() const { return GetValue() != 0.0f; }
    // Held, with the mouse still inside.
    [[nodiscard]] bool IsPressed() const;
    void Release();
    bool UpdateHover();
    bool FadeLamp();
    void DrawPicture(CGraphicBuffer& buffer) const;
    void DrawFrame(CGraphicBuffer& buffer, int frame, float opacity) const;
    void DrawFace(CGraphicBuffer& buffer) const;
    void DrawLamp(CGraphicBuffer& buffer) const;

    Kind kind = Kind::click;
    CImage* picture = nullptr;
    CSize frame;
    CPoint origin;
    CColor top{80};
    CColor bottom{60};
    CColor edge{0, 150};
    float lampLevel = 0.0f;
    bool hovered = false;
    bool held = false;
    float valueAtRest = 0.0f;  // when it is let go
};

}  // namespace norava
