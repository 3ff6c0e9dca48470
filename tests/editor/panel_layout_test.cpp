#include "editor/panel_layout.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "editor/built_in_pictures.h"
#include "parameters/parameter_table.h"

namespace norava {
namespace {

// The built-in picture of that number for a scale.
const CImage& Picture(int id, int scale) {
    static std::map<std::pair<int, int>, CImage> loaded;
    CImage& image = loaded[{id, scale}];
    if (image.IsSafe()) return image;
    const auto built =
        std::ranges::find(GetBuiltInPictures(), FindPanelPicture(id)->fileName,
                          [](const BuiltInPicture& p) { return std::string(p.fileName); });
    EXPECT_TRUE(image.LoadPacked(built->packed[static_cast<size_t>(scale - 1)], "x"));
    return image;
}

TEST(PanelLayout, HasOneControlForEachParameter) {
    for (const Parameter& parameter : kParameters) {
        const long count =
            std::ranges::count(GetPanelControls(), parameter.index, &PanelControl::id);
        EXPECT_EQ(count, parameter.control == ControlKind::none ? 0 : 1) << parameter.name;
    }
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
            const CImage& image = Picture(picture.id, scale);
            const CSize frame = picture.frame;
            EXPECT_EQ(image.GetSize(), CSize(frame.cx, frame.cy * picture.frames));
            EXPECT_EQ(image.GetSclFactor(), scale);
            const bool opaque = picture.id == kBackgroundPicture || picture.id == kAboutPicture;
            EXPECT_EQ(image.GetHasAlpha(), !opaque) << picture.fileName;
        }
    }
    size_t bytes = 0;
    for (const BuiltInPicture& picture : GetBuiltInPictures())
        for (const auto packed : picture.packed)
            bytes += packed.size();
    EXPECT_LE(bytes, size_t{12} * 1024 * 1024);
}

// Only arc and pointer move: what lies outside their way, in the lowest eighth, is the same in all
// frames but for rounding, and no two neighbouring frames are the same.
TEST(PanelPictures, DoNotWobble) {
    for (const int id : {1, 2, 3, 4, 5}) {
        for (int scale = 1; scale <= 3; ++scale) {
            SCOPED_TRACE(FindPanelPicture(id)->fileName);
            const CSize frame = FindPanelPicture(id)->frame;
            const int width = frame.cx * scale, height = frame.cy * scale;
            // Frames follow each other downwards, stored rows upwards.
            const uint32_t* const last = Picture(id, scale).GetDataAt(0, 0);
            for (const uint32_t* one = last + width * height; one < last + 64 * width * height;
                 one += width * height) {
                EXPECT_FALSE(std::equal(one, one + width * height, one - width * height));
                for (int i = 0; i < height / 8 * width; ++i) {
                    if (i % width < width * 3 / 8 || i % width >= width * 5 / 8) continue;
                    const CColor a = CColor::FromWord(one[i]), b = CColor::FromWord(last[i]);
                    const int distance =
                        std::max({std::abs(a.red - b.red), std::abs(a.green - b.green),
                                  std::abs(a.blue - b.blue), std::abs(a.alpha - b.alpha)});
                    ASSERT_LE(distance, 2);
                }
            }
        }
    }
}

// The background is drawn from this table: a label's letters stand on the line that it names, as
// high as capitals are, with nothing above them.
TEST(PanelLabels, ArePrintedAtTheirPlaces) {
    const CImage& background = Picture(kBackgroundPicture, 1);
    for (const PanelLabel& label : GetPanelLabels()) {
        SCOPED_TRACE(label.text);
        const auto isRowInked = [&](int up) {
            for (int along = -6; along < 6; ++along) {
                int x = along, y = -up;
                if (label.style == PanelLabelStyle::readingUp) x = -up, y = -along;
                if (label.style == PanelLabelStyle::readingDown) x = up - 1, y = along;
                const CColor c = background.GetColorAt(static_cast<int>(label.x) + x,
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
