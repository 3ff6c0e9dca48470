#pragma once

#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <functional>
#include <memory>
#include <optional>

#include "gui/platform/platform_view.h"
#include "gui/platform/system_panels.h"
#include "gui/platform/tick_clock.h"
#include "gui/platform/win32_drop.h"

namespace norava::win32 {

// A window of Windows, inside the host's or with no parent by itself. The host's loop (or our own)
// brings its messages; nothing is asked for in the host's idle call. The windows of the system are
// in stored pixels, everything that is reported in logical ones.
class View final : public PlatformView, private PixelTarget, private SystemPanels {
  public:
    // Null on failure.
    static std::unique_ptr<View> Open(PlatformEvents& listener, HWND parent, CSize size, int scale);
    ~View() override;

    void Redraw(CRect part) override;
    void Resize(CSize newSize) override;
    [[nodiscard]] std::optional<CPoint> GetMouseLocation() override { return mouse; }
    void TrackMouse(bool on, bool hidePointer) override;
    void WantKeyboard(bool on) override;
    void RunEvents() override;
    void WaitForEvents() override;
    void SetTitle(const char* title) override;
    [[nodiscard]] void* GetNativeHandle() override { return window; }
    [[nodiscard]] SystemPanels* GetPanels() override { return this; }

  private:
    View(PlatformEvents& listener, HWND parentWindow, CSize stored, int scaleFactor);
    [[nodiscard]] bool Create();
    [[nodiscard]] SIZE OuterSize() const;

    static LRESULT CALLBACK Receive(HWND window, UINT message, WPARAM word, LPARAM value);
    // Empty: the message means nothing here. The view may be deleted when these return.
    std::optional<LRESULT> Handle(UINT message, WPARAM word, LPARAM value);
    std::optional<LRESULT> HandleMouse(UINT message, WPARAM word, LPARAM value);
    std::optional<LRESULT> HandleKey(UINT message, WPARAM word, LPARAM value);
    void Press(int button, CPoint at, bool isDouble);
    void Release(int button, CPoint at);
    void MoveMouse(CPoint at);
    void FollowHiddenPointer();
    LRESULT TypeCharacter(wchar_t unit, LPARAM value);
    void Paint();
    void RunPosted();

    void ShowPixels(const uint32_t* words, CSize size, CRect clip) override;
    bool AskForFile(const FileDialogRequest& request, FileChosen chosen) override;
    bool ShowMessage(const std::string& title, const std::string& text) override;
    // Acts when the call under way has returned.
    void Post(std::function<void()> action);
    [[nodiscard]] CPoint ToLogical(CPoint at) const;

    PlatformEvents& events;
    const HWND parent;  // null: a window of its own
    HWND window = nullptr;
    const int scale;
    CSize stored;
    // What a handler asks when it has reported something: that may have deleted the view.
    std::shared_ptr<bool> alive = std::make_shared<bool>(true);
    DropTarget* drop = nullptr;
    bool oleStarted = false;
    TickClock ticks;
    HDC paintingOn = nullptr;
    std::function<void()> posted;

    CPoint mouse{-1, -1};
    bool mouseIsInside = false;
    unsigned buttonsDown = 0;
    bool pointerHidden = false;
    POINT pointerStart{};
    POINT pointerLast{};
    CSize movementLeft;  // of a hidden pointer, less than a logical pixel
    HWND focusBefore = nullptr;
    bool keyboardWanted = false;
    wchar_t firstHalf = 0;  // of a character outside the first plane
};

Modifiers ModifiersNow();

}  // namespace norava::win32
