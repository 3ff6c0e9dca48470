#pragma once

#include <vector>

#include "gui/platform/platform_view.h"

namespace norava {

// A view with no screen: tests and tools act as its user and read what it would show. Painting
// happens at once.
class OffscreenView : public PlatformView, private PixelTarget {
  public:
    OffscreenView(PlatformEvents& listener, CSize size, int scale);
    ~OffscreenView() override { *alive = false; }

    // The user's side.
    void MoveMouse(CPoint to);
    void PressMouse(int button = kMouseLeft, bool isDoubleClick = false);
    void ReleaseMouse(int button = kMouseLeft);
    void Click(CPoint at, int button = kMouseLeft);
    // Press, moves of at most `stepPixels` towards the other end, release.
    void Drag(CPoint from, CPoint to, int stepPixels = 1);
    bool TurnWheel(float up);
    bool PressKey(unsigned key);
    void Tick(int times = 1);
    void SetModifiers(Modifiers keys) { modifiers = keys; }
    [[nodiscard]] PlatformEvents& GetEvents() { return events; }

    // The screen's side.
    [[nodiscard]] CSize GetStoredSize() const { return stored; }
    // Red, green, blue (lowest byte first) of a stored pixel, y downwards.
    [[nodiscard]] uint32_t GetPixel(int x, int y) const;
    // All of them, rows from the top.
    [[nodiscard]] const std::vector<uint32_t>& GetPixels() const { return screen; }
    // The stored rectangles that were presented since the last call.
    [[nodiscard]] std::vector<CRect> TakePresented();
    [[nodiscard]] bool IsPointerHidden() const { return tracking && pointerHidden; }
    [[nodiscard]] bool IsTracking() const { return tracking; }
    [[nodiscard]] bool HasKeyboard() const { return keyboard; }

    void Redraw(CRect part) override;
    void Resize(CSize size) override;
    [[nodiscard]] std::optional<CPoint> GetMouseLocation() override { return mouse; }
    void TrackMouse(bool on, bool hidePointer) override;
    void WantKeyboard(bool on) override { keyboard = on; }
    void RunEvents() override {}
    void WaitForEvents() override {}
    void SetTitle(const char*) override {}
    [[nodiscard]] void* GetNativeHandle() override { return this; }

  private:
    void ShowPixels(const uint32_t* words, CSize size, CRect clip) override;

    PlatformEvents& events;
    // What a gesture asks between its events: one of them may have closed the window.
    std::shared_ptr<bool> alive = std::make_shared<bool>(true);
    int scaleFactor;
    CSize stored;
    std::vector<uint32_t> screen;  // rows from the top
    std::vector<CRect> presented;
    CPoint mouse{-1, -1};
    Modifiers modifiers;
    bool tracking = false;
    bool pointerHidden = false;
    bool keyboard = false;
};

}  // namespace norava
