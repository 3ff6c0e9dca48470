#include "gui/image_bank.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

namespace norava::image_bank {

namespace {

struct Entry {
    std::unique_ptr<CImage> image;
    int scale;  // of the windows it was loaded for
};

// Loading happens under the lock too: two windows that open at once load each picture once.
std::mutex gLock;
std::vector<Entry> gImageBank;
long gImageBankRef = 0;

template <typename Matches>
CImage* FindFirst(int scale, const Matches& matches) {
    CImage* other = nullptr;
    for (const auto& [image, entryScale] : gImageBank) {
        if (!matches(*image)) continue;
        if (entryScale == scale) return image.get();
        if (other == nullptr) other = image.get();
    }
    return other;
}

CImage* FindLoaded(const char* path, int scale) {
    for (const auto& [image, entryScale] : gImageBank)
        if (entryScale == scale && std::strcmp(image->GetFilePath(), path) == 0) return image.get();
    return nullptr;
}

bool IsEmpty(const char* text) {
    return text == nullptr || *text == '\0';
}

std::string NameForScale(const std::string& path, int scale) {
    const size_t dot = path.rfind('.');
    if (dot == std::string::npos || path.find('/', dot) != std::string::npos) return {};
    std::string detailed = path.substr(0, dot);
    detailed += '@';
    detailed += std::to_string(scale);
    detailed += 'x';
    return detailed + path.substr(dot);
}

// A folder may hold pictures for higher scales, or only some of them.
bool LoadFile(CImage& image, const char* path, int scale) {
    if (scale > 1) {
        const std::string detailed = NameForScale(path, scale);
        if (!detailed.empty() && image.LoadFromFile(detailed.c_str()) && image.AdoptScale(scale)) {
            image.SetFilePath(path);
            return true;
        }
    }
    return image.LoadFromFile(path);
}

bool LoadBuiltIn(CImage& image, const char* path, int scale, const BuiltInPicture& builtIn) {
    const int last = BuiltInPicture::kScales;
    return image.LoadPacked(builtIn.packed[static_cast<size_t>(std::clamp(scale, 1, last)) - 1],
                            path);
}

}  // namespace

User::User() {
    const std::lock_guard lock(gLock);
    ++gImageBankRef;
}

User::~User() {
    const std::lock_guard lock(gLock);
    if (--gImageBankRef < 1) gImageBank.clear();
}

long CountUsers() {
    const std::lock_guard lock(gLock);
    return gImageBankRef;
}

CImage* Import(const char* path, int id, const char* name, int scale,
               const BuiltInPicture* builtIn) {
    const std::lock_guard lock(gLock);
    if (IsEmpty(path) || gImageBankRef < 1) return nullptr;
    if (CImage* known = FindLoaded(path, scale)) return known;

    auto image = std::make_unique<CImage>();
    if (!(builtIn ? LoadBuiltIn(*image, path, scale, *builtIn) : LoadFile(*image, path, scale)))
        return nullptr;
    image->SetID(id);
    image->SetName(name);
    return gImageBank.emplace_back(Entry{std::move(image), scale}).image.get();
}

CImage* FindByID(int id, int scale) {
    const std::lock_guard lock(gLock);
    return FindFirst(scale, [id](const CImage& image) { return image.GetID() == id; });
}

CImage* FindByName(const char* name, int scale) {
    if (IsEmpty(name)) return nullptr;
    const std::lock_guard lock(gLock);
    return FindFirst(
        scale, [name](const CImage& image) { return std::strcmp(image.GetName(), name) == 0; });
}

}  // namespace norava::image_bank
