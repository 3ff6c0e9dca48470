#include "gui/window_port_standalone.h"

#include <algorithm>

namespace norava {

bool CWindowPortStandalone::Open(void*) {
    return CWindowPort::Open(static_cast<void*>(nullptr));
}

void CWindowPortStandalone::SetSize(CSize newSize) {
    CWindowPort::SetSize(CSize(std::max(1, newSize.cx), std::max(1, newSize.cy)));
}

}  // namespace norava
