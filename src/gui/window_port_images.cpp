#include <algorithm>
#include <cstring>
#include <string>

#include "files/file_system.h"
#include "gui/window_port.h"

namespace norava {

void CWindowPort::SetImageLibraryDir(const char* folder) {
    imageFolder[0] = '\0';
    imageFolderState = ImageFolder::none;
    if (!folder || !*folder) return;
    std::string path = folder;
    if (!path.ends_with('/')) path += '/';
    if (path.size() >= sizeof imageFolder) {
        imageFolderState = ImageFolder::refused;
        return;
    }
    CopyText(imageFolder, sizeof imageFolder, path);
    // Asked once, so that a window never shows a mixture of two sets.
    const bool missing = file_system::KindOf(imageFolder) == file_system::EntryKind::none;
    imageFolderState = missing ? ImageFolder::missing : ImageFolder::there;
}

CImage* CWindowPort::ImportImageFromFile(const char* fileName, int id, const char* name) {
    if (!fileName || !*fileName || imageFolderState == ImageFolder::refused) return nullptr;
    const std::string path = std::string(imageFolder) + fileName;
    const int scale = GetSclFactor();
    if (imageFolderState != ImageFolder::missing)
        return image_bank::Import(path.c_str(), id, name, scale);
    const auto found =
        std::find_if(builtIn.begin(), builtIn.end(), [fileName](const BuiltInPicture& picture) {
            return std::strcmp(picture.fileName, fileName) == 0;
        });
    return found == builtIn.end() ? nullptr
                                  : image_bank::Import(path.c_str(), id, name, scale, &*found);
}

CImage* CWindowPort::GetImageByID(int id) const {
    return image_bank::FindByID(id, GetSclFactor());
}

CImage* CWindowPort::GetImageByName(const char* name) const {
    return image_bank::FindByName(name, GetSclFactor());
}

}  // namespace norava
