#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "synth/parameter_conversion.h"
#include "synth/player.h"

// What holds for every sound that the instrument can be given. NORAVA_RANDOM_STATES tells how many
// states are drawn (state n is the same in every run), NORAVA_FIRST_STATE where to begin.

namespace norava {
namespace {

using test::Player;
using test::Stereo;

int FromEnvironment(const char* name, int otherwise) {
    const char* const text = std::getenv(name);
    return text != nullptr ? std::stoi(text) : otherwise;
}

class Draw {
  public:
    explicit Draw(int n) : numbers(static_cast<unsigned>(n)) {}

    int Below(int end) { return std::uniform_int_distribution(0, end - 1)(numbers); }
    float Share() { return std::uniform_real_distribution(0.0f, 1.0f)(numbers); }
    bool OneIn(int n) { return Below(n) == 0; }

  private:
    std::mt19937 numbers;
};

// Any knob anywhere, a fifth of them at an end; menus on one of their items.
InstrumentState DrawState(Draw& draw) {
    InstrumentState state;
    state.numValues = kNumParameters;
    for (const Parameter& row : kParameters) {
        float value = draw.OneIn(5) ? static_cast<float>(draw.Below(2)) : draw.Share();
        if (!row.items.empty())
            value = static_cast<float>(draw.Below(static_cast<int>(row.items.size())));
        if (row.index == param::kAmpAttack || row.index == param::kHiCutAttack) value *= 0.3f;
        if (row.curve.shape == CurveShape::onOff) value = draw.OneIn(4) ? 1.0f : 0.0f;
        if (row.curve.shape == CurveShape::positions)
            value = static_cast<float>(draw.Below(7)) / 6.0f;
        state.values[static_cast<std::size_t>(row.index)] = value;
    }
    NameState(state, "random");
    return state;
}

struct Message {
    int part, status, data1, data2, position;
};

struct Performance {
    double rate;
    int block;
    std::vector<Message> messages;
};

constexpr int kParts = 8;
constexpr int kPartFrames = 3000;

Performance DrawPerformance(Draw& draw) {
    constexpr double kRates[] = {22050.0, 44100.0, 48000.0, 96000.0};
    constexpr int kBlocks[] = {1, 37, 64, 512, 1500};
    Performance performance{kRates[draw.Below(4)], kBlocks[draw.Below(5)], {}};
    const auto add = [&](int part, int status, int data1, int data2) {
        const int position = part == 0 && status != 0x90 ? 0 : draw.Below(performance.block);
        performance.messages.push_back({part, status, data1, data2, position});
    };
    // Every controller that sounds has its value from the start, whatever was played before.
    add(0, 0xB0, 1, draw.Below(128));
    add(0, 0xE0, draw.Below(128), draw.Below(128));
    add(0, 0xD0, draw.Below(128), 0);
    for (int i = draw.Below(6); i >= 0; --i) {
        const int note = kFirstKeyNote + draw.Below(kNumKeys);
        add(draw.Below(kParts), 0x90, note, 1 + draw.Below(127));
    }
    for (int i = draw.Below(4); i > 0; --i)
        add(draw.Below(kParts), 0xE0, draw.Below(128), draw.Below(128));
    return performance;
}

Stereo Play(Player& player, const Performance& performance) {
    Stereo all;
    for (int part = 0; part < kParts; ++part) {
        for (const Message& m : performance.messages) {
            if (m.part == part) player.Send(m.status, m.data1, m.data2, m.position);
        }
        const Stereo sound = player.Render(kPartFrames, performance.block);
        all.left.insert(all.left.end(), sound.left.begin(), sound.left.end());
        all.right.insert(all.right.end(), sound.right.begin(), sound.right.end());
    }
    return all;
}

// Loops that keep nearly all they are given go on for minutes, as their player wants them to.
bool MayDrone(const InstrumentState& state) {
    const auto value = [&](int index) { return state.values[static_cast<std::size_t>(index)]; };
    bool drones = value(param::kDelayOn) != 0.0f && value(param::kDelayFeedback) > 0.9f;
    for (int band = 0; band < kResonatorBands; ++band) {
        drones |= value(param::kResonatorOn + band) != 0.0f &&
                  value(param::kResonatorFeedback + band) > 0.9f;
    }
    return drones;
}

// Seconds until a second of sound stays 80 dB below `peak`, or below -120 dBFS.
int SecondsToSilence(Player& player, double rate, float peak, int most) {
    for (int seconds = 0; seconds < most; ++seconds) {
        if (player.Render(static_cast<int>(rate)).Peak() < std::max(1.0e-4f * peak, 1.0e-6f))
            return seconds;
    }
    return most;
}

TEST(RandomStates, AreLoudOnlyWithinBoundsFadeAndRepeatThemselves) {
    constexpr float kLoudest = 1.0e5f;  // before the master level, which reaches 1000 itself
    constexpr int kLongestFade = 180;   // seconds, beside the keys' own release
    const int first = FromEnvironment("NORAVA_FIRST_STATE", 0);
    const int count = FromEnvironment("NORAVA_RANDOM_STATES", 60);
    float loudest = 0.0f;
    int longest = 0, numDrones = 0, numSilent = 0;
    for (int n = first; n < first + count; ++n) {
        SCOPED_TRACE("state " + std::to_string(n));
        Draw draw(n);
        const InstrumentState state = DrawState(draw);
        std::array<char, kStateSize> block;
        WriteStateBlock(state, block.data());
        const Performance performance = DrawPerformance(draw);
        Player player(performance.rate), other(performance.rate);
        for (Player* each : {&player, &other}) {
            ASSERT_TRUE(each->synth.LoadState(block.data(), kStateSize));
            each->synth.Reset(performance.rate);
        }
        const Stereo sound = Play(player, performance);
        ASSERT_TRUE(sound.IsFinite());
        const auto level = static_cast<float>(
            EngineValue(GetParameter(param::kMasterLevel), state.values[param::kMasterLevel]));
        ASSERT_LT(sound.Peak(), kLoudest * level);
        loudest = std::max(loudest, sound.Peak() / level);
        numSilent += sound.Peak() < 1.0e-6f ? 1 : 0;

        ASSERT_TRUE(Play(other, performance) == sound) << "another instance";

        for (const Message& m : performance.messages) {
            if (m.status == 0x90) player.NoteOff(m.data1);
        }
        if (MayDrone(state)) {
            ++numDrones;
            ASSERT_TRUE(player.Render(static_cast<int>(performance.rate)).IsFinite());
        } else {
            const int seconds =
                SecondsToSilence(player, performance.rate, sound.Peak(), kLongestFade);
            ASSERT_LT(seconds, kLongestFade);
            longest = std::max(longest, seconds);
        }

        // A new rate turns the sign of the chorus: twice is as before.
        player.synth.Reset(performance.rate);
        player.synth.Reset(performance.rate);
        player.synth.SetNoiseSeed(0);
        ASSERT_TRUE(Play(player, performance) == sound) << "after a reset";
    }
    std::printf(
        "%d states: loudest %.0f before the master level, longest fade %d s, %d that may drone, "
        "%d silent\n",
        count, static_cast<double>(loudest), longest, numDrones, numSilent);
}

}  // namespace
}  // namespace norava
