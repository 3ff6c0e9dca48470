#include "program/check_table.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>
#include <ostream>

namespace norava {

namespace {

struct Column {
    const char* title;
    const char* form;  // of a value
    double (*value)(const CheckedProgram&);
};

constexpr std::array kColumns{
    Column{"  LUFS", "%6.1f", [](const CheckedProgram& p) { return p.figures.loudness; }},
    Column{"  peak", "%6.1f", [](const CheckedProgram& p) { return p.figures.chordPeak; }},
    Column{"raised", "%6.1f", [](const CheckedProgram& p) { return p.figures.raisedPeak; }},
    Column{"    dc", "%6.0f", [](const CheckedProgram& p) { return p.figures.dc; }},
    Column{" decay", "%6.1f", [](const CheckedProgram& p) { return p.figures.decaySeconds; }},
    Column{"    A3", "%+6.1f", [](const CheckedProgram& p) { return p.figures.centsA3; }},
    Column{"    C5", "%+6.1f", [](const CheckedProgram& p) { return p.figures.centsC5; }},
    Column{"  veloc", "%7.1f", [](const CheckedProgram& p) { return p.figures.velocityRange; }},
    Column{"  wheel", "%7.1f", [](const CheckedProgram& p) { return p.figures.wheelChange; }},
    Column{"nearest", "%7.1f", [](const CheckedProgram& p) { return p.nearestDistance; }},
};

std::string Cell(const char* form, double value) {
    char text[32];
    std::snprintf(text, sizeof(text), form, value);
    return text;
}

std::string Title(std::string_view text) {
    constexpr std::size_t kTitleWidth = 38;
    std::string title(text);
    title.resize(std::max(kTitleWidth, title.size()), ' ');
    return title;
}

std::string Remarks(const CheckedProgram& program) {
    std::string text = program.entry.program.HasTag("pitched") ? "  " : "  (unpitched) ";
    if (program.entry.program.HasTag("drone")) text += "(drone) ";
    for (const std::string& fault : program.faults)
        text += "! " + fault + " ";
    while (text.ends_with(' '))
        text.pop_back();
    return text;
}

std::string PitchRange(std::span<const CheckedProgram> programs, const char* title,
                       double ProgramFigures::*cents) {
    double lowest = std::numeric_limits<double>::infinity(), highest = -lowest;
    for (const CheckedProgram& program : programs) {
        if (program.entry.program.HasTag("pitched")) continue;
        lowest = std::min(lowest, program.figures.*cents);
        highest = std::max(highest, program.figures.*cents);
    }
    if (lowest > highest) return {};
    return title + Cell(" %+.1f", lowest) + Cell(" to %+.1f cents", highest);
}

void WriteRange(std::ostream& out, std::span<const CheckedProgram> programs, const char* title,
                bool highest) {
    out << Title(title);
    for (const Column& column : kColumns) {
        double end = highest ? -std::numeric_limits<double>::infinity()
                             : std::numeric_limits<double>::infinity();
        for (const CheckedProgram& program : programs) {
            const double value = column.value(program);
            end = highest ? std::max(end, value) : std::min(end, value);
        }
        out << ' ' << Cell(column.form, end);
    }
    out << '\n';
}

}  // namespace

void WriteCheckTable(std::ostream& out, std::span<const CheckedProgram> programs) {
    out << Title("program");
    for (const Column& column : kColumns)
        out << ' ' << column.title;
    out << '\n';
    std::size_t faulty = 0;
    for (const CheckedProgram& program : programs) {
        out << Title(program.entry.category + "/" + program.entry.program.name);
        for (const Column& column : kColumns)
            out << ' ' << Cell(column.form, column.value(program));
        out << Remarks(program) << '\n';
        if (!program.faults.empty()) ++faulty;
    }
    if (programs.empty()) return;
    WriteRange(out, programs, "lowest", false);
    WriteRange(out, programs, "highest", true);
    const std::string a3 = PitchRange(programs, "not pitched: A3", &ProgramFigures::centsA3);
    if (!a3.empty()) out << a3 << PitchRange(programs, ", C5", &ProgramFigures::centsC5) << '\n';
    out << programs.size() << " programs, " << faulty << " with faults\n";
}

}  // namespace norava
