#include "editor/panel_layout.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "editor/built_in_pictures.h"
#include "parameters/parameter_table.h"

namespace norava {
namespace {

// The built-in picture of that number for a scale.
const CImage& Picture(int id, int scale = 1) {
    static std::map<std::pair<int, int>, CImage> loaded;
    CImage& image = loaded[{id, scale}];
    if (image.IsSafe()) return image;
    const std::string name = FindPanelPicture(id)->fileName;
    for (const BuiltInPicture& picture : GetBuiltInPictures()) {
        if (picture.fileName != name) continue;
        EXPECT_TRUE(image.LoadPacked(picture.packed[static_cast<size_t>(scale - 1)], "x"));
    }
    return image;
}

// A picture's stored pixels, y downwards.
class Pixels {
  public:
    explicit Pixels(const CImage& source)
        : image(source),
          scale(source.GetSclFactor()),
          width(source.GetSize().cx * scale),
          height(source.GetSize().cy * scale) {}
    [[nodiscard]] CColor At(int x, int y) const {
        if (x < 0 || x >= width || y < 0 || y >= height) return CColor(0);
        return CColor::FromWord(image.GetDataAt(0, 0)[(height - 1 - y) * width + x]);
    }

  private:
    const CImage& image;

  public:
    const int scale, width, height;
};

TEST(PanelLayout, HasOneControlForEachParameter) {
    for (const Parameter& parameter : kParameters) {
        const long count =
            std::ranges::count(GetPanelControls(), parameter.index, &PanelControl::id);
        EXPECT_EQ(count, parameter.control == ControlKind::none ? 0 : 1) << parameter.name;
    }
}

TEST(PanelLayout, KeepsControlsApartAndInside) {
    const auto controls = GetPanelControls();
    for (const PanelControl& control : controls) {
        EXPECT_EQ(control.rect.GetIntersection(CRect(0, 0, kPanelSize)), control.rect)
            << control.id;
        for (const PanelControl& other : controls)
            EXPECT_TRUE(&control == &other || !control.rect.Intersects(other.rect))
                << control.id << " and " << other.id;
        if (control.picture == kNoPicture) continue;
        const PanelPicture* picture = FindPanelPicture(control.picture);
        ASSERT_NE(picture, nullptr) << control.id;
        if (picture->frames > 1) {
            EXPECT_EQ(control.rect.GetSize(), picture->frame) << control.id;
        } else {
            EXPECT_LE(picture->frame.cx, control.rect.width) << control.id;
            EXPECT_LE(picture->frame.cy, control.rect.height) << control.id;
        }
    }
}

TEST(PanelPictures, HaveTheLayoutsSizesAtAllScales) {
    ASSERT_EQ(GetBuiltInPictures().size(), GetPanelPictures().size() + 1) << "about.tga twice";
    size_t bytes = 0;
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
    for (const BuiltInPicture& picture : GetBuiltInPictures())
        for (const auto packed : picture.packed)
            bytes += packed.size();
    EXPECT_LE(bytes, size_t{12} * 1024 * 1024);
}

int Distance(CColor a, CColor b) {
    return std::max({std::abs(a.red - b.red), std::abs(a.green - b.green),
                     std::abs(a.blue - b.blue), std::abs(a.alpha - b.alpha)});
}

// Only arc and pointer move: the shadow under a knob stays put (but for rounding), and no two
// neighbouring frames are the same.
TEST(PanelPictures, DoNotWobble) {
    for (const int id : {1, 2, 3, 4, 5}) {
        for (int scale = 1; scale <= 3; ++scale) {
            const Pixels pixels(Picture(id, scale));
            const CSize frame = FindPanelPicture(id)->frame;
            const int height = frame.cy * scale;
            // The lowest eighth lies outside the arc's ends and the pointer's way.
            for (int f = 1; f < 64; ++f)
                for (int y = height - height / 8; y < height; ++y)
                    for (int x = pixels.width * 3 / 8; x < pixels.width * 5 / 8; ++x)
                        ASSERT_LE(Distance(pixels.At(x, y), pixels.At(x, f * height + y)), 2)
                            << "picture " << id << " frame " << f;
            const auto differs = [&](int a, int b) {
                for (int y = 0; y < height; ++y)
                    for (int x = 0; x < pixels.width; ++x)
                        if (pixels.At(x, a * height + y) != pixels.At(x, b * height + y))
                            return true;
                return false;
            };
            for (int f = 1; f < 64; ++f)
                EXPECT_TRUE(differs(f - 1, f)) << "picture " << id << " frame " << f;
        }
    }
}

// Where a label's ink is on the finished background, in logical pixels. The line it stands on runs
// along x; turned labels are looked at from the side they read from.
class LabelFinder {
  public:
    LabelFinder(const Pixels& background, const PanelLabel& printed)
        : pixels(background), label(printed) {
        const int k = pixels.scale;
        const auto isColumnInked = [&](int along) {
            for (int up = 1; up <= CapHeight() * k; ++up)
                if (IsInk(along, up)) return true;
            return false;
        };
        // Words of a label are closer to each other than to anything else.
        const int gap = label.style == PanelLabelStyle::title ? 8 * k : 14 * k / 3;
        first = last = 0;
        for (int along = 0; along <= last + gap && along < 200 * k; ++along)
            if (isColumnInked(along)) last = along;
        for (int along = 0; along >= first - gap && along > -200 * k; --along)
            if (isColumnInked(along)) first = along;
    }

    [[nodiscard]] float MiddleOffset() const {
        return static_cast<float>(first + last + 1) / 2.0f / static_cast<float>(pixels.scale);
    }
    [[nodiscard]] bool IsRowInked(int up) const {
        for (int along = first; along <= last; ++along)
            for (int part = 0; part < pixels.scale; ++part)
                if (IsInk(along, (up - 1) * pixels.scale + 1 + part)) return true;
        return false;
    }
    [[nodiscard]] int CapHeight() const {
        if (label.style == PanelLabelStyle::title) return 7;
        return label.style == PanelLabelStyle::small ? 5 : 6;
    }
    [[nodiscard]] CRect Bounds() const {
        const int k = pixels.scale, caps = CapHeight();
        const auto at = [k](float middle, int offset) {
            return static_cast<int>(
                std::floor((middle * static_cast<float>(k) + static_cast<float>(offset)) /
                           static_cast<float>(k)));
        };
        const int length = (last - first) / k + 1;
        const int x = static_cast<int>(label.x), y = static_cast<int>(label.y);
        if (label.style == PanelLabelStyle::readingUp)
            return {x - caps, at(label.y, -last), caps, length};
        if (label.style == PanelLabelStyle::readingDown)
            return {x, at(label.y, first), caps, length};
        return {at(label.x, first), y - caps, length, caps};
    }

  private:
    // `along` the line from the label's middle, `up` from its baseline, both in stored pixels.
    [[nodiscard]] bool IsInk(int along, int up) const {
        const auto k = static_cast<float>(pixels.scale);
        const int x = static_cast<int>(label.x * k), y = static_cast<int>(label.y * k);
        CColor c;
        switch (label.style) {
            case PanelLabelStyle::readingUp:
                c = pixels.At(x - up, y - along);
                break;
            case PanelLabelStyle::readingDown:
                c = pixels.At(x + up - 1, y + along);
                break;
            default:
                c = pixels.At(x + along, y - up);
        }
        return c.red + c.green + c.blue > 3 * 150;
    }

    const Pixels& pixels;
    const PanelLabel& label;
    int first, last;
};

TEST(PanelLabels, ArePrintedWholeAtTheirPlaces) {
    const Pixels background(Picture(kBackgroundPicture, 3));
    std::vector<std::pair<const PanelLabel*, CRect>> printed;
    for (const PanelLabel& label : GetPanelLabels()) {
        SCOPED_TRACE(label.text);
        const LabelFinder finder(background, label);
        const int caps = finder.CapHeight();
        EXPECT_NEAR(finder.MiddleOffset(), 0.0f, 0.75f) << "not centred on its place";
        EXPECT_TRUE(finder.IsRowInked(1) && finder.IsRowInked(caps)) << "cut, or elsewhere";
        const bool hasTail = std::string(label.text).find('Q') != std::string::npos;
        EXPECT_TRUE(hasTail || !finder.IsRowInked(0)) << "touched from below";
        EXPECT_FALSE(finder.IsRowInked(caps + 1)) << "touched from above";
        EXPECT_GT(finder.Bounds().width * finder.Bounds().height, 6);
        printed.emplace_back(&label, finder.Bounds());
    }
    for (const auto& [label, bounds] : printed) {
        for (const auto& [other, otherBounds] : printed)
            EXPECT_TRUE(label == other || !bounds.Intersects(otherBounds))
                << label->text << " meets " << other->text;
        for (const PanelControl& control : GetPanelControls()) {
            const CRect rect = control.rect;
            // The lowest row of the big knobs' frames is empty beside the two digits.
            const bool isDigitOfMix = control.id == param::kStringMix && label->text[1] == '\0';
            const bool isOnWindow = label->style == PanelLabelStyle::window;
            const CRect covered(rect.left, rect.top, rect.width, rect.height - isDigitOfMix);
            EXPECT_TRUE(isOnWindow || !bounds.Intersects(covered))
                << label->text << " lies under " << control.id;
        }
    }
}

}  // namespace
}  // namespace norava
