#include "framework/plugin_instance.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "framework/plugin_editor_interface.h"
#include "framework/plugin_renderer.h"
#include "framework/test_definition.h"

namespace norava {
namespace {

std::string OutputName(CPluginInstance& instance, int index) {
    std::array<char, 64> name;
    instance.GetOutputChannelName(index, name);
    return name.data();
}

TEST(PluginInstance, StartsUnknown) {
    CPluginInstance instance;
    EXPECT_EQ(GetPluginInstance(), &instance);
    EXPECT_FALSE(instance.IsVST() || instance.IsAU() || instance.IsTQ());
    EXPECT_STREQ(instance.GetPluginName(), "<unknown>");
    EXPECT_STREQ(instance.GetPluginVersionLabel(), "<unknown>");
    std::array<char, kNameCapacity> name;
    instance.GetHostName(name);
    EXPECT_STREQ(name.data(), "<unknown>");
    instance.GetHostVendorName(name);
    EXPECT_STREQ(name.data(), "<unknown>");
    EXPECT_EQ(instance.GetUID(), -1);
    EXPECT_EQ(instance.GetNumOutputStereoChannels(), 1);
    EXPECT_TRUE(instance.CheckWillOpen());
    EXPECT_FALSE(instance.IsParamMeta(0));
    EXPECT_EQ(instance.CreateRenderer(), nullptr);
    EXPECT_EQ(instance.CreateEditor(), nullptr);

    TestDefinition newer;
    EXPECT_EQ(GetPluginInstance(), &newer);
}

TEST(PluginInstance, KnowsItsFormatAndHost) {
    CPluginInstance instance;
    instance.SetPluginFormatVST();
    EXPECT_TRUE(instance.IsVST() && !instance.IsAU() && !instance.IsTQ());
    instance.SetPluginFormatAU();
    EXPECT_TRUE(!instance.IsVST() && instance.IsAU() && !instance.IsTQ());
    instance.SetPluginFormatTQ();
    EXPECT_TRUE(!instance.IsVST() && !instance.IsAU() && instance.IsTQ());

    instance.SetHostName(std::string(1000, 'x'));
    std::array<char, 2000> name;
    EXPECT_EQ(instance.GetHostName(name), kNameCapacity - 1);
}

TEST(PluginInstance, NamesChannels) {
    CPluginInstance instance;
    EXPECT_EQ(OutputName(instance, 0), "Master");
    EXPECT_EQ(OutputName(instance, 3), "Channel 3");
    EXPECT_EQ(OutputName(instance, -2), "Channel -2");
    std::array<char, 8> name;
    instance.GetInputChannelName(7, name);
    EXPECT_STREQ(name.data(), "Channel");
}

TEST(PluginInstance, KeepsTheZoomAtOneOrMore) {
    CPluginInstance instance;
    for (const auto& [set, expected] : {std::pair{0, 1}, {-3, 1}, {2, 2}}) {
        instance.SetUIScalingFactor(set);
        EXPECT_EQ(instance.GetUIScalingFactor(), expected);
    }
}

}  // namespace
}  // namespace norava
