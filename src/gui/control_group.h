#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "gui/control.h"
#include "gui/image.h"
#include "gui/modal_stack.h"

namespace norava {

// Controls that are drawn, disabled and made modal together. The group decides which of its
// controls gets a mouse event, and passes what they report on to the window port. User-interface
// thread only.
class CControlGroup {
  public:
    CControlGroup() = default;
    virtual ~CControlGroup();
    CControlGroup(const CControlGroup&) = delete;
    CControlGroup& operator=(const CControlGroup&) = delete;

    // In window coordinates; where the background picture lies. Controls may stand outside.
    [[nodiscard]] virtual CRect GetRect() const { return rect; }
    virtual void SetRect(CRect newRect) { rect = newRect; }
    [[nodiscard]] virtual CWindowPort* GetWindowPort() const { return port; }
    [[nodiscard]] virtual CGraphicBuffer* GetGraphicBuffer() const;
    // Background, controls in the order of their attachment, super controls last.
    virtual void DrawToBuffer();
    virtual void Disable(bool on);
    [[nodiscard]] virtual bool IsDisabled() const { return disabled; }
    virtual void SetBackgroundImage(CImage* image) { background = image; }

    // Makes the group the only one of the window that works. Calls are counted, and the latest
    // group counts.
    virtual void SetSuper(bool on);
    [[nodiscard]] virtual bool IsSuper() const;
    [[nodiscard]] virtual CControl* GetSuperControl() const { return superControls.Top(); }
    [[nodiscard]] virtual int GetID() const { return id; }
    virtual void SetID(int newId) { id = newId; }

    // Where controls overlap, the one attached first gets the mouse.
    virtual CControl* AttachControl(std::unique_ptr<CControl> control);
    // Makes a control and attaches it.
    template <typename Control, typename... Arguments>
    Control* Add(Arguments&&... arguments) {
        auto control = std::make_unique<Control>(std::forward<Arguments>(arguments)...);
        Control* const observed = control.get();
        AttachControl(std::move(control));
        return observed;
    }
    // The control loses mouse and focus and leaves the group; its memory goes when no handler can
    // be inside it any more.
    virtual void DestroyControl(CControl* control);
    virtual void DestroyAllControls();
    [[nodiscard]] virtual CControl* GetRootControl() const;

    virtual void RedrawControl(CControl* control, bool toScreen);
    virtual void RedrawControl(int controlId, bool toScreen);
    virtual bool ControlClicked(CControl* control);
    virtual bool ControlReleased(CControl* control);
    virtual bool ControlValueChanged(CControl* control, float value);

    virtual void GrabFocus();
    [[nodiscard]] virtual bool IsFocused() const;
    virtual bool GetParamText(CControl* control, char* text);
    virtual void StartTracking(CControl* control, bool hidePointer);
    virtual void FinishTracking();
    [[nodiscard]] virtual bool IsTracking(const CControl* control) const;

    // To the tracking control, else the super control, else the first enabled one under the mouse.
    virtual bool MouseDoubleClick();
    virtual bool MouseDown();
    virtual bool MouseUp();
    virtual bool MouseMove();
    virtual bool MouseWheel(float right, float up);
    // To the super control, else the focused one.
    virtual bool KeyDown(int key);
    virtual bool KeyUp(int key);

    virtual void SetTrackingControl(CControl* control) { trackingControl = control; }
    [[nodiscard]] virtual CControl* GetTrackingControl() const { return trackingControl; }
    // Repaints that part of the background picture. The root group of a window has it painted by
    // the window's own background instead, under whatever the window paints.
    virtual void DrawBackground(CRect part);
    // To every enabled control.
    virtual bool TimerEvent();
    virtual bool TookFocus() { return false; }
    virtual bool LostFocus() { return false; }
    // The window closes: what shows only for a while, a dialog say, ends here.
    virtual void WindowCloses() {}
    // Whether keys are the window's rather than the host's while this group gets them.
    [[nodiscard]] virtual bool WantsKeys() const;

    [[nodiscard]] CImage* GetBackgroundImage() const { return background; }
    [[nodiscard]] CControl* GetFocusedControl() const { return focusedControl; }
    [[nodiscard]] CControl* GetControlByID(int controlId) const;
    // In the order of attachment.
    [[nodiscard]] const std::vector<std::unique_ptr<CControl>>& GetControls() const {
        return controls;
    }

  private:
    friend class CControl;
    friend class CWindowPort;

    // Held while handlers run: one of them may delete the window that owns this group.
    [[nodiscard]] std::shared_ptr<const void> KeepAlive() const;
    void FocusControl(CControl* control);
    void TakeFocusFrom(CControl* control);
    void SetSuperControl(CControl* control, bool on);
    // Ends what the control has begun: focus, tracking, being modal.
    void ReleaseControl(CControl* control);
    void ReleaseAll();
    // Focus went to another group.
    void LoseFocus();
    // The enabled controls that reach into a part of the window.
    void DrawControls(CRect part);
    void DeleteDestroyed() { destroyed.clear(); }
    [[nodiscard]] bool MayHandleEvents() const;
    [[nodiscard]] CControl* FindMouseTarget() const;
    [[nodiscard]] CControl* FindKeyTarget() const;
    [[nodiscard]] std::vector<CControl*> ListControls() const;

    CWindowPort* port = nullptr;
    std::vector<std::unique_ptr<CControl>> controls;
    std::vector<std::unique_ptr<CControl>> destroyed;
    ModalStack<CControl> superControls;
    CControl* focusedControl = nullptr;
    CImage* background = nullptr;
    CControl* trackingControl = nullptr;
    CControl* releasing = nullptr;
    CRect rect;
    int id = -1;
    bool disabled = false;
};

}  // namespace norava
