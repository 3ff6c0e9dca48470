#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numeric>
#include <string_view>
#include <vector>

#include "parameters/menus.h"
#include "synth/player.h"

namespace norava {
namespace {

using namespace test;

float Item(Menu menu, std::string_view text) {
    return static_cast<float>(std::ranges::find(menu, text) - menu.begin());
}

// The source counts with the square of the knob.
void Route(Player& player, int slot, const char* source, float knob, const char* destination) {
    const int first = param::kMatrix + slot * kMatrixSlotSize;
    player.Set({{first, Item(kMatrixSourceItems, source)},
                {first + 1, knob},
                {first + 3, Item(kMatrixDestinationItems, destination)}});
}

using Play = std::function<Stereo(Player&)>;

double LogEnergyAtTheEnd(const char* source, const Play& play) {
    Player player;
    player.Set({{param::kMasterLevel, 0.0f}});
    Route(player, 0, source, 1.0f, "level");
    const std::vector<float> sound = play(player).left;
    return std::log10(std::inner_product(sound.end() - 200, sound.end(), sound.end() - 200, 0.0));
}

// The value of a source that is led to the level, where 1 means a factor of 100, from the sound
// that a source which stands at 0 gives.
double Value(std::string_view source, const Play& play) {
    const char* const still = source == "mod whl" ? "aftch" : "mod whl";
    return (LogEnergyAtTheEnd(source.data(), play) - LogEnergyAtTheEnd(still, play)) / 4.0;
}

Stereo Held(Player& player) {
    player.NoteOn(64, 127);
    return player.Render(9600);
}

Play After(int status, int data1, int data2) {
    return [=](Player& player) {
        player.Send(status, data1, data2);
        return Held(player);
    };
}

TEST(ModulationSources, HaveTheirNotesAndControllersValues) {
    EXPECT_NEAR(Value("mod whl", After(0xb0, 1, 64)), 64.0 / 127.0, 1e-3);
    EXPECT_NEAR(Value("ptch whl", After(0xe0, 0, 96)), 0.5, 1e-3);
    EXPECT_NEAR(Value("ptch whl", After(0xe0, 0, 0)), -1.0, 1e-3);
    EXPECT_NEAR(Value("aftch", After(0xd0, 127, 0)), 1.0, 1e-3);
    EXPECT_NEAR(Value("aftch", After(0xa0, 64, 127)), 0.0, 1e-3) << "of the channel, not the key";
    EXPECT_NEAR(Value("velocity", Held), 1.0, 1e-3);
    EXPECT_NEAR(Value("key num", Held), 64.0 / 80.0, 1e-3);
    EXPECT_NEAR(Value("release", Held), 0.0, 1e-3);
    const Play released = [](Player& player) {
        player.Set({{param::kAmpRelease, 0.9f}});
        (void)Held(player);
        player.NoteOff(64);
        return player.Render(9600);
    };
    EXPECT_NEAR(Value("release", released), 1.0, 1e-3);
}

TEST(ModulationSources, EnvelopeAndLfoMove) {
    EXPECT_NEAR(Value("envelope", Held), 1.0, 0.01);
    const Play sustained = [](Player& player) {
        player.Set({{param::kEgDecay, 0.0f}, {param::kEgSustain, 0.5f}});
        return Held(player);
    };
    EXPECT_NEAR(Value("envelope", sustained), 0.25, 0.01);
    EXPECT_NEAR(Value("lfo", Held), 1.0, 0.01) << "0.01 Hz, from its top";
    const Play halfTurn = [](Player& player) {
        player.Set({{param::kLfoRate, 0.584804f}});  // 2.01 Hz: at its bottom after a quarter of a
        player.NoteOn(64, 127);                      // second
        return player.Render(12000, 48);
    };
    EXPECT_NEAR(Value("lfo", halfTurn), -1.0, 0.01);
}

// Velocity by a quarter on top of a knob at a quarter is, to the bit, the knob turned further.
TEST(ModulationDestinations, MoveTheKnobsThatTheyName) {
    using namespace param;
    constexpr float kQuarter = 0.25f;
    const struct {
        const char* destination;
        std::vector<int> knobs;
        float share = 1.0f;
    } cases[] = {
        {"lo-cut ctf", {kLoCutCutoff}, 0.5f},
        {"hi-cut ctf", {kHiCutCutoff}, 0.5f},
        {"hi-cut atk", {kHiCutAttack}},
        {"hi-cut dec", {kHiCutDecay}},
        {"str1 decay", {kString1Decay}},
        {"str2 decay", {kString2Decay}},
        {"stri1&2 dec", {kString1Decay, kString2Decay}},
        {"str1 damp", {kString1DampAmount}},
        {"str2  damp", {kString2DampAmount}},
        {"str1&2 dmp", {kString1DampAmount, kString2DampAmount}},
        {"noise rate", {kNoiseRate}},
    };
    const auto play = [&](const char* destination, const std::vector<int>& turned, float value) {
        Player player;
        player.Set({{kNoiseLevel, 0.5f}, {kStringMix, 0.5f}, {kHiCutSustain, 0.5f}});
        for (const auto& other : cases)
            player.Set({{other.knobs[0], kQuarter}});
        for (const int knob : turned)
            player.Set({{knob, value}});
        if (destination != nullptr) Route(player, 2, "velocity", 0.5f, destination);
        player.NoteOn(45, 127);
        return player.Render(9600, 96);
    };
    const Stereo still = play(nullptr, {}, 0.0f);
    for (const auto& [destination, knobs, share] : cases) {
        const Stereo moved = play(destination, {}, 0.0f);
        EXPECT_TRUE(moved == play(nullptr, knobs, kQuarter + share * kQuarter)) << destination;
        EXPECT_FALSE(moved == still) << destination;
    }
}

TEST(ModulationDestinations, TurnThePanAndTheLfo) {
    const auto play = [](float lfoKnob, const char* destination, float velocityKnob) {
        Player player;
        Route(player, 2, "lfo", lfoKnob, "noise rate");
        Route(player, 3, "velocity", velocityKnob, destination);
        player.Set({{param::kNoiseLevel, 0.5f}});
        player.NoteOn(45, 127);
        return player.Render(4800);
    };
    EXPECT_TRUE(play(1.0f, "lfo ampl", 0.5f) == play(0.5f, "---", 1.0f));
    const Stereo right = play(1.0f, "pan", 1.0f);
    EXPECT_EQ(std::ranges::max(right.left), 0.0f);
    EXPECT_GT(right.Peak(), 0.0f);
}

}  // namespace
}  // namespace norava
