#include "gui/image_bank.h"

#include <cstring>
#include <mutex>
#include <vector>

namespace norava::image_bank {

namespace {

// Loading happens under the lock too: two windows that open at once load each picture once.
std::mutex gLock;
std::vector<std::unique_ptr<CImage>> gImageBank;
long gImageBankRef = 0;

template <typename Matches>
CImage* FindFirst(const Matches& matches) {
    for (const auto& image : gImageBank)
        if (matches(*image)) return image.get();
    return nullptr;
}

bool IsEmpty(const char* text) {
    return text == nullptr || *text == '\0';
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

CImage* Import(const char* path, int id, const char* name, const BuiltInPicture* builtIn) {
    const std::lock_guard lock(gLock);
    if (IsEmpty(path) || gImageBankRef < 1) return nullptr;
    const auto isFromPath = [&](const CImage& image) {
        return std::strcmp(image.GetFilePath(), path) == 0;
    };
    if (CImage* known = FindFirst(isFromPath)) return known;

    auto image = std::make_unique<CImage>();
    if (!(builtIn ? image->LoadFromMemory(builtIn->file, path) : image->LoadFromFile(path)))
        return nullptr;
    image->SetID(id);
    image->SetName(name);
    return gImageBank.emplace_back(std::move(image)).get();
}

CImage* FindByID(int id) {
    const std::lock_guard lock(gLock);
    return FindFirst([id](const CImage& image) { return image.GetID() == id; });
}

CImage* FindByName(const char* name) {
    if (IsEmpty(name)) return nullptr;
    const std::lock_guard lock(gLock);
    return FindFirst(
        [name](const CImage& image) { return std::strcmp(image.GetName(), name) == 0; });
}

}  // namespace norava::image_bank
