// Stands for the fuzzer where there is none: runs a target once with each file of the folders (or
// single files) that are named, each in a block of exactly its size.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "target.h"

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> FilesOf(const fs::path& place) {
    std::vector<fs::path> files;
    if (fs::is_regular_file(place)) files.push_back(place);
    if (fs::is_directory(place)) {
        for (const auto& entry : fs::directory_iterator(place))
            files.push_back(entry.path());
    }
    std::ranges::sort(files);
    return files;
}

void Run(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> read{std::istreambuf_iterator<char>(file), {}};
    const std::vector<std::uint8_t> exact(read.begin(), read.end());
    // Told before, so that a crash has a name.
    std::printf("%s, %zu bytes\n", path.filename().c_str(), exact.size());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

}  // namespace

int main(int argc, char** argv) {
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        for (const fs::path& path : FilesOf(argv[i])) {
            Run(path);
            ++count;
        }
    }
    std::printf("%d inputs\n", count);
    return count > 0 ? 0 : 2;
}
