// Stands for the fuzzer where there is none: runs a target once with each file of the folders (or
// single files) that are named, each in a block of exactly its size.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <vector>

#include "target.h"

namespace fs = std::filesystem;

static void Run(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> read{std::istreambuf_iterator<char>(file), {}};
    const std::vector<std::uint8_t> exact(read.begin(), read.end());
    // Told before, so that a crash has a name.
    std::printf("%s, %zu bytes\n", path.filename().c_str(), exact.size());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

int main(int argc, char** argv) {
    std::set<fs::path> files;
    for (const fs::path place : std::vector<const char*>(argv + 1, argv + argc)) {
        if (fs::is_regular_file(place)) files.insert(place);
        if (fs::is_directory(place)) files.insert(fs::directory_iterator(place), {});
    }
    std::ranges::for_each(files, Run);
    std::printf("%zu inputs\n", files.size());
    return files.empty() ? 2 : 0;
}
