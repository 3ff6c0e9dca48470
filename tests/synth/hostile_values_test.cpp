#include <gtest/gtest.h>

#include <bit>
#include <cstdint>

#include "synth/hostile_floats.h"
#include "synth/player.h"

namespace norava {
namespace {

using test::Player;

std::uint32_t Bits(float value) {
    return std::bit_cast<std::uint32_t>(value);
}

// A patch in which every parameter is heard.
void UseEverything(Player& player) {
    for (int i = 0; i < kNumParameters; ++i) {
        const Parameter& row = GetParameter(i);
        if (row.curve.shape == CurveShape::onOff) player.Set({{i, 1.0f}});
    }
    for (int slot = 0; slot < kMatrixSlots; ++slot) {
        const int first = param::kMatrix + slot * kMatrixSlotSize;
        player.Set({{first, static_cast<float>(slot + 1)}, {first + 1, 0.6f}});
        player.Set({{first + 3, static_cast<float>(2 * slot)}});
    }
    player.Set({{param::kNoiseLevel, 0.3f}, {param::kStringMix, 0.5f}, {param::kCombLevel, 0.7f}});
}

bool PlaysFinite(Player& player, int note) {
    player.NoteOn(note);
    player.NoteOff(note - 12, 20);
    return player.Render(96).IsFinite();
}

TEST(HostileValues, OneParameterAtATime) {
    for (double rate : {44100.0, 192000.0}) {
        Player player(rate);
        UseEverything(player);
        for (int i = 0; i < kNumParameters; ++i) {
            const float usual = player.synth.GetParamValue(i);
            for (float hostile : test::HostileFloats()) {
                player.Set({{i, hostile}});
                ASSERT_TRUE(PlaysFinite(player, 36 + i % 72))
                    << GetParameter(i).name << " " << hostile;
                ASSERT_EQ(Bits(player.synth.GetParamValue(i)), Bits(hostile));
            }
            player.Set({{i, usual}});
        }
    }
}

TEST(HostileValues, AllParametersAtOnce) {
    for (float hostile : test::HostileFloats()) {
        Player player(48000.0);
        UseEverything(player);
        for (int i = 0; i < kNumParameters; ++i)
            player.Set({{i, hostile}});
        for (int note = 24; note < 108; note += 7)
            EXPECT_TRUE(PlaysFinite(player, note)) << hostile;
        // The instrument recovers with the values.
        player.synth.SetParamsToDefault();
        player.Render(48000);
        player.NoteOn(60);
        EXPECT_GT(player.Render(4800).Peak(), 0.0f);
    }
}

TEST(HostileValues, ModulationThatFeedsItself) {
    // The LFO on its own amplitude, the pitch and the level: each block would multiply what the
    // last one left.
    for (float invert : {0.0f, 1.0f}) {
        Player player(48000.0);
        for (int slot = 0; slot < kMatrixSlots; ++slot) {
            const int first = param::kMatrix + slot * kMatrixSlotSize;
            const float destinations[] = {0.0f, 3.0f, 0.0f, 1.0f};
            player.Set({{first, slot < 6 ? 2.0f : 6.0f}, {first + 1, 1.0f}, {first + 2, invert}});
            player.Set({{first + 3, destinations[slot % 4]}});
        }
        player.Set({{param::kOctave, 1.0f}});
        for (int note = 24; note < 108; ++note)
            player.NoteOn(note, 127);
        EXPECT_TRUE(player.Render(9600).IsFinite());
    }
}

TEST(HostileValues, TemposAndRates) {
    Player player(48000.0);
    UseEverything(player);
    player.Set({{param::kDelayTempo, 9.0f}});
    for (float tempo : test::HostileFloats()) {
        player.NoteOn(60);
        EXPECT_TRUE(player.Render(256, 64, static_cast<double>(tempo)).IsFinite()) << tempo;
    }
    for (float rate : test::HostileFloats()) {
        player.synth.Reset(static_cast<double>(rate));
        EXPECT_TRUE(PlaysFinite(player, 60)) << rate;
    }
}

}  // namespace
}  // namespace norava
