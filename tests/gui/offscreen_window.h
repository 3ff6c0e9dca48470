#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "gui/platform/offscreen_view.h"
#include "gui/window_port.h"

namespace norava::test {

using Log = std::vector<std::string>;

// Lets a window open off-screen; `view` is what it shows itself in, until it is closed.
inline void UseOffscreenView(CWindowPort& window, OffscreenView*& view) {
    window.SetViewFactory([&view](PlatformEvents& events, void*, CSize size, int scale) {
        auto made = std::make_unique<OffscreenView>(events, size, scale);
        view = made.get();
        return made;
    });
}

// A window in an off-screen view that writes down what its controls report and keeps the books of
// gestures: clicks and releases of a control take turns, values come from those that work.
class OffscreenWindow : public CWindowPort {
  public:
    explicit OffscreenWindow(CSize windowSize = CSize(100, 80), int scale = 1)
        : CWindowPort(scale) {
        UseOffscreenView(*this, view);
        SetSize(windowSize);
    }
    ~OffscreenWindow() override { Close(); }
    OffscreenView& Show() {
        if (!IsOpen() && !Open()) std::abort();
        return *view;
    }
    template <typename Control>
    Control* Add(int id, CRect rect) {
        auto* control = GetRootControlGroup()->Add<Control>();
        control->SetID(id);
        control->SetRect(rect);
        return control;
    }

    bool ControlClicked(CControl* control) override {
        EXPECT_TRUE(open.insert(control).second) << "clicked twice";
        log.push_back("clicked " + std::to_string(control->GetID()));
        return true;
    }
    bool ControlReleased(CControl* control) override {
        EXPECT_EQ(open.erase(control), 1u) << "released twice";
        log.push_back("released " + std::to_string(control->GetID()));
        return true;
    }
    bool ControlValueChanged(CControl* control, float value) override {
        EXPECT_FALSE(control->IsDisabled());
        if (refuseValues) return false;
        values.push_back(value);
        log.push_back("changed " + std::to_string(control->GetID()));
        return true;
    }
    Log TakeLog() { return std::exchange(log, {}); }
    std::vector<float> TakeValues() { return std::exchange(values, {}); }

    OffscreenView* view = nullptr;
    std::set<CControl*> open;
    Log log;
    std::vector<float> values;
    bool refuseValues = false;
};

// A coloured rectangle that writes down its events and then does what the test wants.
class TestControl : public CControl {
  public:
    TestControl(Log& sharedLog, int controlId, CRect controlRect) : log(sharedLog) {
        SetID(controlId);
        SetRect(controlRect);
    }

    void DrawToBuffer() override {
        DrawBackground();
        CGraphicBuffer* buffer = GetGraphicBuffer();
        if (!buffer) return;
        ++drawn;
        CColor color(60 + 10 * GetID(), 40, static_cast<int>(200 * GetValue()), 200);
        buffer->FillRect(GetRect(), &color);
    }

    bool MouseDoubleClick() override { return Note("double"); }
    bool MouseDown() override { return Note("down"); }
    bool MouseUp() override { return Note("up"); }
    bool MouseMove() override { return Note("move"); }
    bool MouseWheel(float, float up) override { return Note(up > 0 ? "wheel up" : "wheel down"); }
    bool KeyDown(int key) override { return Note("key " + std::to_string(key)); }
    bool KeyUp(int) override { return Note("key up"); }
    bool TimerEvent() override { return Note("timer"); }
    bool TookFocus() override { return Note("took focus"); }
    bool LostFocus() override { return Note("lost focus"); }
    [[nodiscard]] bool WantsKeys() const override { return wantsKeys; }

    // Called with the event's name; its answer is the handler's.
    std::function<bool(TestControl&, const std::string&)> act;
    bool wantsKeys = false;
    int drawn = 0;

  private:
    bool Note(const std::string& event) {
        log.push_back(event + " " + std::to_string(GetID()));
        // The copy lives on when acting deletes this control after all.
        const auto action = act;
        return action ? action(*this, event) : true;
    }

    Log& log;
};

inline void Type(OffscreenView& view, const std::string& letters) {
    for (const char letter : letters)
        view.PressKey(static_cast<unsigned char>(letter));
}

// How many of an entry.
inline long Count(const Log& log, const std::string& entry) {
    return std::count(log.begin(), log.end(), entry);
}

}  // namespace norava::test
