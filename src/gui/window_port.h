#pragma once

#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "files/text_buffer.h"
#include "gui/control_group.h"
#include "gui/graphic_buffer.h"
#include "gui/image_bank.h"
#include "gui/platform/platform_view.h"

namespace norava {

class Dispatch;
class WindowEvents;
struct DispatchState;

// The root of the control tree: it owns the groups, the back buffer that they are painted into and
// the view that shows it, and routes what the view reports through the groups. Derived classes hear
// from the controls (ControlClicked ... DragLeft do nothing here). User-interface thread only;
// several ports may live on several threads.
//
// A derived class that wants to hear how its controls end what they had begun calls Close() in its
// destructor.
class CWindowPort {
  public:
    // Makes the view: the system's own, or another for tests and tools.
    using ViewFactory = std::function<std::unique_ptr<PlatformView>(PlatformEvents&, void* parent,
                                                                    CSize size, int scale)>;

    explicit CWindowPort(int scale = 1);
    virtual ~CWindowPort();
    CWindowPort(const CWindowPort&) = delete;
    CWindowPort& operator=(const CWindowPort&) = delete;

    // As a window of its own, inside another port's, or inside a parent window of the system. False
    // when it is open already, has no size, or the system gives no window.
    virtual bool Open();
    virtual bool Open(CWindowPort* parent);
    virtual bool Open(void* parent);
    // Ends drags and open lists first, so that no gesture stays open.
    virtual void Close();
    [[nodiscard]] virtual bool IsOpen() const { return view != nullptr; }
    virtual void SetSize(CSize newSize);
    virtual void SetSize(int width, int height) { SetSize(CSize(width, height)); }
    [[nodiscard]] virtual CSize GetSize() const { return size; }
    virtual void SetPosition(CPoint newPosition) { position = newPosition; }
    virtual void SetPosition(int x, int y) { SetPosition(CPoint(x, y)); }
    [[nodiscard]] virtual CPoint GetPosition() const { return position; }

    // Groups are drawn in the order of their attachment, super groups above the others.
    virtual CControlGroup* AttachControlGroup(std::unique_ptr<CControlGroup> group);
    virtual void DestroyControlGroup(CControlGroup* group);
    [[nodiscard]] virtual CControlGroup* GetControlGroupByID(int id) const;
    [[nodiscard]] virtual CControlGroup* GetControlGroupByNum(int index) const;
    [[nodiscard]] virtual CControlGroup* GetRootControlGroup() const {
        return groups.front().get();
    }
    virtual void DisableControlGroup(int id, bool on);
    // To the root group.
    virtual CControl* AttachControl(std::unique_ptr<CControl> control);
    virtual void DestroyControl(CControl* control);
    // The first in the order of groups and controls.
    [[nodiscard]] virtual CControl* GetControlByID(int id) const;
    virtual void SetControlValue(int id, float value);
    virtual bool SetControlValueAndRedraw(int id, float value);
    // While something is modal, only that is redrawn; the others follow when it ends.
    virtual void RedrawControl(CControl* control, bool toScreen);
    virtual void RedrawControl(int id, bool toScreen);

    [[nodiscard]] virtual CControlGroup* GetFocusControlGroup() const { return focusGroup; }
    // The latest super group that is not disabled.
    [[nodiscard]] virtual CControlGroup* GetSuperControlGroup() const;
    [[nodiscard]] virtual bool IsSuper() const { return GetSuperControlGroup() != nullptr; }
    [[nodiscard]] virtual CControl* GetSuperControl() const;

    virtual void DrawToBuffer();
    virtual void DrawControlsToBuffer();
    virtual void UpdateScreen(CRect part);
    // Paints what a full repaint would show there, with all that is modal or open. Controls are
    // painted whole; returns the part that this came to, for the screen.
    CRect RepaintPart(CRect part);
    virtual void UpdateScreen();
    // Null before the window has a size.
    [[nodiscard]] virtual CGraphicBuffer* GetGraphicBuffer();

    // Something that a control shows above everything, outside its own rectangle: an open list, a
    // value. It has its control paint it (DrawOverlay) and puts back what was under it. Showing it
    // again moves or repaints it. Opacity 0 .. 1.
    void ShowOverlay(CControl* control, CRect place, float opacity);
    void HideOverlay(const CControl* control);

    // From the controls. ControlClicked and ControlValueChanged answer whether they accept.
    virtual bool ControlClicked(CControl* control);
    virtual bool ControlReleased(CControl* control);
    virtual bool ControlValueChanged(CControl* control, float value);

    // From the view's timer: super group alone, else every enabled group.
    virtual bool TimerEvent();
    virtual void StartTracking(bool hidePointer);
    virtual void FinishTracking();
    virtual void SetTrackingControlGroup(CControlGroup* group);
    [[nodiscard]] virtual CControlGroup* GetTrackingControlGroup() const { return trackingGroup; }
    [[nodiscard]] virtual bool IsTracking() const { return tracking; }

    // Mouse and wheel: super group alone, else the tracking group alone, else the first group that
    // uses the event. Keys: super group alone, else every enabled group.
    virtual bool ProcessMouseDoubleClick();
    virtual bool ProcessMouseDown();
    virtual bool ProcessMouseUp();
    virtual bool ProcessMouseMove();
    virtual bool ProcessKeyDown(unsigned key);
    virtual bool ProcessKeyUp(unsigned key);
    virtual bool ProcessMouseWheel(float right, float up);
    // The window got or lost the keyboard.
    virtual void TookFocus() {}
    virtual void LostFocus() {}
    // Paints the window's own background; the buffer is clipped to the part. Here: the root group's
    // picture.
    virtual void DrawBackground(CRect part);
    // Fills 256 bytes.
    virtual bool GetParamText(CControl* control, char* text);
    virtual bool DropFile(const char* path);
    virtual bool DragEntered(const char* path);
    virtual void DragLeft(const char* path);

    // Takes a group out, for an owner that keeps it longer than this window. Not from its own
    // handlers.
    [[nodiscard]] std::unique_ptr<CControlGroup> DetachControlGroup(CControlGroup* group);

    // The last event of the mouse. The delta is the movement since the event before.
    [[nodiscard]] CPoint GetMousePos() const { return mousePosition; }
    [[nodiscard]] int GetMouseButtonID() const { return mouseButton; }
    [[nodiscard]] CSize GetMouseDelta() const { return mouseDelta; }
    [[nodiscard]] Modifiers GetModifiers() const { return modifiers; }
    [[nodiscard]] bool IsMouseButtonDown(int button) const;
    [[nodiscard]] bool GetTrackingOption() const { return trackingOption; }
    [[nodiscard]] int GetSclFactor() const { return buffer.GetSclFactor(); }
    // Stored pixels a logical pixel, 1 .. 4, from the next opening on. Nothing while open.
    void SetSclFactor(int scale);
    // In the order of attachment, the root group first.
    [[nodiscard]] const std::vector<std::unique_ptr<CControlGroup>>& GetControlGroups() const {
        return groups;
    }

    // Before Open. Without it the system's own view is made.
    void SetViewFactory(ViewFactory factory) { makeView = std::move(factory); }
    [[nodiscard]] PlatformView* GetView() const { return view.get(); }
    // For hosts that call when they are idle.
    void RunEvents();
    // A key that the view has not seen, passed on by the host; true when it was used.
    bool PressKey(unsigned key, Modifiers keys);
    bool ReleaseKey(unsigned key, Modifiers keys);

    // Pictures. When the folder does not exist, the built-in set given before stands for it.
    void SetBuiltInPictures(std::span<const BuiltInPicture> pictures) { builtIn = pictures; }
    void SetImageLibraryDir(const char* folder);
    [[nodiscard]] const char* GetImageLibraryDir() const { return imageFolder; }
    CImage* ImportImageFromFile(const char* fileName, int id, const char* name);
    [[nodiscard]] CImage* GetImageByID(int id) const;
    [[nodiscard]] CImage* GetImageByName(const char* name) const;

  private:
    friend class CControlGroup;
    friend class Dispatch;
    friend class WindowEvents;

    void FocusControlGroup(CControlGroup* group);
    void SetSuperControlGroup(CControlGroup* group, bool on);
    void ReleaseGroup(CControlGroup* group);
    void EndInteraction();
    void CancelTracking();
    void FinishEvent();
    struct Overlay {
        CControl* control;
        CRect place;
        float opacity;
    };
    void DrawOverlay(const Overlay& overlay);
    void DrawOverlays(CRect part);
    [[nodiscard]] CRect GrowToWhatIsPaintedWhole(CRect part,
                                                 const std::vector<CControlGroup*>& drawn) const;
    [[nodiscard]] std::vector<CControlGroup*> ListGroupsInDrawingOrder() const;
    void DeleteDestroyedControls();
    [[nodiscard]] bool MayRedraw(const CControl* control) const;
    [[nodiscard]] bool Holds(const CControlGroup* group) const;
    [[nodiscard]] std::vector<CControlGroup*> ListGroups() const;
    template <typename Handler>
    bool RouteMouse(const Handler& handler);
    template <typename Handler>
    bool RouteToAll(const Handler& handler);

    image_bank::User bankUser;
    std::shared_ptr<DispatchState> dispatch;
    CGraphicBuffer buffer;
    std::vector<std::unique_ptr<CControlGroup>> groups;
    ModalStack<CControlGroup> superGroups;
    std::vector<Overlay> overlays;  // the latest is on top
    CGraphicBuffer underOverlay;
    CControlGroup* trackingGroup = nullptr;
    CControlGroup* focusGroup = nullptr;
    CSize size;
    CPoint position;
    bool tracking = false;
    bool trackingOption = false;
    bool redrawMissed = false;
    bool keyboardWanted = false;
    CPoint mousePosition{-1, -1};
    CSize mouseDelta;
    int mouseButton = -1;
    unsigned buttonsDown = 0;  // one bit a button
    Modifiers modifiers;
    char imageFolder[kPathBufferBytes] = "";
    enum class ImageFolder { none, there, missing, refused } imageFolderState = ImageFolder::none;
    std::span<const BuiltInPicture> builtIn;
    ViewFactory makeView;
    std::unique_ptr<PlatformView> view;
};

}  // namespace norava
