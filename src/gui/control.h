#pragma once

#include "gui/geometry.h"
#include "gui/keys.h"

namespace norava {

class CControlGroup;
class CGraphicBuffer;
class CWindowPort;

// The base of everything that is drawn and clicked in a window. A control belongs to at most one
// group, which owns it; its rectangle is in window coordinates. A disabled control is neither drawn
// nor hit.
//
// Handlers return whether they used the event; they ask for the mouse and the modifier keys. Any
// handler may destroy any control, its own too: the control leaves its group at once and its memory
// when the event is over. User-interface thread only.
class CControl {
  public:
    CControl() = default;
    virtual ~CControl() = default;
    CControl(const CControl&) = delete;
    CControl& operator=(const CControl&) = delete;

    // By convention the number of the parameter that the control shows; -1 until set.
    virtual void SetID(int newId) { id = newId; }
    [[nodiscard]] virtual int GetID() const { return id; }

    // Normalised, as a rule 0 .. 1.
    virtual void SetValue(float newValue) { value = newValue; }
    // False, and nothing drawn, when the value is the same already.
    virtual bool SetValueAndRedraw(float newValue);
    [[nodiscard]] virtual float GetValue() const { return value; }

    virtual void SetRect(CRect newRect) { rect = newRect; }
    virtual void SetRect(int left, int top, int width, int height) {
        SetRect(CRect(left, top, width, height));
    }
    virtual void SetRect(int left, int top, CSize size) { SetRect(CRect(left, top, size)); }
    virtual void SetRect(CPoint leftTop, CSize size) { SetRect(CRect(leftTop, size)); }
    [[nodiscard]] virtual CRect GetRect() const { return rect; }
    virtual void SetPosition(int left, int top) { SetRect(CRect({left, top}, GetSize())); }
    virtual void SetPosition(CPoint leftTop) { SetPosition(leftTop.x, leftTop.y); }
    virtual void ShiftPosition(int x, int y);
    [[nodiscard]] virtual CPoint GetPosition() const { return GetRect().GetLeftTop(); }
    virtual void SetSize(int width, int height) { SetSize(CSize(width, height)); }
    virtual void SetSize(CSize size) { SetRect(CRect(GetPosition(), size)); }
    [[nodiscard]] virtual CSize GetSize() const { return GetRect().GetSize(); }

    // Null without a group, or when the group is in no window.
    [[nodiscard]] virtual CControlGroup* GetControlGroup() const { return group; }
    [[nodiscard]] virtual CWindowPort* GetWindowPort() const;

    // Keys go to the focused control of a group, and one group of a window has the focus.
    virtual void GrabFocus();
    [[nodiscard]] virtual bool IsFocused() const;

    // A super control is modal: it is drawn above the others and gets every mouse event of its
    // group, and its group is the only one that works. The latest one counts; ending it restores
    // the one before.
    virtual void SetSuper(bool on);
    [[nodiscard]] virtual bool IsSuper() const;

    // A control that is disabled while it has the mouse or the focus loses both.
    virtual void Disable(bool on);
    [[nodiscard]] virtual bool IsDisabled() const { return disabled; }

    // Where the control is painted; null without a window.
    [[nodiscard]] virtual CGraphicBuffer* GetGraphicBuffer() const;
    // Paints the control, beginning with its background. Overridden by every control that shows
    // something.
    virtual void DrawToBuffer() { DrawBackground(); }
    // Brings what was painted onto the screen.
    virtual void UpdateScreen() { UpdateScreen(GetRect()); }
    virtual void UpdateScreen(CRect part);
    // Repaints what lies under the control: the window's own background, then the group's picture.
    virtual void DrawBackground() { DrawBackground(GetRect()); }
    virtual void DrawBackground(CRect part);

    // To the owner of the window, who records a gesture between the two. Clicked and released
    // always take turns: a second SendClicked is refused and a second SendReleased does nothing. A
    // control that is disabled or destroyed in between reports its release on the way. SendClicked
    // is also refused, after its release, when the owner's handler leaves nobody who could go on.
    virtual bool SendClicked();
    virtual bool SendReleased();
    virtual bool SendValueChanged(float newValue);

    virtual bool MouseDoubleClick() { return false; }
    virtual bool MouseDown() { return false; }
    virtual bool MouseUp() { return false; }
    virtual bool MouseMove() { return false; }
    // Notches of the wheel, to the right and upwards.
    virtual bool MouseWheel(float /*right*/, float /*up*/) { return false; }
    virtual bool KeyDown(int /*key*/) { return false; }
    virtual bool KeyUp(int /*key*/) { return false; }

    // While a control tracks, it alone gets the mouse events, wherever the mouse is. With the
    // option true the pointer is hidden, only movements are reported, and it comes back where it
    // was.
    virtual void StartTracking(bool hidePointer);
    virtual void FinishTracking();
    [[nodiscard]] virtual bool IsTracking() const;

    // Text of the shown parameter at its present value; `text` holds 256 bytes and is emptied
    // first.
    virtual bool GetParamText(char* text);

    // 30 times a second while the window is open.
    virtual bool TimerEvent() { return false; }
    virtual bool TookFocus() { return false; }
    // Must end whatever the control has begun (a drag, an open list): it also comes when the
    // control is disabled or destroyed, or the window is closed, in the middle of it.
    virtual bool LostFocus() { return false; }

    // Whether typed keys mean something to the control now. Only then the window takes the keyboard
    // from the host.
    [[nodiscard]] virtual bool WantsKeys() const { return false; }

    // Paints what CWindowPort::ShowOverlay has announced, inside that rectangle and opaque where it
    // paints.
    virtual void DrawOverlay() {}

    // The last mouse event, in window coordinates.
    [[nodiscard]] CPoint GetMousePos() const;
    [[nodiscard]] int GetMouseBtn() const;
    [[nodiscard]] CSize GetMouseDelta() const;
    [[nodiscard]] bool IsCTRL() const;
    [[nodiscard]] bool IsALT() const;
    [[nodiscard]] bool IsSHIFT() const;

  protected:
    // A press: SendClicked, focus and mouse. False when the owner refuses it or a handler makes it
    // impossible; nothing is left open then.
    bool BeginGesture(bool hidePointer);
    // Gives the mouse back and reports the release. To be called from LostFocus at the latest.
    void EndGesture();
    [[nodiscard]] bool IsInGesture() const { return clicked; }
    // Reports a value; it is set and shown when the owner accepts it.
    bool ChangeValue(float newValue);
    // The same as a gesture of its own.
    bool ChangeValueAtOnce(float newValue);
    // Paints and shows the control, as far as what is modal allows.
    void Redraw();
    // Whether the mouse is over the control and would reach it.
    [[nodiscard]] bool IsMouseOver() const;

  private:
    friend class CControlGroup;

    bool clicked = false;
    int id = -1;
    float value = 0.0f;
    CRect rect;
    bool disabled = false;
    CControlGroup* group = nullptr;
};

}  // namespace norava
