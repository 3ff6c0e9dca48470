#include "render/sound.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "files/scratch_folder.h"
#include "parameters/parameter_index.h"
#include "render/bad_input.h"

namespace norava {
namespace {

using namespace test;
using namespace param;
using ::testing::HasSubstr;

template <typename Call>
std::string ErrorOf(Call call) {
    try {
        call();
    } catch (const BadInput& error) {
        return error.what();
    }
    return "";
}

std::string SettingError(const std::string& text) {
    return ErrorOf([&] { ParseSetting(text); });
}

TEST(Setting, TakesNamesNumbersAndMenuTexts) {
    const auto expect = [](const char* text, int index, float value) {
        const ParameterSetting setting = ParseSetting(text);
        EXPECT_EQ(setting.index, index) << text;
        EXPECT_EQ(setting.value, value) << text;
    };
    expect("Reverb ON/OFF=1", kReverbOn, 1.0f);
    expect("  reverb mix =  0.25 ", kReverbMix, 0.25f);
    expect("74=1", kReverbOn, 1.0f);
    expect("Chorus ON/OFF = off", kChorusOn, 0.0f);
    expect("Matrix 3 Source = lfo", kMatrix + 8, 2.0f);
    expect("82=14", kMatrix + 3, 14.0f);
    expect("String Ratio=1 : 2", kStringRatio, 4.0f);
}

TEST(Setting, RefusesWhatNoParameterTakes) {
    EXPECT_THAT(SettingError("Reverb"), HasSubstr("NAME=VALUE"));
    EXPECT_THAT(SettingError("Reverb Size=1"), HasSubstr("no parameter 'Reverb Size'"));
    EXPECT_THAT(SettingError("114=0"), HasSubstr("no parameter"));
    EXPECT_THAT(SettingError("-1=0"), HasSubstr("no parameter"));
    EXPECT_THAT(SettingError("=0"), HasSubstr("no parameter"));
    EXPECT_THAT(SettingError("Tune="), HasSubstr("takes 0..1"));
    for (const char* value : {"1.5", "-0.1", "nan", "inf", "0,5", "half", "1x"}) {
        EXPECT_THAT(SettingError(std::string("Tune=") + value), HasSubstr(value));
    }
    EXPECT_THAT(SettingError("String Ratio=7"), HasSubstr("0..6"));
}

TEST(Patch, ErrorsNameTheFileAndTheLine) {
    const ScratchFolder folder;
    const auto good =
        LoadPatch(folder.Write("x.patch", "# a sound\r\n\r\nTune = 0.5\r\n  Amp Decay=0.25\n"));
    ASSERT_EQ(good.size(), 2u);
    EXPECT_EQ(good[1].index, kAmpDecay);
    const auto bad = folder.Write("x.patch", "Tune = 0.5\nTuna = 0.5\n");
    EXPECT_THAT(ErrorOf([&] { LoadPatch(bad); }), HasSubstr("x.patch:2: there is no"));
    EXPECT_NE(ErrorOf([&] { LoadPatch(folder / "none.patch"); }), "");
    EXPECT_NE(ErrorOf([&] { LoadPatch(folder.Path()); }), "");
}

}  // namespace
}  // namespace norava
