#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace norava::test {

// An empty folder that nobody else has, gone with its owner. Fuzz targets use it too.
class ScratchFolder {
  public:
    ScratchFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "norava-XXXXXX").string();
        folder = mkdtemp(name.data());
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::filesystem::path operator/(const std::string& name) const { return folder / name; }
    [[nodiscard]] std::string Path(const std::string& name = "") const {
        return name.empty() ? folder.string() : (folder / name).string();
    }

    // Return the path; folders on the way are made.
    std::string Write(const std::string& name, std::string_view bytes) const {
        std::filesystem::create_directories((folder / name).parent_path());
        std::ofstream(folder / name, std::ios::binary) << bytes;
        return Path(name);
    }
    std::string Write(const std::string& name, const std::vector<std::uint8_t>& bytes) const {
        return Write(name,
                     std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    }

    [[nodiscard]] std::string Read(const std::string& name) const {
        std::ifstream stream(folder / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    // Hidden files too.
    [[nodiscard]] std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            names.push_back(entry.path().filename().string());
        return names;
    }

  private:
    std::filesystem::path folder;
};

}  // namespace norava::test
