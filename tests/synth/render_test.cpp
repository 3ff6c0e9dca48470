#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "dsp/key_kernel.h"
#include "dsp/key_voice.h"
#include "synth/player.h"

namespace norava {
namespace {

using test::Player;
using test::Stereo;

// A reset reverb holds 1e-30 in all its lines.
constexpr float kReverbDust = 1.0e-15f;

float Peak(const std::vector<float>& samples) {
    float peak = 0.0f;
    for (float x : samples)
        peak = std::max(peak, std::abs(x));
    return peak;
}

TEST(Render, IsTheVoicesSampleForSampleAt48kHz) {
    Player player;
    player.Set({{param::kMasterLevel, 0.375f}});  // 10^0
    player.NoteOn(60, 127);
    const Stereo out = player.Render(480, 480);

    SoundSettings sound;
    sound.matrix[0] = {6, 1.0f, 1};
    sound.matrix[1] = {4, 1.0f, 3};
    sound.lfoValue = 1.0f;
    std::vector<std::unique_ptr<CNoravaKey>> keys;
    std::vector<CNoravaKey*> pointers;
    for (int k = 0; k < kNumKeys; ++k) {
        keys.push_back(std::make_unique<CNoravaKey>(kFirstKeyNote + k, sound));
        pointers.push_back(keys.back().get());
    }
    keys[60 - kFirstKeyNote]->start(1.0f);
    std::vector<float> left(481), right(481);  // one internal frame late
    float peak1 = 0.0f, peak2 = 0.0f;
    for (std::size_t i = 0; i < 480; i += 48) {
        processKeys(sound, &left[i + 1], &right[i + 1], 48, pointers.data(), &peak1, &peak2);
    }
    CNoravaFX effects;
    effects.setSampleRate(48000.0);
    effects.process(left.data(), right.data(), left.data(), right.data(), 480);
    for (std::size_t i = 0; i < 480; ++i) {
        ASSERT_FLOAT_EQ(out.left[i], left[i]) << i;
        ASSERT_FLOAT_EQ(out.right[i], right[i]) << i;
    }
    EXPECT_EQ(player.synth.String1Peak().Get(), peak1);
    EXPECT_GT(peak1, 0.0f);
}

TEST(Render, IgnoresNotesBeyondTheKeys) {
    Player player;
    for (int note : {0, 23, 108, 127}) {
        player.NoteOn(note);
        player.NoteOff(note, 10);
    }
    EXPECT_EQ(player.Render(2048).Peak(), 0.0f);
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
    Player player;
    CNoravaSynth& synth = player.synth;
    const auto control = [&player](int number, int value) {
        player.Send(0xb0, static_cast<unsigned char>(number), static_cast<unsigned char>(value));
        player.Render(1);
    };
    EXPECT_FLOAT_EQ(synth.GetChnLevel(false), 3.9810717f);
    EXPECT_FLOAT_EQ(synth.GetChnLevel(true), 3.9810717f);
    control(10, 127);  // above the centre the right side goes
    EXPECT_FLOAT_EQ(synth.GetChnLevel(false), 3.9810717f);
    EXPECT_EQ(synth.GetChnLevel(true), 0.0f);
    control(10, 0);
    EXPECT_EQ(synth.GetChnLevel(false), 0.0f);
    EXPECT_FLOAT_EQ(synth.GetChnLevel(true), 3.9810717f);
    player.NoteOn(60);
    const Stereo out = player.Render(2048);
    EXPECT_EQ(Peak(out.left), 0.0f);
    EXPECT_GT(Peak(out.right), 0.0f);
    EXPECT_EQ(synth.OutputPeak().Get(), out.Peak());
    control(7, 0);
    EXPECT_EQ(synth.GetChnLevel(true), 0.0f);
}

// Control blocks are 48 frames counted from the start of each host block, so blocks of whole
// control blocks must sound alike.
TEST(Render, IsTheSameForBlocksOfWholeControlBlocks) {
    const auto render = [](int block) {
        Player player;
        player.Set({{param::kReverbOn, 1.0f}, {param::kDelayOn, 1.0f}, {param::kChorusOn, 1.0f}});
        player.Set({{param::kResonatorOn + 2, 1.0f}, {param::kResonatorFeedback + 2, 0.9f}});
        player.NoteOn(50);
        player.NoteOn(57, 60);
        return player.Render(9600, block);
    };
    const Stereo reference = render(480);
    EXPECT_GT(reference.Peak(), 0.01f);
    for (int block : {48, 96, 240})
        EXPECT_EQ(render(block), reference) << block;
}

// Voices look again only at what is said to have changed. Tune, set to what it is, makes them look
// at everything.
TEST(Render, HearsEveryKnobWhileAKeySounds) {
    const auto play = [](const Parameter& turned, bool alone) {
        Player player;
        player.NoteOn(52);
        player.Render(960, 480);
        player.Set({{turned.index, turned.items.empty() ? 0.4f : 1.0f}});
        if (!alone) player.Set({{param::kTune, player.synth.GetParamValue(param::kTune)}});
        return player.Render(960, 480);
    };
    for (const Parameter& parameter : kParameters)
        EXPECT_TRUE(play(parameter, true) == play(parameter, false)) << parameter.name;
}

TEST(Render, IsTheSameForEveryInstance) {
    const auto prepare = [](Player& player) {
        player.Set({{param::kNoiseLevel, 0.2f},
                    {param::kNoiseRate, 0.3f},
                    {param::kReverbOn, 1.0f},
                    {param::kLfoRate, 0.7f}});
        for (int note : {40, 47, 52, 56, 59, 64})
            player.NoteOn(note, note);
    };
    Player alone(44100.0);
    prepare(alone);
    const Stereo reference = alone.Render(8192, 128);

    // Eight at once, their blocks interleaved: none hears of another's noise.
    std::vector<std::unique_ptr<Player>> players;
    for (int i = 0; i < 8; ++i)
        prepare(*players.emplace_back(std::make_unique<Player>(44100.0)));
    for (int done = 0; done < 8192; done += 128) {
        for (auto& player : players) {
            const Stereo part = player->Render(128, 128);
            const auto at = static_cast<std::ptrdiff_t>(done);
            ASSERT_TRUE(
                std::equal(part.left.begin(), part.left.end(), reference.left.begin() + at));
            ASSERT_TRUE(
                std::equal(part.right.begin(), part.right.end(), reference.right.begin() + at));
        }
    }
}

TEST(Render, ResetLeavesNothingBehind) {
    const auto patch = [](Player& player) {
        // No noise in this one (1 is none): the seed runs on through a reset.
        player.Set({{param::kNoiseLevel, 1.0f}, {param::kReverbOn, 1.0f}, {param::kDelayOn, 1.0f}});
        player.Set({{param::kResonatorOn, 1.0f}, {param::kResonatorFeedback, 1.0f}});
        player.Set(
            {{param::kLfoRate, 0.9f}, {param::kMatrix + 8, 2.0f}, {param::kMatrix + 9, 0.5f}});
        player.Set({{param::kMatrix + 11, 3.0f}, {param::kAmpRelease, 0.4f}});
    };
    Player fresh(44100.0), used(44100.0);
    patch(fresh);
    patch(used);
    fresh.Render(100);  // the delay takes its time setting over with the first block
    fresh.synth.Reset(0.0);
    for (int note = 30; note < 90; ++note)
        used.NoteOn(note);
    used.Render(20000, 100);
    used.synth.Reset(0.0);
    EXPECT_EQ(used.synth.OutputPeak().Get(), 0.0f);
    EXPECT_EQ(used.synth.GetKeyActivity(60), 0.0f);
    EXPECT_LT(used.Render(512).Peak(), kReverbDust);
    used.synth.Reset(0.0);
    for (Player* player : {&fresh, &used})
        player->NoteOn(50);
    EXPECT_EQ(used.Render(20000, 100), fresh.Render(20000, 100));
}

TEST(Render, PendingValuesComeBeforeTheSignOfTheChorusTurns) {
    // Each change of rate negates the chorus; a value that waits is set first and negated with it.
    const auto render = [](bool applyFirst) {
        Player player(48000.0);
        player.Set({{param::kChorusOn, 1.0f}, {param::kChorusWet, 0.8f}});
        if (applyFirst) player.Render(1);
        player.synth.Reset(44100.0);
        player.NoteOn(60);
        return player.Render(4096);
    };
    EXPECT_EQ(render(false), render(true));
}

// Lets a test break the engine from inside.
class Breakable : public CNoravaSynth {
  public:
    void SetKeyGain(int note, float gain) { keyGainLeft[static_cast<std::size_t>(note)] = gain; }
};

TEST(RunawayGuard, SilencesTheSliceAndPlaysOn) {
    for (float bad : {std::nanf(""), INFINITY, -INFINITY, 1.0e9f}) {
        test::BasicPlayer<Breakable> player;
        player.Set({{param::kReverbOn, 1.0f}, {param::kDelayOn, 1.0f}, {param::kChorusOn, 1.0f}});
        player.Set({{param::kResonatorOn, 1.0f}, {param::kMasterLevel, 1.0f}});
        player.NoteOn(55);
        EXPECT_GT(player.Render(1024).Peak(), 0.0f);
        player.synth.SetKeyGain(60, bad);
        player.NoteOn(60);
        const Stereo out = player.Render(1024);
        EXPECT_TRUE(out.IsFinite());
        EXPECT_LT(player.Render(1024).Peak(), kReverbDust)
            << "nothing of it is left in the effects";
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
