#pragma once

#include "framework/plugin_editor_interface.h"

namespace norava {

// A key of the host as the window port takes keys; 0 for those it has no use for.
[[nodiscard]] unsigned KeyFromHost(const EditorKey& key);

}  // namespace norava
