#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "synth/measure.h"
#include "synth/player.h"

namespace norava {
namespace {

using namespace test;

enum Source {
    kNothing,
    kEnvelope,
    kLfo,
    kModWheel,
    kPitchWheel,
    kAftertouch,
    kVelocity,
    kKeyNumber,
    kRelease
};
enum Destination {
    kLfoAmplitude,
    kLevel,
    kPan,
    kPitch,
    kLoCut,
    kHiCut,
    kHiCutAttack,
    kHiCutDecay,
    kDecay1,
    kDecay2,
    kDecayBoth,
    kDamp1,
    kDamp2,
    kDampBoth,
    kNoiseRate,
};

void Route(Player& player, int slot, int source, float amount, int destination) {
    const int first = param::kMatrix + slot * kMatrixSlotSize;
    player.Set({{first, static_cast<float>(source)}, {first + 1, amount}});
    player.Set({{first + 3, static_cast<float>(destination)}});
}

// Every source is led to the level, where the value 1 means a factor of 100.
class ModulationSources : public testing::Test {
  protected:
    using Play = std::function<Stereo(Player&)>;

    // The value of the source, from the level against that of a source which stands at 0.
    double Value(Source source, const Play& play) {
        double levels[2];
        const Source still = source == kModWheel ? kAftertouch : kModWheel;
        for (int i = 0; i < 2; ++i) {
            Player player;
            player.Set({{param::kMasterLevel, 0.0f}});
            Route(player, 0, i == 0 ? still : source, 1.0f, kLevel);
            levels[i] = Rms(Part(play(player).left, 0.6, 1.0));
        }
        return std::log10(levels[1] / levels[0]) / 2.0;
    }
    static Stereo Held(Player& player) {
        player.NoteOn(64, 127);
        return player.Render(9600);
    }
    static Play After(int status, int data1, int data2) {
        return [=](Player& player) {
            player.Send(static_cast<unsigned char>(status), static_cast<unsigned char>(data1),
                        static_cast<unsigned char>(data2));
            return Held(player);
        };
    }
};

TEST_F(ModulationSources, HaveTheirNotesAndControllersValues) {
    EXPECT_NEAR(Value(kModWheel, After(0xb0, 1, 64)), 64.0 / 127.0, 1e-3);
    EXPECT_NEAR(Value(kPitchWheel, After(0xe0, 0, 96)), 0.5, 1e-3);
    EXPECT_NEAR(Value(kPitchWheel, After(0xe0, 0, 0)), -1.0, 1e-3);
    EXPECT_NEAR(Value(kAftertouch, After(0xd0, 127, 0)), 1.0, 1e-3);
    EXPECT_NEAR(Value(kAftertouch, After(0xa0, 64, 127)), 0.0, 1e-3)
        << "of the channel, not the key";
    EXPECT_NEAR(Value(kVelocity, Held), 1.0, 1e-3);
    EXPECT_NEAR(Value(kKeyNumber, Held), 64.0 / 80.0, 1e-3);
    EXPECT_NEAR(Value(kRelease, Held), 0.0, 1e-3);
    const Play released = [](Player& player) {
        player.Set({{param::kAmpRelease, 0.9f}});
        (void)Held(player);
        player.NoteOff(64);
        return player.Render(4800);
    };
    EXPECT_NEAR(Value(kRelease, released), 1.0, 1e-3);
}

TEST_F(ModulationSources, EnvelopeAndLfoMove) {
    EXPECT_NEAR(Value(kEnvelope, Held), 1.0, 0.01);
    const Play sustained = [](Player& player) {
        player.Set({{param::kEgDecay, 0.0f}, {param::kEgSustain, 0.5f}});
        return Held(player);
    };
    EXPECT_NEAR(Value(kEnvelope, sustained), 0.25, 0.01);
    EXPECT_NEAR(Value(kLfo, Held), 1.0, 0.01) << "0.01 Hz, from its top";
    const Play halfTurn = [](Player& player) {
        player.Set(
            {{param::kLfoRate, 0.584804f}});  // 2.01 Hz: at its bottom after a quarter second
        player.NoteOn(64, 127);
        Stereo out = player.Render(12000, 48);
        out.left.erase(out.left.begin(), out.left.end() - 200);
        return out;
    };
    EXPECT_NEAR(Value(kLfo, halfTurn), -1.0, 0.01);
}

// A quality of the sound that a destination names, and the sense in which more of the source must
// move it.
struct Effect {
    Destination destination;
    int sense;  // 1 up, -1 down, 0 not at all
    std::vector<ParamValue> patch;
    std::function<double(const Stereo&)> measure;
    float amount = 0.4f;
};

Stereo Pluck(const Effect& effect, float amount) {
    Player player;
    player.Set({{param::kMasterLevel, 0.25f}});
    for (const ParamValue& v : effect.patch)
        player.Set({v});
    if (effect.destination == kLfoAmplitude) Route(player, 3, kLfo, 0.7f, kLevel);
    if (amount > 0.0f) Route(player, 2, kVelocity, amount, effect.destination);
    player.NoteOn(45, 127);
    return player.Render(24000, 96);
}

double Level(const Stereo& s) {
    return Rms(s.left);
}
double Balance(const Stereo& s) {
    return Rms(s.right) / Rms(s.left);
}
double Treble(const Stereo& s) {
    return Brightness(Part(s.left, 0.1, 0.5));
}
double Softness(const Stereo& s) {
    return Rms(Part(s.left, 0.5, 1.0)) / Rms(Part(s.left, 0.0, 0.05));
}
double Burst(const Stereo& s) {
    return Rms(Part(s.left, 0.1, 0.2)) / Rms(Part(s.left, 0.0, 0.05));
}
double Sustain(const Stereo& s) {
    return Rms(Part(s.left, 0.7, 1.0)) / Rms(Part(s.left, 0.0, 0.3));
}
double Cents(const Stereo& s) {
    return CentsAbove(Part(s.left, 0.4, 1.0), 48000.0, NoteHertz(45));
}
double Swing(const Stereo& s) {
    double most = 0.0, least = 1.0e9;
    for (int i = 0; i < 33; ++i) {
        const double at = 0.3 + 0.02 * i;
        const double level = Rms(Part(s.left, at, at + 0.02));
        most = std::max(most, level);
        least = std::min(least, level);
    }
    return most / least;
}

TEST(ModulationDestinations, MoveWhatTheyName) {
    const std::vector<ParamValue> string1{{param::kString1Decay, 0.5f},
                                          {param::kString2Decay, 0.5f}};
    std::vector<ParamValue> string2 = string1;
    string2.push_back({param::kStringMix, 1.0f});
    const std::vector<ParamValue> noise{{param::kNoiseLevel, 0.0f},
                                        {param::kHiCutSustain, 1.0f},
                                        {param::kHiCutCutoff, 1.0f},
                                        {param::kString1Decay, 0.2f}};
    const std::vector<ParamValue> burst{
        {param::kNoiseLevel, 0.0f}, {param::kNoiseRate, 0.8f}, {param::kString1Decay, 0.0f}};
    const Effect effects[] = {
        {kLfoAmplitude, -1, {{param::kLfoRate, 1.0f}}, Swing},  // 0.25 in place of the neutral 1
        {kLevel, 1, {}, Level},
        {kPan, 1, {}, Balance},
        {kPitch, 1, {}, Cents},
        {kLoCut, 1, {}, Treble},
        {kHiCut, 1, {}, Treble},
        {kHiCutAttack, 1, {}, Softness, 1.0f},
        {kHiCutDecay, 1, burst, Burst},
        {kDecay1, 1, string1, Sustain},
        {kDecay1, 0, string2, Sustain},
        {kDecay2, 1, string2, Sustain},
        {kDecay2, 0, string1, Sustain},
        {kDecayBoth, 1, string1, Sustain},
        {kDecayBoth, 1, string2, Sustain},
        {kDamp1, -1, string1, Treble, 0.9f},
        {kDamp1, 0, string2, Treble, 0.9f},
        {kDamp2, -1, string2, Treble, 0.9f},
        {kDamp2, 0, string1, Treble, 0.9f},
        {kDampBoth, -1, string1, Treble, 0.9f},
        {kDampBoth, -1, string2, Treble, 0.9f},
        {kNoiseRate, 1, noise, Treble},
    };
    for (const Effect& effect : effects) {
        SCOPED_TRACE("destination " + std::to_string(effect.destination));
        const double without = effect.measure(Pluck(effect, 0.0f));
        const double with = effect.measure(Pluck(effect, effect.amount));
        if (effect.sense == 0) {
            EXPECT_EQ(with, without);
        } else {
            EXPECT_GT(effect.sense * (with - without), 0.05 * std::abs(without))
                << with << " " << without;
        }
    }
}

}  // namespace
}  // namespace norava
