#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
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

constexpr int kFrames = 12000;
constexpr float kFullScale = 4.0f;  // of the stored samples
constexpr double kTolerance = 2.0;  // steps of 16 bits: what another maths library may change
constexpr float kStep = kFullScale / 32768.0f;

Stereo DefaultPluck() {
    Player player(48000.0);
    player.Set({{param::kMasterLevel, 0.4f}});
    player.NoteOn(57, 90);
    player.NoteOff(57, 9000);
    return player.Render(kFrames, kFrames);
}

Stereo ChordWithModulation() {
    Player player(44100.0);
    player.Set(
        {{param::kMasterLevel, 0.4f}, {param::kNoiseLevel, 0.4f}, {param::kNoiseRate, 0.4f}});
    player.Set({{param::kString1Decay, 0.6f},
                {param::kString1DampAmount, 0.6f},
                {param::kStringMix, 0.4f}});
    player.Set({{param::kString1DampSharpness, 0.5f}, {param::kString2DampAmount, 0.3f}});
    player.Set(
        {{param::kStringRatio, 4.0f}, {param::kStringSaturation, 0.4f}, {param::kTune, 0.7f}});
    player.Set(
        {{param::kCombFeedback, 0.3f}, {param::kCombLevel, 0.5f}, {param::kCombLevelInvert, 1.0f}});
    player.Set(
        {{param::kHiCutSustain, 0.3f}, {param::kHiCutResonance, 0.5f}, {param::kHiCutDrive, 0.4f}});
    player.Set({{param::kLoCutCutoff, 0.2f}, {param::kAmpAttack, 0.2f}, {param::kLfoRate, 0.8f}});
    // LFO to pitch and pan, envelope to the hi-cut, key number to the damping.
    constexpr float kRoutes[][3] = {
        {2.0f, 0.4f, 3.0f}, {2.0f, 0.8f, 2.0f}, {1.0f, 0.7f, 5.0f}, {7.0f, 0.3f, 13.0f}};
    for (int i = 0; i < 4; ++i) {
        const int slot = param::kMatrix + (i + 2) * kMatrixSlotSize;
        player.Set({{slot, kRoutes[i][0]}, {slot + 1, kRoutes[i][1]}, {slot + 3, kRoutes[i][2]}});
    }
    for (int note : {45, 52, 57, 61, 64})
        player.NoteOn(note, 20 + note, (note - 45) * 50);
    player.Send(0xe0, 0, 80, 3000);
    return player.Render(kFrames, kFrames);
}

Stereo EveryEffect() {
    Player player(48000.0);
    player.Set({{param::kMasterLevel, 0.15f}, {param::kString1Decay, 0.4f}});
    for (int band = 0; band < kResonatorBands; ++band) {
        const float share = static_cast<float>(band) / kResonatorBands;
        player.Set({{param::kResonatorFrequency + band, 0.1f + 0.8f * share}});
        player.Set({{param::kResonatorFeedback + band, 0.5f + 0.4f * share}});
        player.Set({{param::kResonatorOn + band, 1.0f}});
    }
    player.Set({{param::kChorusOn, 1.0f}, {param::kReverbOn, 1.0f}, {param::kReverbMix, 0.7f}});
    player.Set({{param::kDelayOn, 1.0f}, {param::kDelayTime, 0.1f}, {param::kDelayWet, 0.8f}});
    player.NoteOn(50, 110);
    player.NoteOff(50, 2000);
    return player.Render(kFrames, kFrames);
}

// CRC-32 of the samples' bits, to compare builds with each other.
std::uint32_t Checksum(const Stereo& sound) {
    std::uint32_t crc = 0xffffffffu;
    for (const auto* channel : {&sound.left, &sound.right}) {
        for (float sample : *channel) {
            crc ^= std::bit_cast<std::uint32_t>(sample);
            for (int i = 0; i < 32; ++i)
                crc = (crc >> 1) ^ ((crc & 1u) != 0 ? 0xedb88320u : 0u);
        }
    }
    return ~crc;
}

class Golden : public testing::Test {
  protected:
    void Hold(const std::string& name, const Stereo& sound) {
        std::printf("golden %s %08x\n", name.c_str(), Checksum(sound));
        ASSERT_GT(sound.Peak(), 0.1f);
        ASSERT_LT(sound.Peak(), kFullScale);
        const std::string path = std::string(NORAVA_GOLDEN_DIR) + "/" + name + ".s16";
        const char* const mint = std::getenv("NORAVA_MINT_GOLDEN");
        if (mint != nullptr && *mint == '1') Mint(path, sound);
        Compare(path, sound);
    }

  private:
    static void Mint(const std::string& path, const Stereo& sound) {
        std::ofstream file(path, std::ios::binary);
        for (std::size_t i = 0; i < sound.left.size(); ++i) {
            for (float sample : {sound.left[i], sound.right[i]}) {
                const auto stored = static_cast<std::int16_t>(std::lround(sample / kStep));
                file.write(reinterpret_cast<const char*>(&stored), sizeof(stored));
            }
        }
    }
    static void Compare(const std::string& path, const Stereo& sound) {
        std::ifstream file(path, std::ios::binary);
        std::vector<std::int16_t> stored(sound.left.size() * 2);
        const auto bytes = static_cast<std::streamsize>(stored.size() * sizeof(stored[0]));
        ASSERT_TRUE(file.read(reinterpret_cast<char*>(stored.data()), bytes)) << path;
        for (std::size_t i = 0; i < sound.left.size(); ++i) {
            ASSERT_NEAR(sound.left[i] / kStep, stored[2 * i], kTolerance)
                << path << ", frame " << i;
            ASSERT_NEAR(sound.right[i] / kStep, stored[2 * i + 1], kTolerance)
                << path << ", frame " << i;
        }
    }
};

TEST_F(Golden, DefaultPluck) {
    Hold("default_pluck", DefaultPluck());
}
TEST_F(Golden, ChordWithModulation) {
    Hold("chord_with_modulation", ChordWithModulation());
}
TEST_F(Golden, EveryEffect) {
    Hold("every_effect", EveryEffect());
}

}  // namespace
}  // namespace norava
