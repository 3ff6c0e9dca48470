// norava-tune: makes a MIDI file of a tune written as text.

#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <string>

#include "tune/midi_writer.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: norava-tune TUNE.txt SONG.mid\n", stderr);
        return 2;
    }
    try {
        std::ifstream in(argv[1], std::ios::binary);
        if (!in) throw std::runtime_error("cannot be read");
        const std::string text{std::istreambuf_iterator<char>(in), {}};
        const auto file = norava::WriteMidiFile(norava::ParseScore(text));
        std::ofstream out(argv[2], std::ios::binary);
        out.write(reinterpret_cast<const char*>(file.data()), std::streamsize(file.size()));
        out.close();
        if (!out) throw std::runtime_error(std::string("cannot write ") + argv[2]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", argv[1], error.what());
        return 2;
    }
    return 0;
}
