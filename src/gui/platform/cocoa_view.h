#pragma once

#import <AppKit/AppKit.h>

#include <memory>
#include <optional>
#include <vector>

#include "gui/platform/platform_view.h"
#include "gui/platform/system_panels.h"

namespace norava::cocoa {
class View;
}

// The system's side of a view. Class names are shared by everything in a process, so this one has
// its product's name and changes when the class does.
@interface NoravaPanelView1 : NSView {
  @public
    norava::cocoa::View* owner;  // null once the window port has let go of it
  @private
    NSTimer* timer;
}
- (void)startTimer;
- (void)stopTimer;
@end

namespace norava::cocoa {

// A view of AppKit, inside the host's or with no parent in a window of its own. The run loop brings
// its events. A logical pixel is a point; the stored ones are the screen's own.
class View final : public PlatformView, private PixelTarget, private SystemPanels {
  public:
    View(PlatformEvents& listener, NSView* parentView, CSize viewSize, int scaleFactor);
    ~View() override;

    void Redraw(CRect part) override;
    void Resize(CSize newSize) override;
    [[nodiscard]] std::optional<CPoint> GetMouseLocation() override { return mouse; }
    void TrackMouse(bool on, bool hidePointer) override;
    void WantKeyboard(bool on) override;
    void RunEvents() override;
    void WaitForEvents() override;
    void SetTitle(const char* title) override;
    [[nodiscard]] void* GetNativeHandle() override { return view; }
    [[nodiscard]] SystemPanels* GetPanels() override { return this; }

    // From the system's view. The view may be deleted when those that report return.
    PlatformEvents& events;
    void Paint(NSRect dirty);
    void Press(NSEvent* event, int button);
    void Release(NSEvent* event, int button);
    void Move(NSEvent* event);
    void LeaveMouse(NSEvent* event);
    void Wheel(NSEvent* event);
    // False: the host may have the key.
    bool Key(NSEvent* event, bool down);
    [[nodiscard]] bool IsKeyboardWanted() const { return keyboardWanted; }
    void LoseParent();

  private:
    void ShowPixels(const uint32_t* words, CSize stored, CRect clip) override;
    bool AskForFile(const FileDialogRequest& request, FileChosen chosen) override;
    bool ShowMessage(const std::string& title, const std::string& text) override;
    [[nodiscard]] CPoint PlaceOf(NSEvent* event) const;

    NSView* const parent;
    NoravaPanelView1* view = nil;
    NSWindow* window = nil;  // of our own
    const int scale;
    CSize size;
    CPoint mouse{-1, -1};
    bool pointerHidden = false;
    double movementLeftX = 0.0;  // of a hidden pointer, less than a logical pixel
    double movementLeftY = 0.0;
    bool keyboardWanted = false;
    std::vector<uint32_t> rows;
};

NSString* Text(const std::string& utf8);

}  // namespace norava::cocoa
