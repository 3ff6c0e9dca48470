#include <gmock/gmock.h>

#include "gui/platform/damage.h"
#include "gui/platform/native_scale.h"
#include "gui/platform/uri_list.h"
#ifdef __linux__
#include "gui/platform/x11_connection.h"
#endif

namespace norava::test {
namespace {

using ::testing::UnorderedElementsAre;

TEST(UriList, NamesTheFirstFileOfThisMachine) {
    const auto first = [](std::string_view list) { return FirstFileOfUriList(list, "here"); };
    EXPECT_EQ(first("# note\r\nhttp://x/y\r\nfile:///a%20b%2fc\r\nfile:///d\r\n"), "/a b/c");
    EXPECT_EQ(first("file://there/a\nfile://here/b"), "/b");
    EXPECT_EQ(first("file:/a%C3%A9"), "/a\xC3\xA9");
    for (const char* damaged :
         {"", "file://", "file:a", "file:///a%", "file:///%zz", "file:///a%00b"})
        EXPECT_EQ(first(damaged), "") << damaged;
}

TEST(Damage, CoversLittleMoreThanWasAskedFor) {
    Damage damage;
    damage.Add({0, 0, 10, 10});
    damage.Add({300, 300, 10, 10});
    damage.Add({5, 0, 10, 10});
    damage.Add({50, 50, 0, 10});
    EXPECT_THAT(damage.Take(), UnorderedElementsAre(CRect(0, 0, 15, 10), CRect(300, 300, 10, 10)));
    const auto part = [](int i) { return CRect(20 * i, 50 * (i % 7), 5, 5); };
    for (int i = 0; i < 100; ++i)
        damage.Add(part(i));
    const std::vector<CRect> parts = damage.Take();
    EXPECT_LE(parts.size(), 16u);
    for (int i = 0; i < 100; ++i)
        EXPECT_TRUE(std::ranges::any_of(parts, [&](CRect one) { return one.Intersects(part(i)); }));
}

#ifdef __linux__
TEST(NativeScale, IsWholeAndFitsTheScreen) {
    using x11::FindDotsPerInch;
    EXPECT_EQ(FindDotsPerInch("*Xft.dpi:\t10\nXft.dpi:\t192 \nXft.hinting:\t1\n"), 192.0);
    for (const char* unusable : {"", "Xft.dpi: many", "Xft.dpi: -96", "Xft.dpi: nan"})
        EXPECT_EQ(FindDotsPerInch(unusable), 0.0) << unusable;
    EXPECT_EQ(ChooseScale(120.0, 2160), 1);
    EXPECT_EQ(ChooseScale(192.0, 2160), 2);
    EXPECT_EQ(ChooseScale(1e300, 4320), 3);
    EXPECT_EQ(ChooseScale(192.0, 768), 1) << "a panel that does not fit helps nobody";
}
#endif

}  // namespace
}  // namespace norava::test
