#pragma once

#include "framework/plugin_editor_interface.h"
#include "gui/keys.h"

namespace norava {

// A key of the host as the window port takes keys; 0 for those it has no use for.
[[nodiscard]] unsigned KeyFromHost(const EditorKey& key);
// What is held with it; the command key counts as control, as in the panel's own window.
[[nodiscard]] Modifiers ModifiersFromHost(const EditorKey& key);

}  // namespace norava
