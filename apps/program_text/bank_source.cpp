// norava-bank-source: turns the texts of the factory programs into the source file that builds
// them into the instrument. A program of its own, for it runs before the engine is there.

#include <cstdio>
#include <exception>
#include <fstream>
#include <string>

#include "program_text/program_file.h"
#include "render/bad_input.h"

namespace norava {
namespace {

std::string Literal(const std::string& text) {
    std::string literal = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') literal += '\\';
        literal += c;
    }
    return literal + "\"";
}

void WriteBlock(std::ofstream& out, std::size_t number, const Program& program) {
    constexpr int kBytesPerLine = 24;
    out << "constexpr unsigned char kBlock" << number << "[] = {";
    int column = 0;
    for (const char byte : ToBlock(program)) {
        if (column++ % kBytesPerLine == 0) out << "\n    ";
        out << int(static_cast<unsigned char>(byte)) << ',';
    }
    out << "\n};\n";
}

void WriteSource(const char* path, const std::vector<BankEntry>& bank) {
    std::ofstream out(path);
    out << "// Made by norava-bank-source from assets/programs.\n\n"
           "#include \"presets/factory_bank.h\"\n\n"
           "namespace norava {\n\nnamespace {\n\n";
    for (std::size_t i = 0; i < bank.size(); ++i)
        WriteBlock(out, i, bank[i].program);
    out << "\nconstexpr FactoryProgram kBank[] = {\n";
    for (std::size_t i = 0; i < bank.size(); ++i) {
        out << "    {" << Literal(bank[i].category) << ", " << Literal(bank[i].program.name)
            << ", kBlock" << i << "},\n";
    }
    out << "};\n\n}  // namespace\n\n"
           "std::span<const FactoryProgram> GetFactoryBank() {\n    return kBank;\n}\n\n"
           "}  // namespace norava\n";
    out.close();
    if (!out) throw BadInput(std::string(path) + ": cannot be written");
}

}  // namespace
}  // namespace norava

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: norava-bank-source FOLDER SOURCE.cpp\n", stderr);
        return 2;
    }
    try {
        norava::WriteSource(argv[2], norava::LoadBank(argv[1]));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 2;
    }
    return 0;
}
