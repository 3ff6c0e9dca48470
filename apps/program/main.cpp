// norava-program: turns programs from one form into another, and holds the factory bank to its
// rules.

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>

#include "program/adjust.h"
#include "program/bank_check.h"
#include "program/check_picture.h"
#include "program/check_table.h"
#include "program_text/program_file.h"
#include "render/bad_input.h"

namespace norava {
namespace {

namespace fs = std::filesystem;

constexpr int kFaultStatus = 1;
constexpr int kBadInputStatus = 2;

struct Options {
    fs::path input;
    fs::path output;
    fs::path bank = "assets/programs";
    fs::path picture;
    std::string only;
    int jobs = 2;
};

// The programs whose "Category/Name" contains the wanted text.
std::vector<BankEntry> Chosen(const Options& options) {
    std::vector<BankEntry> bank = LoadBank(options.bank);
    std::erase_if(bank, [&](const BankEntry& entry) {
        const std::string name = entry.category + "/" + entry.program.name;
        return name.find(options.only) == std::string::npos;
    });
    if (bank.empty()) throw BadInput(options.bank.string() + ": no program is chosen");
    return bank;
}

int List(const Options& options) {
    for (const BankEntry& entry : Chosen(options)) {
        std::cout << entry.category << '/' << entry.program.name << '\t'
                  << entry.program.description << '\n';
    }
    return 0;
}

int Check(const Options& options) {
    const std::vector<CheckedProgram> programs = CheckBank(Chosen(options), options.jobs);
    WriteCheckTable(std::cout, programs);
    if (!options.picture.empty()) {
        std::ofstream picture(options.picture);
        WriteCheckPicture(picture, programs);
        picture.close();
        if (!picture) throw OutputError(options.picture.string() + ": cannot be written");
    }
    const bool good = std::ranges::all_of(programs, [](const auto& p) { return p.faults.empty(); });
    return good ? 0 : kFaultStatus;
}

// Pitch first: it hardly moves the level, the level never the pitch. Only pitched programs that
// are off by more than half the tolerance are retuned.
int Adjust(const Options& options) {
    for (const CheckedProgram& program : CheckBank(Chosen(options), options.jobs)) {
        const auto& figures = program.figures;
        const double cents = std::max(std::fabs(figures.centsA3), std::fabs(figures.centsC5));
        bool changed = false;
        if (program.entry.program.HasTag("pitched") && cents > kPitchTolerance / 2.0)
            changed = AdjustPitch(program, std::cerr);
        changed = AdjustLevel(program) || changed;
        if (changed) std::cout << program.entry.path.string() << '\n';
    }
    return 0;
}

void AddBankOptions(CLI::App& command, Options& options) {
    command.add_option("--bank", options.bank, "Folder of category folders")->capture_default_str();
    command.add_option("--only", options.only, "Only programs whose Category/Name contains this")
        ->type_name("TEXT");
    command.add_option("-j,--jobs", options.jobs, "Threads")
        ->check(CLI::Range(1, 64))
        ->capture_default_str();
}

int Run(int argc, const char* const* argv) {
    CLI::App app("Works on programs, the sounds of the Norava string synthesizer.");
    app.require_subcommand(1);
    Options options;
    auto* convert = app.add_subcommand(
        "convert", "Make a text (.txt) or a block (.norava) of a text, a block or a host's .fxp");
    convert->add_option("input", options.input)->required();
    convert->add_option("output", options.output)->required();
    auto* list = app.add_subcommand("list", "List a bank's programs");
    auto* check = app.add_subcommand("check", "Render a bank's programs and measure them");
    check->add_option("--picture", options.picture, "Draw the table into this SVG file, too");
    auto* adjust = app.add_subcommand(
        "adjust", "Rewrite Master Level, and the tuning of pitched programs, as the check wants");
    for (CLI::App* command : {list, check, adjust})
        AddBankOptions(*command, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kBadInputStatus;
    }
    if (list->parsed()) return List(options);
    if (check->parsed()) return Check(options);
    if (adjust->parsed()) return Adjust(options);
    SaveProgram(options.output, LoadProgram(options.input));
    return 0;
}

}  // namespace
}  // namespace norava

int main(int argc, char** argv) {
    try {
        const int status = norava::Run(argc, argv);
        norava::RequireWritten(std::cout, "standard output");
        return status;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "norava-program: %s\n", error.what());
        return norava::kBadInputStatus;
    }
}
