#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <string>

namespace norava::fuzz {

// A folder of this process alone, removed when the process ends in order.
class ScratchFolder {
  public:
    ScratchFolder()
        : folder_(std::filesystem::temp_directory_path() /
                  ("norava-fuzz-" + std::to_string(getpid()))) {
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_);
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string Path(const std::string& name) const { return (folder_ / name).string(); }

    // Returns the path.
    std::string Write(const std::string& name, std::span<const char> bytes) const {
        std::filesystem::create_directories((folder_ / name).parent_path());
        std::ofstream file(folder_ / name, std::ios::binary);
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return Path(name);
    }
    std::string Read(const std::string& name) const {
        std::ifstream file(folder_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    const std::filesystem::path folder_;
};

}  // namespace norava::fuzz
