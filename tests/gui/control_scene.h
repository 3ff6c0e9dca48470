#pragma once

#include <functional>
#include <set>

#include "gui/offscreen_window.h"

namespace norava::test {

// A window that keeps the books of gestures: clicks and releases of a control must take turns, and
// values come only in between. It may refuse.
class GestureWindow : public OffscreenWindow {
  public:
    using OffscreenWindow::OffscreenWindow;

    bool ControlClicked(CControl* control) override {
        if (refuse) return false;
        if (!open.insert(control).second) log.push_back("clicked twice");
        OffscreenWindow::ControlClicked(control);
        return true;
    }
    bool ControlReleased(CControl* control) override {
        if (open.erase(control) == 0) log.push_back("released twice");
        OffscreenWindow::ControlReleased(control);
        return true;
    }
    bool ControlValueChanged(CControl* control, float value) override {
        values.push_back(value);
        if (!silent) OffscreenWindow::ControlValueChanged(control, value);
        return !refuseValues;
    }
    bool GetParamText(CControl* control, char* text) override {
        CopyText(text, kNameBufferBytes, std::to_string(control->GetValue()).substr(0, 5) + " s");
        return true;
    }
    Log TakeLog() { return std::exchange(log, {}); }
    std::vector<float> TakeValues() { return std::exchange(values, {}); }

    template <typename Control>
    Control* Add(int id, CRect rect) {
        auto* control = GetRootControlGroup()->Add<Control>();
        control->SetID(id);
        control->SetRect(rect);
        return control;
    }

    std::set<CControl*> open;
    std::vector<float> values;
    bool refuse = false;
    bool refuseValues = false;
    bool silent = false;  // value changes stay out of the log
};

}  // namespace norava::test
