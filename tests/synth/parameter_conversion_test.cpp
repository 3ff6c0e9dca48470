#include "synth/parameter_conversion.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>

#include "parameters/parameter_table.h"
#include "synth/parameter_text.h"

namespace norava {
namespace {

TEST(ParameterConversion, GivesTheKnownQuantities) {
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const struct {
        int index;
        float raw;
        double quantity;
    } cases[] = {
        {0, 0.0f, 0.0158489},
        {0, 1.0f, 1000.0},
        {0, kInfinity, 1000.0},
        {1, 0.0f, -0.99},
        {1, 0.49f, -0.01},  // -1.98 steps, towards zero
        {1, -kInfinity, -0.99},
        {2, 1.0f, 35.001},
        {5, 0.5f, 0.1 + 10.0 / 32.0},
        {20, 0.25f, 0.5},
        {20, -3.0f, 0.0},
        {31, 1.0f, 0.0},
        {33, 0.5f, 62.5},
        {75, 0.0f, 0.001},
        {76, 0.5f, 0.075},
        // Switches are on for anything but zero.
        {7, -0.0f, 0.0},
        {7, -3.0f, 1.0},
        {7, 1.0e-42f, 1.0},
        {7, kNaN, 1.0},
        // Menus go towards zero. Beyond their ends lies the default, or nothing for the matrix.
        {111, 6.9f, 6.0},
        {111, 7.0f, 3.0},
        {111, kInfinity, 3.0},
        {111, -0.9f, 0.0},
        {111, -1.0f, 3.0},
        {82, 14.5f, 14.0},
        {79, 9.0f, kNoItem},
        {82, -2.0f, kNoItem},
        {79, kNaN, 6.0},
        // Octaves: no shift beyond the last position, which ends where the next one would begin.
        {113, 1.1f, 1.0},
        {113, 1.2f, 0.5},
        {113, -0.2f, 0.5},
        {113, kNaN, 0.5},
    };
    for (const auto& [index, raw, quantity] : cases) {
        EXPECT_NEAR(EngineValue(GetParameter(index), raw), quantity, 1e-7) << index << ": " << raw;
    }
}

TEST(ParameterText, WritesValuesAsTheUserKnowsThem) {
    const auto text = [](int index, float value) {
        std::array<char, 32> written;
        FormatParameterValue(index, value, written);
        return std::string(written.data());
    };
    EXPECT_EQ(text(0, 0.12345f), "12.3");
    EXPECT_EQ(text(63, 1.0f), "100.0") << "the delay's switch shows a percentage";
    EXPECT_EQ(text(70, 0.0001f), "On");
    EXPECT_EQ(text(70, 0.0f), "Off");
    EXPECT_EQ(text(71, 1.0f), "5");
    EXPECT_EQ(text(72, 0.505f), "50") << "the float below 50.5";
    EXPECT_EQ(text(111, 3.0f), "300.0");
    EXPECT_EQ(text(500, 0.25f), "25.0");
    // k / 6 is no float: each position must show, and sound, as itself all the same.
    for (int k = 0; k <= 6; ++k) {
        EXPECT_EQ(text(113, static_cast<float>(k) / 6.0f), std::to_string(k));
    }
    EXPECT_EQ(text(113, std::nanf("")), "3");
}

}  // namespace
}  // namespace norava
