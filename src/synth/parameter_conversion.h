#pragma once

#include "parameters/parameter.h"

namespace norava {

// On for any value but exactly 0, a NaN included. Decided on the bits, because the audio thread
// reads denormals as 0.
bool IsOn(float value);

// What the engine makes of the stored value `raw` of a parameter, in the units of its curve. Always
// finite and inside the curve's range: hosts and saved states can hold any float, and this is the
// one place that knows what each means. A NaN counts as the parameter's default, a value beyond
// either end as that end, a menu position that names no item as the curve says. Any thread.
double EngineValue(const Parameter& parameter, float raw);

// trunc(value * (high - low) + low), within low..high; `low` for a NaN.
int paramToInt(float value, int low, int high);

}  // namespace norava
