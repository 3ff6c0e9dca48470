#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "apps/midi_bytes.h"

namespace norava::test {

// An empty folder of the test's own, gone when the test is over.
class ScratchFolder {
  public:
    explicit ScratchFolder(const std::string& suffix = "") {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        path_ = std::filesystem::path(testing::TempDir()) /
                (std::string("norava_") + test->test_suite_name() + "_" + test->name() + suffix);
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }
    const std::filesystem::path& Path() const { return path_; }

    std::filesystem::path Write(const std::string& name, const Bytes& content) const {
        std::ofstream stream(path_ / name, std::ios::binary);
        stream.write(reinterpret_cast<const char*>(content.data()),
                     std::streamsize(content.size()));
        return path_ / name;
    }

    // Hidden files too.
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_)) {
            names.push_back(entry.path().filename().string());
        }
        return names;
    }

  private:
    std::filesystem::path path_;
};

}  // namespace norava::test
