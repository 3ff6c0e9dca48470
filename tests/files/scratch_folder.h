#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace norava::test {

// A folder of the running test alone, gone afterwards.
class ScratchFolder {
  public:
    ScratchFolder() {
        const auto* info = testing::UnitTest::GetInstance()->current_test_info();
        folder =
            std::filesystem::temp_directory_path() /
            ("norava-" + std::string(info->test_suite_name()) + "-" + info->name() + "-" +
             std::to_string(::testing::UnitTest::GetInstance()->random_seed()) + "-" +
             std::to_string(std::hash<std::string>{}(std::filesystem::current_path().string())));
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder);
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] std::string Path(const std::string& name = "") const {
        return name.empty() ? folder.string() : (folder / name).string();
    }

    std::string Write(const std::string& name, const std::string& bytes) const {
        std::ofstream(Path(name), std::ios::binary) << bytes;
        return Path(name);
    }

    [[nodiscard]] std::string Read(const std::string& name) const {
        std::ifstream stream(Path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

  private:
    std::filesystem::path folder;
};

}  // namespace norava::test
