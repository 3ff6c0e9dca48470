#pragma once

#include <optional>

#include "gui/control_display.h"

namespace norava {

// A value 0 .. 1 that is dragged up and down, or to the sides; itself it is a number box, and knobs
// and faders are made of it. A drag is one gesture: clicked at the press, released at the end.
// Right click, ALT click and double click reset the value, each as a gesture of its own. Two quick
// strokes are no double click.
//
// With the tracking option true (as made) the pointer hides and only its movement counts. With
// false the value keeps to the pointer, also when that was past an end and comes back.
class CControlNumber : public CControlDisplay {
  public:
    CControlNumber();

    // Value units a pixel.
    virtual void SetValueChangeSpeed(float unitsPerPixel) { speed = unitsPerPixel; }
    [[nodiscard]] float GetValueChangeSpeed() const { return speed; }
    // Multiplies the speed in fine mode, that is while the trigger is held: none as made.
    virtual void SetZoomFactor(float factor) { zoom = factor; }
    virtual void SetZoomingOff() { fineTrigger = FineTrigger::none; }
    virtual void SetZoomingWithRightButton() { fineTrigger = FineTrigger::rightButton; }
    virtual void SetZoomingWithCTRL() { fineTrigger = FineTrigger::control; }
    virtual void SetZoomingWithALT() { fineTrigger = FineTrigger::alt; }
    virtual void SetZoomingWithSHIFT() { fineTrigger = FineTrigger::shift; }
    virtual void SetValueOnReset(float newValue) { valueOnReset = newValue; }
    [[nodiscard]] float GetValueOnReset() const { return valueOnReset; }
    // Both are on as made. What triggers the fine mode does not reset.
    virtual void SetResettingWithRightButton() { resetsWithRightButton = true; }
    virtual void SetResettingWithALT() { resetsWithAlt = true; }
    virtual void SetTrackingOption(bool hidePointer) { trackingOption = hidePointer; }
    [[nodiscard]] bool GetTrackingOption() const { return trackingOption; }
    virtual void SetAxisX() { horizontal = true; }
    virtual void SetAxisY() { horizontal = false; }
    [[nodiscard]] bool IsAxisX() const { return horizontal; }
    // A detent, at the reset value as made: a drag across it stops there for 100 pixels; one that
    // keeps to the pointer catches it within a few pixels, but not in fine mode.
    virtual void SetHasNotch(bool on) { hasNotch = on; }
    // Where the detent is when it is not at the reset value.
    void SetNotchValue(float newValue) { notchValue = newValue; }

    void DrawToBuffer() override;
    bool MouseDown() override;
    bool MouseMove() override;
    bool MouseUp() override;
    bool MouseDoubleClick() override;
    bool LostFocus() override;

  protected:
    // The value that may be sent for a dragged one, both 0 .. 1.
    [[nodiscard]] virtual float Quantize(float unit) const { return unit; }
    [[nodiscard]] bool IsDragged() const { return pressedButton != kNoButton; }
    // What the parameter shows, or the plain number.
    [[nodiscard]] virtual std::string GetValueText();

  private:
    enum class FineTrigger : unsigned char { none, rightButton, control, alt, shift };
    static constexpr int kNoButton = 255;

    [[nodiscard]] bool IsResetClick() const;
    [[nodiscard]] bool IsFine() const;
    [[nodiscard]] float ToShownValue(float position) const;
    [[nodiscard]] bool HoldsNotch(int pixels);
    [[nodiscard]] float GetNotch() const { return notchValue.value_or(valueOnReset); }
    void DragBy(int pixels);

    float speed = 0.0025f;
    float zoom = 0.05f;
    float valueOnReset = 0.0f;
    bool trackingOption = true;
    FineTrigger fineTrigger = FineTrigger::none;
    bool resetsWithRightButton = false;
    bool resetsWithAlt = false;
    int pressedButton = kNoButton;
    bool horizontal = false;
    bool hasNotch = false;
    std::optional<float> notchValue;
    int strokePixels = 0;  // pixels that the last drag has moved
    int notchHold = 0;     // pixels of travel before the value leaves the detent
    float dragged = 0.0f;
};

}  // namespace norava
