#if !defined(__linux__) && !defined(_WIN32) && !defined(__APPLE__)

#include "gui/platform/platform_view.h"

namespace norava {

// No window system is built in on this system: editors stay closed, everything else works.
std::unique_ptr<PlatformView> OpenNativeView(PlatformEvents&, void*, CSize, int) {
    return nullptr;
}

int GetNativeScale() {
    return 1;
}

}  // namespace norava

#endif
