#pragma once

#include <cstdint>
#include <span>

#include "gui/geometry.h"

// The instrument's panel as data: its pictures, its controls and the lettering of its background.
// assets/panel/render.py reads the rows of panel_layout.cpp to set the lettering and to size the
// pictures, so that each place and size is written once.

namespace norava {

inline constexpr CSize kPanelSize(855, 532);

// Numbers of the pictures, which controls and drawing name.
enum PictureId : int {
    kNoPicture = -1,
    kBackgroundPicture = 0,
    kStringPicture = 12,
    kLowerDamperPicture = 13,
    kUpperDamperPicture = 14,
    kAboutPicture = 15,
    kPreviousArrowPicture = 16,
    kNextArrowPicture = 17,
    kOptionsPicture = 18,
};

// Frames are stacked from top to bottom, the first is the value 0. All sizes in logical pixels.
struct PanelPicture {
    int id;
    const char* fileName;  // in the folder "Graphics"
    CSize frame;
    int frames;
};
// In the order in which the editor asks for them.
[[nodiscard]] std::span<const PanelPicture> GetPanelPictures();
// Null for a number that no picture has.
[[nodiscard]] const PanelPicture* FindPanelPicture(int id);

// Controls that are no parameter; their numbers lie beyond the last one.
enum PanelControlId : int {
    kProgramDisplay = 1000,
    kPreviousProgram,
    kNextProgram,
    kOptionsMenu,
    kNamePlate,
};

struct PanelControl {
    int id;       // the parameter's index, or a PanelControlId
    int picture;  // kNoPicture: closed menus and displays, whose fields belong to the background
    CRect rect;
};
[[nodiscard]] std::span<const PanelControl> GetPanelControls();
// Null for an id that the panel has no control for.
[[nodiscard]] const PanelControl* FindPanelControl(int id);

enum class PanelLabelStyle : std::uint8_t {
    title,    // of a section
    control,  // under or above a control
    wide,     // the same, spaced out
    number,   // of a slot
    window,   // on the string window
    small,    // beside a row
    readingUp,
    readingDown,
};

// Lettering of the background: capitals on a baseline, centred. Turned labels have their baseline
// at x and their centre at y.
struct PanelLabel {
    const char* text;
    float x;
    float y;
    PanelLabelStyle style;
};
[[nodiscard]] std::span<const PanelLabel> GetPanelLabels();

// Where the strings move; nothing of them is drawn outside.
inline constexpr CRect kStringWindow(270, 167, 215, 102);

}  // namespace norava
