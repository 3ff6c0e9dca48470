#include <gtest/gtest.h>

#include <cmath>

#include "synth/player.h"

namespace norava {
namespace {

using namespace param;
using test::Player;
using test::Stereo;

// A reset reverb holds 1e-30 in all its lines.
constexpr float kReverbDust = 1.0e-15f;

TEST(Render, ShowsWhichKeysSound) {
    Player player;
    for (int note : {0, 23, 108, 127})
        player.NoteOn(note);
    EXPECT_EQ(player.Render(2048).Peak(), 0.0f) << "no keys";
    for (int note : {24, 107}) {
        player.NoteOn(note);
        EXPECT_GT(player.Render(4096).Peak(), 0.0f) << note;
        EXPECT_EQ(player.synth.GetKeyActivity(note), 1.0f);
        player.NoteOff(note);
        player.Render(24000);
        EXPECT_EQ(player.synth.GetKeyActivity(note), 0.0f);
    }
}

TEST(Render, LevelAndPanFollowTheirControllers) {
    constexpr float kFull = 3.9810717f;
    const struct {
        int controller, value;
        float left, right;
    } cases[] = {{1, 0, kFull, kFull}, {10, 127, kFull, 0.0f}, {10, 0, 0.0f, kFull}, {7, 0, 0, 0}};
    Player player;
    player.NoteOn(60);
    for (const auto& [controller, value, left, right] : cases) {
        player.synth.OutputPeak().Clear();
        player.Send(0xb0, controller, value);
        const Stereo out = player.Render(2048);
        EXPECT_FLOAT_EQ(player.synth.GetChnLevel(false), left);
        EXPECT_FLOAT_EQ(player.synth.GetChnLevel(true), right);
        EXPECT_EQ(*std::ranges::max_element(out.left) > 0.0f, left > 0.0f);
        EXPECT_EQ(*std::ranges::max_element(out.right) > 0.0f, right > 0.0f);
        EXPECT_EQ(player.synth.OutputPeak().Get(), out.Peak());
    }
}

// Voices look again only at what is said to have changed. Tune, set to what it is, makes them look
// at everything.
TEST(Render, HearsEveryKnobWhileAKeySounds) {
    const auto play = [](const Parameter& turned, bool alone) {
        Player player;
        player.NoteOn(52);
        player.Render(960, 480);
        player.Set({{turned.index, turned.items.empty() ? 0.4f : 1.0f}});
        if (!alone) player.Set({{kTune, player.synth.GetParamValue(kTune)}});
        return player.Render(960, 480);
    };
    for (const Parameter& parameter : kParameters)
        EXPECT_TRUE(play(parameter, true) == play(parameter, false)) << parameter.name;
}

TEST(Render, PendingValuesComeBeforeTheSignOfTheChorusTurns) {
    // Each change of rate negates the chorus; a value that waits is set first and negated with it.
    const auto render = [](bool applyFirst) {
        Player player(48000.0);
        player.Set({{kChorusOn, 1.0f}, {kChorusWet, 0.8f}});
        if (applyFirst) player.Render(1);
        player.synth.Reset(44100.0);
        player.NoteOn(60);
        return player.Render(4096);
    };
    EXPECT_TRUE(render(false) == render(true));
}

TEST(RunawayGuard, SilencesTheSliceAndPlaysOn) {
    for (float bad : {std::nanf(""), INFINITY, -INFINITY, 1.0e9f}) {
        Player player;
        player.Set({{kReverbOn, 1.0f}, {kDelayOn, 1.0f}, {kChorusOn, 1.0f}});
        player.Set({{kResonatorOn, 1.0f}, {kMasterLevel, 1.0f}});
        player.NoteOn(55);
        EXPECT_GT(player.Render(1024).Peak(), 0.0f);
        player.synth.keyGainLeft[60] = bad;
        player.NoteOn(60);
        EXPECT_TRUE(player.Render(1024).IsFinite());
        EXPECT_LT(player.Render(1024).Peak(), kReverbDust) << "nothing of it is left";
        EXPECT_EQ(player.synth.GetKeyActivity(55), 0.0f);
        player.NoteOn(55);
        const Stereo after = player.Render(1024);
        EXPECT_TRUE(after.IsFinite());
        EXPECT_GT(after.Peak(), 0.0f);
        EXPECT_TRUE(std::isfinite(player.synth.OutputPeak().Get()));
    }
}

}  // namespace
}  // namespace norava
