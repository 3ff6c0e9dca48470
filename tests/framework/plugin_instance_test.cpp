#include "framework/plugin_instance.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "framework/test_definition.h"

namespace norava {
namespace {

TEST(PluginInstance, StartsUnknown) {
    CPluginInstance instance;
    EXPECT_EQ(GetPluginInstance(), &instance);
    EXPECT_FALSE(instance.IsVST() || instance.IsAU() || instance.IsTQ());
    std::array<char, 2000> name;
    instance.GetHostName(name);
    EXPECT_STREQ(name.data(), "<unknown>");
    instance.GetHostVendorName(name);
    EXPECT_STREQ(name.data(), "<unknown>");
    instance.SetHostName(std::string(1000, 'x'));
    EXPECT_EQ(instance.GetHostName(name), kNameCapacity - 1);
    {
        TestDefinition newer;
        EXPECT_EQ(GetPluginInstance(), &newer);
    }
    EXPECT_EQ(GetPluginInstance(), nullptr);
}

TEST(PluginInstance, NamesChannelsAndKeepsTheZoomAtOneOrMore) {
    CPluginInstance instance;
    std::array<char, 64> name;
    for (const auto& [index, expected] :
         {std::pair{0, "Master"}, {3, "Channel 3"}, {-2, "Channel -2"}}) {
        instance.GetOutputChannelName(index, name);
        EXPECT_STREQ(name.data(), expected);
        instance.GetInputChannelName(index, name);
        EXPECT_STREQ(name.data(), expected);
    }
    for (const auto& [set, expected] : {std::pair{0, 1}, {-3, 1}, {2, 2}}) {
        instance.SetUIScalingFactor(set);
        EXPECT_EQ(instance.GetUIScalingFactor(), expected);
    }
}

}  // namespace
}  // namespace norava
