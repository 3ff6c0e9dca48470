#include "fx/reverb_parameters.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "dsp/numbers.h"

namespace norava {

namespace {

enum class Unit {
    decibels,
    hertz,
    lowCutHertz,
    hundredHertz,
    milliseconds,
    percent,
    tenths,
    tenthSeconds,
    onOff
};

struct ParameterRow {
    const char* name;
    int minimum;
    int span;
    Unit unit;
};

constexpr std::array<ParameterRow, kReverbParameters> kRows{{
    {"Input", kReverbLevelOff, 421, Unit::decibels},
    {"LowCut", kReverbLowCutOff, 2981, Unit::lowCutHertz},
    {"HighCut", 5, 216, Unit::hundredHertz},
    {"Predelay", 0, 250, Unit::milliseconds},
    {"RoomSize", 1, 99, Unit::percent},
    {"Diffusion", 0, 100, Unit::percent},
    {"BassMultiplier", 2, 28, Unit::tenths},
    {"Crossover", 25, 1975, Unit::hertz},
    {"Decay", 1, 199, Unit::tenthSeconds},
    {"HighDamping", 5, 216, Unit::hundredHertz},
    {"Dry", kReverbLevelOff, 421, Unit::decibels},
    {"ER", kReverbLevelOff, 421, Unit::decibels},
    {"Reverb", kReverbLevelOff, 421, Unit::decibels},
    {"Width", 0, 200, Unit::percent},
    {"MuteInput", 0, 1, Unit::onOff},
    {"MuteDry", 0, 1, Unit::onOff},
    {"MuteER", 0, 1, Unit::onOff},
    {"MuteReverb", 0, 1, Unit::onOff},
}};

const ParameterRow& row(ReverbParameter parameter) {
    return kRows[static_cast<std::size_t>(parameter)];
}

const char* labelOf(Unit unit) {
    switch (unit) {
        case Unit::decibels:
            return "dB";
        case Unit::hertz:
        case Unit::lowCutHertz:
        case Unit::hundredHertz:
            return "Hz";
        case Unit::milliseconds:
            return "ms";
        case Unit::percent:
            return "%";
        case Unit::tenths:
            return "x";
        case Unit::tenthSeconds:
            return "s";
        case Unit::onOff:
            break;
    }
    return "";
}

}  // namespace

const fxReverbProgram kDefaultReverbProgram{
    {0.857482f, 0.018786f, 0.162037f, 0.0f, 0.494949f, 1.0f, 0.285714f, 0.240506f, 0.070352f,
     0.162037f, 0.857482f, 0.774347f, 0.572447f, 0.5f, 0.0f, 0.0f, 0.0f, 0.0f},
    "[1] Default Reverb"};

int reverbValueOf(ReverbParameter parameter, float normalised) {
    const float fallback = kDefaultReverbProgram.values[static_cast<std::size_t>(parameter)];
    const auto v = static_cast<double>(clampOr(normalised, 0.0f, 1.0f, fallback));
    const ParameterRow& r = row(parameter);
    return static_cast<int>(std::floor(r.minimum + r.span * v + 0.5));
}

void reverbParameterName(ReverbParameter parameter, char* text, std::size_t size) {
    std::snprintf(text, size, "%s", row(parameter).name);
}

void reverbParameterLabel(ReverbParameter parameter, char* text, std::size_t size) {
    std::snprintf(text, size, "%s", labelOf(row(parameter).unit));
}

void reverbParameterDisplay(ReverbParameter parameter, int value, char* text, std::size_t size) {
    const Unit unit = row(parameter).unit;
    const bool off = (unit == Unit::lowCutHertz && value <= kReverbLowCutOff) ||
                     (unit == Unit::hundredHertz && value >= kReverbFilterOff);
    if (unit == Unit::onOff) {
        std::snprintf(text, size, "%s", value != 0 ? "On" : "Off");
    } else if (off) {
        std::snprintf(text, size, "Off");
    } else if (unit == Unit::decibels) {
        FormatdB(value, text, size);
    } else if (unit == Unit::tenths || unit == Unit::tenthSeconds) {
        std::snprintf(text, size, "%d.%d", value / 10, value % 10);
    } else {
        std::snprintf(text, size, "%d", unit == Unit::hundredHertz ? value * 100 : value);
    }
}

void FormatdB(int tenths, char* text, std::size_t size) {
    if (tenths > kReverbLevelOff) {
        std::snprintf(text, size, "%d.%d", tenths / 10, std::abs(tenths % 10));
    } else {
        std::snprintf(text, size, "-Inf");
    }
}

double SfGetRatioFromdB(int tenths, int floor) {
    return tenths > floor ? std::pow(10.0, tenths / 200.0) : 0.0;
}

}  // namespace norava
