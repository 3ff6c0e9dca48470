#include "editor/panel_layout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

#include "editor/built_in_pictures.h"

namespace norava {
namespace {

// The built-in picture of that number for a scale.
std::unique_ptr<CImage> Load(int id, int scale) {
    const auto picture =
        std::ranges::find(GetBuiltInPictures(), std::string(FindPanelPicture(id)->fileName),
                          [](const BuiltInPicture& p) { return std::string(p.fileName); });
    auto image = std::make_unique<CImage>();
    EXPECT_TRUE(image->LoadPacked(picture->packed[static_cast<size_t>(scale - 1)], "x"));
    return image;
}

TEST(PanelLayout, KeepsControlsApartAndInside) {
    for (const PanelControl& control : GetPanelControls()) {
        SCOPED_TRACE(control.id);
        const CRect rect = control.rect;
        EXPECT_EQ(rect.GetIntersection(CRect(0, 0, kPanelSize)), rect);
        for (const PanelControl& other : GetPanelControls())
            EXPECT_TRUE(&control == &other || !rect.Intersects(other.rect)) << other.id;
        if (control.picture == kNoPicture) continue;
        const PanelPicture* picture = FindPanelPicture(control.picture);
        ASSERT_NE(picture, nullptr);
        EXPECT_LE(picture->frame.cx, rect.width);
        EXPECT_LE(picture->frame.cy, rect.height);
        if (picture->frames > 1) {
            EXPECT_EQ(rect.GetSize(), picture->frame);
        }
    }
}

TEST(PanelPictures, HaveTheLayoutsSizesAtAllScales) {
    ASSERT_EQ(GetBuiltInPictures().size(), GetPanelPictures().size() + 1) << "about.tga twice";
    for (const PanelPicture& picture : GetPanelPictures()) {
        for (int scale = 1; scale <= BuiltInPicture::kScales; ++scale) {
            const auto image = Load(picture.id, scale);
            const CSize frame = picture.frame;
            EXPECT_EQ(image->GetSize(), CSize(frame.cx, frame.cy * picture.frames));
            EXPECT_EQ(image->GetSclFactor(), scale);
            const bool opaque = picture.id == kBackgroundPicture || picture.id == kAboutPicture;
            EXPECT_EQ(image->GetHasAlpha(), !opaque) << picture.fileName;
        }
    }
    size_t bytes = 0;
    for (const BuiltInPicture& picture : GetBuiltInPictures())
        for (const auto packed : picture.packed)
            bytes += packed.size();
    EXPECT_LE(bytes, size_t{12} * 1024 * 1024);
}

// The background is drawn from this table: a label's letters stand on the line that it names, as
// high as capitals are, with nothing above them.
TEST(PanelLabels, ArePrintedAtTheirPlaces) {
    const auto background = Load(kBackgroundPicture, 1);
    for (const PanelLabel& label : GetPanelLabels()) {
        SCOPED_TRACE(label.text);
        const auto isRowInked = [&](int up) {
            for (int along = -6; along < 6; ++along) {
                int x = along, y = -up;
                if (label.style == PanelLabelStyle::readingUp) x = -up, y = -along;
                if (label.style == PanelLabelStyle::readingDown) x = up - 1, y = along;
                const CColor c = background->GetColorAt(static_cast<int>(label.x) + x,
                                                        static_cast<int>(label.y) + y);
                if (c.red + c.green + c.blue > 3 * 150) return true;
            }
            return false;
        };
        int caps = label.style == PanelLabelStyle::title ? 7 : 6;
        if (label.style == PanelLabelStyle::small) caps = 5;
        EXPECT_TRUE(isRowInked(1));
        EXPECT_TRUE(isRowInked(caps));
        EXPECT_FALSE(isRowInked(caps + 1));
    }
}

}  // namespace
}  // namespace norava
