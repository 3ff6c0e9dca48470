#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "synth/player.h"

// A few short sounds held to what they were when somebody listened to them. After a change that is
// meant to be heard: NORAVA_MINT_GOLDEN=1 build/release/tests/synth/test_synth
// --gtest_filter='Golden*', listen to the files (16 bits, two channels), commit them.

namespace norava {
namespace {

using test::Player;
using test::Stereo;
using namespace param;

constexpr int kFrames = 12000;
constexpr float kFullScale = 4.0f;  // of the stored samples
constexpr double kTolerance = 2.0;  // steps of 16 bits: what another maths library may change
constexpr float kStep = kFullScale / 32768.0f;

void Hold(const std::string& name, const Stereo& sound) {
    ASSERT_GT(sound.Peak(), 0.1f);
    ASSERT_LT(sound.Peak(), kFullScale);
    std::vector<float> samples;  // in steps
    for (std::size_t i = 0; i < sound.left.size(); ++i)
        samples.insert(samples.end(), {sound.left[i] / kStep, sound.right[i] / kStep});

    const std::string path = std::string(NORAVA_GOLDEN_DIR) + "/" + name + ".s16";
    std::vector<std::int16_t> stored(samples.size());
    const auto bytes = static_cast<std::streamsize>(stored.size() * sizeof(stored[0]));
    if (std::getenv("NORAVA_MINT_GOLDEN") != nullptr) {
        for (std::size_t i = 0; i < samples.size(); ++i)
            stored[i] = static_cast<std::int16_t>(std::lround(samples[i]));
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(stored.data()), bytes);
    }
    std::ifstream file(path, std::ios::binary);
    ASSERT_TRUE(file.read(reinterpret_cast<char*>(stored.data()), bytes)) << path;
    for (std::size_t i = 0; i < samples.size(); ++i)
        ASSERT_NEAR(samples[i], stored[i], kTolerance) << path << ", frame " << i / 2;
}

TEST(Golden, DefaultPluck) {
    Player player(48000.0);
    player.Set({{kMasterLevel, 0.4f}});
    player.NoteOn(57, 90);
    player.NoteOff(57, 9000);
    Hold("default_pluck", player.Render(kFrames, kFrames));
}

TEST(Golden, ChordWithModulation) {
    Player player(44100.0);
    player.Set({{kMasterLevel, 0.4f}, {kNoiseLevel, 0.4f}, {kNoiseRate, 0.4f}});
    player.Set({{kString1Decay, 0.6f}, {kString1DampAmount, 0.6f}, {kStringMix, 0.4f}});
    player.Set({{kString1DampSharpness, 0.5f}, {kString2DampAmount, 0.3f}});
    player.Set({{kStringRatio, 4.0f}, {kStringSaturation, 0.4f}, {kTune, 0.7f}});
    player.Set({{kCombFeedback, 0.3f}, {kCombLevel, 0.5f}, {kCombLevelInvert, 1.0f}});
    player.Set({{kHiCutSustain, 0.3f}, {kHiCutResonance, 0.5f}, {kHiCutDrive, 0.4f}});
    player.Set({{kLoCutCutoff, 0.2f}, {kAmpAttack, 0.2f}, {kLfoRate, 0.8f}});
    // LFO to pitch and pan, envelope to the hi-cut, key number to the damping.
    constexpr float kRoutes[][3] = {
        {2.0f, 0.4f, 3.0f}, {2.0f, 0.8f, 2.0f}, {1.0f, 0.7f, 5.0f}, {7.0f, 0.3f, 13.0f}};
    for (int i = 0; i < 4; ++i) {
        const int slot = kMatrix + (i + 2) * kMatrixSlotSize;
        player.Set({{slot, kRoutes[i][0]}, {slot + 1, kRoutes[i][1]}, {slot + 3, kRoutes[i][2]}});
    }
    for (int note : {45, 52, 57, 61, 64})
        player.NoteOn(note, 20 + note, (note - 45) * 50);
    player.Send(0xe0, 0, 80, 3000);
    Hold("chord_with_modulation", player.Render(kFrames, kFrames));
}

TEST(Golden, EveryEffect) {
    Player player(48000.0);
    player.Set({{kMasterLevel, 0.15f}, {kString1Decay, 0.4f}});
    for (int band = 0; band < kResonatorBands; ++band) {
        const float share = static_cast<float>(band) / kResonatorBands;
        player.Set({{kResonatorFrequency + band, 0.1f + 0.8f * share}});
        player.Set({{kResonatorFeedback + band, 0.5f + 0.4f * share}});
        player.Set({{kResonatorOn + band, 1.0f}});
    }
    player.Set({{kChorusOn, 1.0f}, {kReverbOn, 1.0f}, {kReverbMix, 0.7f}});
    player.Set({{kDelayOn, 1.0f}, {kDelayTime, 0.1f}, {kDelayWet, 0.8f}});
    player.NoteOn(50, 110);
    player.NoteOff(50, 2000);
    Hold("every_effect", player.Render(kFrames, kFrames));
}

}  // namespace
}  // namespace norava
