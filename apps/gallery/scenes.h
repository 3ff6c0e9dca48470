#pragma once

#include <string>

namespace norava {

// Writes one picture of the whole gallery in six states: a held button; text being edited, a
// scrolled list and a button under the mouse; an open menu; a long one; a dragged knob; a list that
// fades in. No screen is needed.
// False when the file cannot be written.
[[nodiscard]] bool WriteScenes(const std::string& path, int scale);

}  // namespace norava
