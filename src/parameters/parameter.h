#pragma once

#include <cstdint>

#include "parameters/menus.h"

namespace norava {

// How a stored value v becomes the quantity that the engine works with.
enum class CurveShape : std::uint8_t {
    power,       // offset + scale * v^exponent, v in 0..1
    squareRoot,  // sqrt(v), v in 0..1
    decibels,    // 10^((offset + scale * v) / 10), v in 0..1
    steps,       // whole steps from -99 to 99 of `scale` each, v in 0..1
    onOff,       // 1 for any value but exactly 0, a NaN included
    menu,        // the item's position; the default item for a value that names none
    routing,     // the same, but kNoItem for a value that names none
    positions,   // v itself, v * 6 being one of the seven positions 0..6
    unused,
};

struct Curve {
    CurveShape shape = CurveShape::power;
    double offset = 0.0;
    double scale = 1.0;
    int exponent = 1;
};

// A matrix source that adds 0, a destination that reaches nothing.
inline constexpr int kNoItem = -1;

enum class Unit : std::uint8_t { percent, hertz };

// How a value is written for the user.
enum class TextForm : std::uint8_t {
    percentTenths,  // "50.0"
    wholePercent,   // "50"
    offOn,          // "Off", "On"
    chorusHertz,    // 0.1 + 5 v without decimals
    position,       // whole positions 0..6
};

enum class ControlKind : std::uint8_t {
    none,
    knob,
    knobWithCentre,
    knobWithPositions,
    fader,
    faderWithCentre,
    button,
    menu,
};

struct Parameter {
    int index;
    const char* name;  // the host sees it only below kNumHostParameters
    float defaultValue;
    Curve curve;
    ControlKind control;
    Menu items = {};
    TextForm text = TextForm::percentTenths;
    Unit unit = Unit::percent;
};

}  // namespace norava
