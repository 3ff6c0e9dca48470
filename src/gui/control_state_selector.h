#pragma once

#include <string>
#include <vector>

#include "gui/control_display.h"

namespace norava {

// A row, column or diagonal of states of which a click picks one. State i of n has the value
// i / (n - 1).
class CControlStateSelector : public CControlDisplay {
  public:
    // At least two make sense; below 1 nothing changes.
    virtual void SetNumStates(int states);
    [[nodiscard]] virtual int GetNumStates() const { return numStates; }
    // Each state is drawn from the picture, off or on: two frames, on below off or to the right of
    // it, the first at the origin. With `hasOneEach` each state has frames of its own, which follow
    // in the other direction. The size is also what a state takes up in the control. The bank keeps
    // the picture.
    virtual void SetStateSelectorImage(CImage* picture, bool onIsBelow, bool hasOneEach,
                                       CSize stateSize, CPoint origin);
    // From one state to the next, in pixels.
    virtual void SetStatesGap(CSize step) { gap = step; }
    // Numbers the states from the last one.
    virtual void SetReversed(bool on) { reversed = on; }
    // Shown on a state, or beside its picture.
    virtual void SetStateText(int state, const char* newText);

    [[nodiscard]] float IDToValue(int state) const;
    // A value above 1 can give the number of states, which is none of them.
    [[nodiscard]] int ValueToID(float ofValue) const;
    // In window coordinates; the place counts from the first, also when reversed.
    [[nodiscard]] CRect GetPlaceRect(int place) const;

    using CControl::SetRect;
    void DrawToBuffer() override;
    bool MouseDown() override;

  private:
    [[nodiscard]] int StateAtPlace(int place) const {
        return reversed ? numStates - 1 - place : place;
    }
    void DrawPlace(CGraphicBuffer& buffer, int place) const;

    int numStates = 2;
    CImage* picture = nullptr;
    bool onBelow = true;
    bool oneEach = false;
    CSize stateSize;
    CPoint pictureOrigin;
    CSize gap;
    bool reversed = false;
    std::vector<std::string> texts;
};

}  // namespace norava
