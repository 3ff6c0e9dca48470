#include "synth/parameter_conversion.h"

#include <gtest/gtest.h>

#include <array>
#include <clocale>
#include <cmath>
#include <string>

#include "parameters/parameter_table.h"
#include "synth/hostile_floats.h"
#include "synth/parameter_text.h"

namespace norava {
namespace {

double Engine(int index, float raw) {
    return EngineValue(GetParameter(index), raw);
}

std::string Text(int index, float value) {
    std::array<char, 32> text;
    FormatParameterValue(index, value, text);
    return text.data();
}

TEST(ParameterConversion, GivesTheKnownQuantities) {
    EXPECT_NEAR(Engine(0, 0.0f), 0.0158489, 1e-7);
    EXPECT_NEAR(Engine(0, 1.0f), 1000.0, 1e-9);
    EXPECT_EQ(Engine(1, 0.0f), -0.99);
    EXPECT_EQ(Engine(1, 0.5f), 0.0);
    EXPECT_EQ(Engine(1, 0.49f), -0.01);  // -1.98 steps, towards zero
    EXPECT_EQ(Engine(2, 1.0f), 35.001);
    EXPECT_NEAR(Engine(5, 0.5f), 0.1 + 10.0 / 32.0, 1e-12);
    EXPECT_EQ(Engine(20, 0.25f), 0.5);
    EXPECT_EQ(Engine(31, 1.0f), 0.0);
    EXPECT_EQ(Engine(33, 0.5f), 62.5);
    EXPECT_EQ(Engine(75, 0.0f), 0.001);
    EXPECT_EQ(Engine(76, 0.5f), 0.075);
}

TEST(ParameterConversion, SwitchesAreOnForAnythingButZero) {
    for (int index : {7, 63, 70, 81}) {
        EXPECT_EQ(Engine(index, 0.0f), 0.0);
        EXPECT_EQ(Engine(index, -0.0f), 0.0);
        for (float on : {1.0f, 0.0001f, -3.0f, 1.0e-42f, std::nanf("")}) {
            EXPECT_EQ(Engine(index, on), 1.0) << index << " at " << on;
        }
    }
}

TEST(ParameterConversion, MenuValuesOutsideTheMenu) {
    EXPECT_EQ(Engine(111, 6.9f), 6.0);
    EXPECT_EQ(Engine(111, 7.0f), 3.0) << "1 : 1";
    EXPECT_EQ(Engine(111, -1.0f), 3.0);
    EXPECT_EQ(Engine(111, -0.9f), 0.0) << "towards zero";
    EXPECT_EQ(Engine(112, 10.0f), 0.0) << "free time";
    EXPECT_EQ(Engine(79, 9.0f), kNoItem);
    EXPECT_EQ(Engine(82, -2.0f), kNoItem);
    EXPECT_EQ(Engine(82, 14.5f), 14.0);
    EXPECT_EQ(Engine(79, std::nanf("")), 6.0) << "the default: velocity";

    EXPECT_EQ(Engine(113, 1.2f), 0.5) << "beyond the last position: no shift";
    EXPECT_EQ(Engine(113, -0.2f), 0.5);
    EXPECT_EQ(Engine(113, 1.1f), 1.0) << "still the last position";
    EXPECT_EQ(Engine(113, std::nanf("")), 0.5);
}

TEST(ParameterConversion, EveryHostileFloatBecomesAQuantityOfTheCurve) {
    for (const Parameter& row : kParameters) {
        const float top = row.items.empty() ? 1.0f : static_cast<float>(row.items.size() - 1);
        const double ends[] = {EngineValue(row, 0.0f), EngineValue(row, top)};
        const double low =
            row.curve.shape == CurveShape::routing ? kNoItem : std::min(ends[0], ends[1]);
        for (float raw : test::HostileFloats()) {
            const double value = EngineValue(row, raw);
            EXPECT_GE(value, low) << row.name << " at " << raw;
            EXPECT_LE(value, std::max(ends[0], ends[1])) << row.name << " at " << raw;
        }
        if (row.curve.shape == CurveShape::onOff) continue;
        EXPECT_EQ(EngineValue(row, std::nanf("")), EngineValue(row, row.defaultValue)) << row.name;
    }
}

TEST(ParameterText, WritesValuesAsTheUserKnowsThem) {
    EXPECT_EQ(Text(0, 0.5f), "50.0");
    EXPECT_EQ(Text(0, 0.12345f), "12.3");
    EXPECT_EQ(Text(63, 1.0f), "100.0") << "the delay's switch shows a percentage";
    EXPECT_EQ(Text(70, 0.0001f), "On");
    EXPECT_EQ(Text(70, 0.0f), "Off");
    EXPECT_EQ(Text(71, 1.0f), "5");
    EXPECT_EQ(Text(72, 0.505f), "50") << "the float below 50.5";
    EXPECT_EQ(Text(111, 3.0f), "300.0");
    EXPECT_EQ(Text(500, 0.25f), "25.0");
    // k / 6 is no float: each position must show, and sound, as itself all the same.
    for (int k = 0; k <= 6; ++k) {
        EXPECT_EQ(Text(113, static_cast<float>(k) / 6.0f), std::to_string(k));
    }
}

TEST(ParameterText, StaysInsideTheBufferInEveryLocale) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "C.UTF-8"}) {
        if (std::setlocale(LC_ALL, name) != nullptr) break;
    }
    EXPECT_EQ(Text(0, 0.5f), "50.0");
    for (int index = 0; index < kNumParameters; ++index) {
        for (float raw : test::HostileFloats()) {
            std::array<char, 40> text;
            text.fill('#');
            FormatParameterValue(index, raw, std::span(text).first(32));
            const std::string written(text.begin(), text.end());
            EXPECT_NE(written.substr(0, 32).find('\0'), std::string::npos);
            EXPECT_EQ(written.substr(32), "########");
        }
    }
    std::setlocale(LC_ALL, before.c_str());
}

}  // namespace
}  // namespace norava
