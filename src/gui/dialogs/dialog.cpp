#include "gui/dialogs/dialog.h"

#include "gui/control_button.h"
#include "gui/label.h"

namespace norava {

namespace {

constexpr CColor kPlateGrey(43);
constexpr CColor kTitleTop(64);
constexpr CColor kTitleBottom(47);
constexpr CColor kText(246, 234, 211);
constexpr CColor kFrame(218, 195, 150);
constexpr int kTitleRows = 30;
constexpr CRect kTitleText{0, 8, 0, 16};

// Whoever had the keys may have gone meanwhile.
void GiveFocusBack(const CWindowPort& window, const CControl* before) {
    for (const auto& group : window.GetControlGroups()) {
        for (const auto& control : group->GetControls()) {
            if (control.get() != before || control->IsDisabled()) continue;
            control->GrabFocus();
            return;
        }
    }
}

}  // namespace

void DrawPlate(CGraphicBuffer& buffer, CRect plate, const std::string& title) {
    CColor line(0);
    CColor grey = kPlateGrey;
    const CRect inside(plate.left + 1, plate.top + 1, plate.width - 2, plate.height - 2);
    buffer.FillRect(plate, &line);
    buffer.FillRect(inside, &grey);
    for (int row = 0; row < kTitleRows; ++row) {
        CColor shade = Mixed(kTitleTop, kTitleBottom, row / double{kTitleRows - 1});
        buffer.FillRect(CRect(inside.left, inside.top + row, inside.width, 1), &shade);
    }
    buffer.FillRect(CRect(inside.left, inside.top + kTitleRows, inside.width, 1), &line);
    buffer.SetLineColor(kFrame);
    buffer.SetLineWidth(1);
    buffer.DrawRect(inside);
    DrawLabel(buffer, title,
              CRect(plate.left, plate.top + kTitleText.top, plate.width, kTitleText.height),
              {kText, TextAlign::center, true});
}

void CDialog::Begin(CWindowPort& window) {
    const CSize whole = window.GetSize();
    SetRect(CRect((whole.cx - size.cx) / 2, (whole.cy - size.cy) / 2, size));
    CreateControls();
    const CControlGroup* const focused = window.GetFocusControlGroup();
    focusBefore = focused != nullptr ? focused->GetFocusedControl() : nullptr;
    SetSuper(true);
    FirstFocus()->GrabFocus();
    Redraw();
}

void CDialog::End(const std::function<void()>& then) {
    CWindowPort* const window = GetWindowPort();
    if (window == nullptr) return;
    const std::function<void()> call = then;  // the dialog's own may go with it
    CControl* const before = focusBefore;
    SetSuper(false);
    window->DestroyControlGroup(this);
    GiveFocusBack(*window, before);
    window->DrawToBuffer();
    window->UpdateScreen();
    if (call) call();
}

void CDialog::Redraw() {
    CWindowPort* const window = GetWindowPort();
    if (window == nullptr) return;
    DrawToBuffer();
    window->UpdateScreen(GetRect());
}

CRect CDialog::Inside(int left, int top, int width, int height) const {
    return {GetRect().left + left, GetRect().top + top, width, height};
}

CControlButton* CDialog::AddButton(CRect place, const char* text) {
    auto* const button = Add<CControlButton>();
    button->SetRect(place);
    button->SetTextColor(kText);
    button->SetText(text);
    return button;
}

bool CDialog::ControlReleased(CControl* control) {
    const CWindowPort* const window = GetWindowPort();
    const bool isButton = dynamic_cast<CControlButton*>(control) != nullptr;
    if (!isButton || window == nullptr) return true;
    const bool inside = control->GetRect().IsPointInside(window->GetMousePos());
    FirstFocus()->GrabFocus();  // a button is no place to type in
    if (inside) ButtonPressed(control);
    return true;
}

bool CDialog::MouseDown() {
    CControlGroup::MouseDown();
    return true;  // nothing behind the dialog gets the mouse
}

bool CDialog::KeyDown(int key) {
    const CWindowPort* const window = GetWindowPort();
    const bool isForHost = window != nullptr && window->GetModifiers().IsCommand();
    if (CControlGroup::KeyDown(key)) return true;
    if (key == kKeyEnter)
        Accept();
    else if (key == kKeyEscape)
        Cancel();
    else
        return !isForHost;
    return true;
}

void CDialog::WindowCloses() {
    CWindowPort* const window = GetWindowPort();
    SetSuper(false);
    if (window != nullptr) window->DestroyControlGroup(this);
}

void CDialog::DrawBackground(CRect part) {
    CGraphicBuffer* const buffer = GetGraphicBuffer();
    if (buffer == nullptr) return;
    const PaintScope scope(buffer, part.GetIntersection(GetRect()));
    if (scope) DrawPlate(*buffer, GetRect(), title);
}

}  // namespace norava
