#include "gui/control_state_selector.h"

#include <algorithm>
#include <cmath>

namespace norava {

namespace {

constexpr CColor kFace(80);
constexpr CColor kFaceBottom(60);
constexpr CColor kChosen(41, 40, 37);
constexpr CColor kChosenBottom(58, 52, 40);
constexpr CColor kChosenText(255, 224, 154);
constexpr CColor kMark(246, 180, 92);

}  // namespace

void CControlStateSelector::SetNumStates(int states) {
    if (states >= 1) numStates = states;
}

void CControlStateSelector::SetStateSelectorImage(CImage* newPicture, bool onIsBelow,
                                                  bool hasOneEach, CSize size, CPoint origin) {
    picture = newPicture;
    onBelow = onIsBelow;
    oneEach = hasOneEach;
    stateSize = size;
    pictureOrigin = origin;
}

void CControlStateSelector::SetStateText(int state, const char* newText) {
    constexpr int kMostTexts = 1024;
    if (state < 0 || state >= kMostTexts || !newText) return;
    texts.resize(std::max(texts.size(), static_cast<size_t>(state) + 1));
    texts[static_cast<size_t>(state)] = newText;
}

float CControlStateSelector::IDToValue(int state) const {
    if (state < 0) return 0.0f;
    if (state >= numStates) return 1.0f;
    if (numStates < 2) return 0.0f;
    // The fraction may fall short of the state it stands for, which truncation would show.
    float fraction = static_cast<float>(state) / static_cast<float>(numStates - 1);
    while (ValueToID(fraction) < state)
        fraction = std::nextafter(fraction, 2.0f);
    return fraction;
}

int CControlStateSelector::ValueToID(float ofValue) const {
    const float state = static_cast<float>(numStates - 1) * ofValue;
    if (!(state > 0.0f)) return 0;
    return state >= static_cast<float>(numStates) ? numStates : static_cast<int>(state);
}

CRect CControlStateSelector::GetPlaceRect(int place) const {
    CPoint corner = GetPosition();
    corner.Shift({SaturatedInt(int64_t{gap.cx} * place), SaturatedInt(int64_t{gap.cy} * place)});
    return {corner, stateSize};
}

bool CControlStateSelector::MouseDown() {
    if (GetMouseBtn() != kMouseLeft || !SendClicked()) return false;
    for (int place = 0; place < numStates; ++place) {
        if (!GetPlaceRect(place).IsPointInside(GetMousePos())) continue;
        const float chosen = IDToValue(StateAtPlace(place));
        if (chosen != GetValue()) ChangeValue(chosen);
        break;
    }
    SendReleased();
    return true;
}

void CControlStateSelector::DrawPlace(CGraphicBuffer& buffer, int place) const {
    const int state = StateAtPlace(place);
    const bool on = state == ValueToID(GetValue());
    const CRect area = GetPlaceRect(place);
    if (picture) {
        const CSize step(stateSize.cx * (onBelow ? (oneEach ? state : 0) : (on ? 1 : 0)),
                         stateSize.cy * (onBelow ? (on ? 1 : 0) : (oneEach ? state : 0)));
        CPoint from = pictureOrigin;
        from.Shift(step);
        buffer.DrawImage(picture, area, from);
    } else {
        buffer.FillRectGradVert(area, on ? kChosen : kFace, on ? kChosenBottom : kFaceBottom);
        buffer.SetLineColor(CColor(0, 150));
        buffer.DrawRect(area);
        CColor mark = kMark;
        if (on)
            buffer.FillRect(CRect(area.left + 1, area.GetBottom() - 2, area.width - 2, 1), &mark);
    }
    if (static_cast<size_t>(state) >= texts.size()) return;
    LabelStyle style = GetLabelStyle();
    if (on) style.color = kChosenText;
    DrawLabel(buffer, texts[static_cast<size_t>(state)], area, style);
}

void CControlStateSelector::DrawToBuffer() {
    DrawBackground();
    const PaintScope scope(GetGraphicBuffer(), GetRect());
    if (!scope) return;
    for (int place = 0; place < numStates; ++place)
        if (GetPlaceRect(place).Intersects(GetRect())) DrawPlace(*GetGraphicBuffer(), place);
}

}  // namespace norava
