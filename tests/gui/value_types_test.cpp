#include <gtest/gtest.h>

#include <limits>

#include "gui/color.h"
#include "gui/geometry.h"

namespace norava {
namespace {

constexpr int kMax = std::numeric_limits<int>::max();
constexpr int kMin = std::numeric_limits<int>::min();

TEST(Rect, ExcludesItsRightAndBottomEdge) {
    const CRect rect(2, 3, 4, 5);
    EXPECT_TRUE(rect.IsPointInside({2, 3}));
    EXPECT_TRUE(rect.IsPointInside({5, 7}));
    EXPECT_FALSE(rect.IsPointInside({6, 7}));
    EXPECT_FALSE(rect.IsPointInside({5, 8}));
    EXPECT_EQ(rect.GetCenter(), CPoint(4, 5));
    EXPECT_EQ(CRect({2, 3}, CSize(4, 5)), rect);
}

// Hosts and damaged files can hand over anything; no sum may wrap round.
TEST(Rect, EndsAtTheRangeOfAnInt) {
    const CRect huge(kMax - 1, kMin, kMax, kMin);
    EXPECT_EQ(huge.GetRight(), kMax);
    EXPECT_EQ(huge.GetBottom(), kMin);
    EXPECT_TRUE(huge.IsPointInside({kMax, kMin}) == false);
    EXPECT_TRUE(CRect(kMin, kMin, kMax, kMax).IsPointInside({-2, -2}));
    EXPECT_TRUE(huge.GetIntersection(CRect(kMin, kMax, kMin, kMin)).IsEmpty());
    CPoint point(kMax, kMin);
    point.Shift({kMax, kMin});
    EXPECT_EQ(point, CPoint(kMax, kMin));
}

TEST(Color, LiesInMemoryAsRedGreenBlueAlpha) {
    EXPECT_EQ(CColor(1, 2, 3, 4).GetWord(), 0x04030201u);
    EXPECT_EQ(CColor(7).GetWord(), 0xFF070707u);
    EXPECT_EQ(CColor(0, 0).GetWord(), 0u);
    EXPECT_EQ(CColor::FromWord(0x04030201u), CColor(1, 2, 3, 4));
    EXPECT_EQ(CColor(-1, 256, kMin, kMax), CColor(0, 255, 0, 255));
}

TEST(Color, ConvertsByTruncating) {
    CColor color(10, 20, 30, 40);
    EXPECT_DOUBLE_EQ(color.GetGreenF(), 20.0 / 255.0);
    color.SetRedF(0.999);
    EXPECT_EQ(color.red, 254);
    for (const double value : {1.0, 7.5, 1e300}) {
        color.SetRedF(value);
        EXPECT_EQ(color.red, 255);
    }
    for (const double value : {-1e300, -0.0, std::numeric_limits<double>::quiet_NaN()}) {
        color.SetRedF(value);
        EXPECT_EQ(color.red, 0);
    }
    CColor menuText(247, 223, 100, 30);
    menuText.Brighten(1.1);
    EXPECT_EQ(menuText, CColor(255, 245, 110, 30)) << "alpha stays";
}

}  // namespace
}  // namespace norava
