#include "gui/window_port_standalone.h"

#include <algorithm>

namespace norava {

bool CWindowPortStandalone::Open(void*) {
    if (!CWindowPort::Open(static_cast<void*>(nullptr))) return false;
    GetView()->SetTitle(title.c_str());
    return true;
}

void CWindowPortStandalone::SetSize(CSize newSize) {
    CWindowPort::SetSize(CSize(std::max(1, newSize.cx), std::max(1, newSize.cy)));
}

void CWindowPortStandalone::SetTitle(const char* newTitle) {
    title = newTitle;
    if (IsOpen()) GetView()->SetTitle(title.c_str());
}

void CWindowPortStandalone::Run() {
    while (IsOpen()) {
        GetView()->WaitForEvents();
        RunEvents();
    }
}

}  // namespace norava
