#include "editor/built_in_pictures.h"

#include <cstring>
#include <vector>

#include "editor/panel_layout.h"
#include "editor/picture_data.h"

namespace norava {

namespace {

std::vector<BuiltInPicture> MakeList() {
    const PictureData scales[] = {GetPictureData<1>(), GetPictureData<2>(), GetPictureData<3>()};
    std::vector<BuiltInPicture> pictures;
    for (size_t i = 0; i < kPanelPictures; ++i) {
        const PanelPicture& panel = GetPanelPictures()[i];
        pictures.push_back({panel.fileName, {scales[0][i], scales[1][i], scales[2][i]}});
        // The about box asks for its picture under a name of its own.
        if (panel.id == kAboutPicture) {
            pictures.push_back(pictures.back());
            pictures.back().fileName = "About.tga";
        }
    }
    return pictures;
}

}  // namespace

std::span<const BuiltInPicture> GetBuiltInPictures() {
    static const std::vector<BuiltInPicture> kPictures = MakeList();
    return kPictures;
}

}  // namespace norava
