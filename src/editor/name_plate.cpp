#include "editor/name_plate.h"

#include <utility>

namespace norava {

NamePlate::NamePlate(std::function<void()> clickAction) : onClick(std::move(clickAction)) {
    for (const char* factor : {"100 %", "200 %", "300 %"})
        AddTextItem(factor);
}

void NamePlate::SetZoom(int factor) {
    for (int i = 0; i < GetNumItems(); ++i)
        SetItemMarkered(i, i == factor - 1);
    SetValue(static_cast<float>(factor - 1));
}

bool NamePlate::MouseDown() {
    if (IsListOpen() || GetMouseBtn() != kMouseLeft) return CControlMenu::MouseDown();
    clicked = BeginGesture(false);
    return clicked;
}

bool NamePlate::MouseUp() {
    if (!clicked || GetMouseBtn() != kMouseLeft) return CControlMenu::MouseUp();
    clicked = false;
    EndGesture();
    // The box takes the window over: nothing of this control may come after it.
    if (IsMouseOver()) onClick();
    return true;
}

}  // namespace norava
