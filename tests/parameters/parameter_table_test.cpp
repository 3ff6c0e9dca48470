#include "parameters/parameter_table.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>

namespace norava {
namespace {

// Projects and program files hold these numbers: a row slipped in between would re-label
// everybody's sounds.
TEST(ParameterTable, KeepsTheNumbersThatProjectsHold) {
    std::uint64_t checksum = 0;  // of the names in their order
    for (const Parameter& row : kParameters)
        for (const char c : std::string(row.name))
            checksum = 31 * checksum + static_cast<unsigned char>(c);
    EXPECT_EQ(checksum, 18301002918833551199u);
    EXPECT_EQ(param::kMatrix, 79);
    EXPECT_EQ(param::kOctave, 113);
}

TEST(ParameterTable, RowsFitWhatTheyDescribe) {
    std::set<std::string> names;
    for (const Parameter& row : kParameters) {
        SCOPED_TRACE(row.name);
        EXPECT_LE(std::string(row.name).size(), 63u);
        EXPECT_TRUE(names.insert(row.name).second);
        EXPECT_EQ(row.control == ControlKind::menu, !row.items.empty());
        const float largest = row.items.empty() ? 1.0f : static_cast<float>(row.items.size() - 1);
        EXPECT_GE(row.defaultValue, 0.0f);
        EXPECT_LE(row.defaultValue, largest);
    }
    EXPECT_STREQ(GetParameter(param::kMatrix).items[6], "velocity");
    EXPECT_STREQ(GetParameter(param::kMatrix + 3).items[12], "str2  damp");
}

TEST(ParameterTable, IsSearchedByName) {
    EXPECT_EQ(FindParameter("Reverb ON/OFF"), param::kReverbOn);
    EXPECT_EQ(FindParameter("matrix 2 destination"), param::kMatrix + 7);
    EXPECT_EQ(FindParameter("Reverb ON/OF"), -1);
    EXPECT_EQ(FindParameter("Reverb ON/OFFF"), -1);
    EXPECT_EQ(FindParameter(""), -1);
}

}  // namespace
}  // namespace norava
