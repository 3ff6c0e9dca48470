#include "program/adjust.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>
#include <string_view>

#include "parameters/parameter_table.h"
#include "program_text/matrix_text.h"
#include "program_text/text_tokens.h"
#include "program_text/value_text.h"
#include "render/bad_input.h"

namespace norava {

namespace {

namespace fs = std::filesystem;

constexpr int kLastSlot = param::kMatrix + (kMatrixSlots - 1) * kMatrixSlotSize;
constexpr std::string_view kKeysToPitch = "key num > pitch ";

// Replaces the line that begins with `name`, or adds one at the end.
void RewriteLine(const fs::path& path, const std::string& name, const std::string& value) {
    std::ifstream in(path);
    std::string text;
    bool found = false;
    const int parameter = FindParameter(name);  // whatever the case of its letters; -1: a slot
    for (std::string line; std::getline(in, line);) {
        const auto word = Trim(std::string_view(line).substr(0, line.find('=')));
        if (word == name || (parameter >= 0 && FindParameter(word) == parameter)) {
            line = name + " = " + value;
            found = true;
        }
        text += line + "\n";
    }
    in.close();
    if (!found) text += name + " = " + value + "\n";
    ParseProgram(text, path.string());  // refuses a value that stands there in other words, too
    fs::path beside = path;
    beside += ".new";
    std::ofstream out(beside);
    out << text;
    out.close();
    std::error_code error;
    if (out) fs::rename(beside, path, error);
    if (!out || error) throw OutputError(path.string() + ": cannot be written");
}

float Rounded(double value, double steps) {
    return float(std::round(std::clamp(value, 0.0, 1.0) * steps) / steps);
}

std::string Text(int index, float value) {
    return FormatValue(GetParameter(index), value);
}

}  // namespace

bool AdjustLevel(const CheckedProgram& checked) {
    constexpr double kDecibelsPerKnob = 96.0;  // the whole way of Master Level
    constexpr double kMargin = 0.3;            // dB kept from both limits
    double change = kLoudnessTarget - checked.figures.loudness;
    const double room = kHighestPeak - kMargin - checked.figures.chordPeak;
    if (room < change) change = std::max(room, change - kLoudnessTolerance + kMargin);
    const float old = checked.entry.program.values[param::kMasterLevel];
    const float level = Rounded(double(old) + change / kDecibelsPerKnob, 1000.0);
    if (level == old) return false;
    RewriteLine(checked.entry.path, GetParameter(param::kMasterLevel).name,
                Text(param::kMasterLevel, level));
    return true;
}

bool AdjustPitch(const CheckedProgram& checked, std::ostream& notes) {
    constexpr double kA3 = 57.0, kC5 = 72.0;
    constexpr double kKeys = 80.0;           // the matrix counts keys in eightieths
    constexpr double kCentsPerUnit = 200.0;  // of the destination "pitch"
    const fs::path& path = checked.entry.path;
    const auto& values = checked.entry.program.values;
    const auto& figures = checked.figures;
    const ConstMatrixSlot slot(&values[kLastSlot], kMatrixSlotSize);
    const std::string slotText = FormatMatrixSlot(slot).value_or("other values");
    const bool isOff = slotText.starts_with("---");
    const double oldTune = std::trunc(double(values[param::kTune]) * 198.0 - 99.0);
    double tune = oldTune - (figures.centsA3 + figures.centsC5) / 2.0;
    bool changed = false;
    if (isOff || slotText.starts_with(kKeysToPitch)) {
        const double oldAmount =
            isOff ? 0.0 : double(slot[1]) * double(slot[1]) * (slot[2] != 0.0f ? -1.0 : 1.0);
        // What is wanted at key k is Tune + amount * k / kKeys units.
        const double slope = (figures.centsA3 - figures.centsC5) / (kC5 - kA3);
        const double amount = oldAmount + slope * kKeys / kCentsPerUnit;
        const float knob = Rounded(std::sqrt(std::fabs(amount)), 1000.0);
        const double newAmount = std::copysign(double(knob) * double(knob), amount);
        tune = oldTune - figures.centsA3 - (newAmount - oldAmount) * kCentsPerUnit * kA3 / kKeys;
        RewriteLine(
            path, "Mod " + std::to_string(kMatrixSlots),
            std::string(kKeysToPitch) + (amount < 0.0 ? "-" : "") + Text(kLastSlot + 1, knob));
        changed = true;
    } else {
        notes << path.string() << ": slot " << kMatrixSlots << " is taken (" << slotText
              << "), Tune alone is set\n";
    }
    const int cents = int(std::lround(std::clamp(tune, -99.0, 99.0)));
    // In the middle of its step, so that no rounding moves it to the next.
    const double middle = cents == 0 ? 0.0 : cents + (cents > 0 ? 0.5 : -0.5);
    const float tuneValue = Rounded((middle + 99.0) / 198.0, 10000.0);
    if (tuneValue == values[param::kTune]) return changed;
    RewriteLine(path, "Tune", Text(param::kTune, tuneValue));
    return true;
}

}  // namespace norava
