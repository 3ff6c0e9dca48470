#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <span>

#include "synth/player.h"

namespace norava {
namespace {

using namespace test;

// How much a signal differs from itself `lag` frames later: 0 for a period, or several, of a steady
// tone.
double Difference(std::span<const float> samples, double lag) {
    const auto whole = static_cast<std::size_t>(lag);
    const double fraction = lag - static_cast<double>(whole);
    double sum = 0.0;
    for (std::size_t i = 0; i + whole + 1 < samples.size(); ++i) {
        const double a = samples[i + whole], b = samples[i + whole + 1];
        const double d = samples[i] - (a + fraction * (b - a));
        sum += d * d;
    }
    return sum / static_cast<double>(samples.size() - whole);
}

// Cents by which a note of 0.5 s or more lies above another, from -50 to 50: the lag after which
// its second half repeats itself best, first of a few periods, so that one more or less is out of
// reach, then of more and more of them.
double CentsAbove(const Stereo& sound, double rate, int note) {
    const auto samples = std::span(sound.left).subspan(sound.left.size() / 2);
    const double hertz = 440.0 * std::exp2((note - 69) / 12.0);
    double best = 0.0;
    const struct {
        double seconds, reach, step;
    } stages[] = {{0.003, 50.0, 1.0}, {0.03, 2.0, 0.2}, {0.1, 0.5, 0.02}};
    for (const auto& [seconds, reach, step] : stages) {
        const double periods = std::max(1.0, std::floor(hertz * seconds));
        const double lowest = best - reach;
        double least = 1.0e300;
        for (int i = 0; i <= std::lround(2.0 * reach / step); ++i) {
            const double cents = lowest + i * step;
            const double lag = periods * rate / (hertz * std::exp2(cents / 1200.0));
            const double difference = Difference(samples, lag);
            if (difference < least) best = cents;
            least = std::min(least, difference);
        }
    }
    return best;
}

TEST(Pitch, IsTrueOverTheWholeRange) {
    for (const double rate : {44100.0, 48000.0}) {
        for (int note = kFirstKeyNote; note < kFirstKeyNote + kNumKeys; ++note) {
            Player player(rate);
            player.NoteOn(note);
            const Stereo sound = player.Render(static_cast<int>(0.6 * rate));
            EXPECT_NEAR(CentsAbove(sound, rate, note), 0.0, 0.2) << note << " at " << rate;
        }
    }
}

// How far note 57 with these values lies from another note.
double CentsFrom(int heardNote, std::initializer_list<ParamValue> values, int wheel = 64) {
    Player player;
    player.Set(values);
    player.Send(0xe0, 0, wheel);
    player.NoteOn(57);
    return CentsAbove(player.Render(28800), 48000.0, heardNote);
}

TEST(Pitch, FollowsTuneOctaveRatioAndWheel) {
    EXPECT_NEAR(CentsFrom(57, {{param::kTune, 0.625f}}), 24.0, 0.2) << "whole cents";
    for (int k = 0; k <= 6; ++k) {
        const float knob = static_cast<float>(k) / 6.0f;
        EXPECT_NEAR(CentsFrom(57 + 12 * (k - 3), {{param::kOctave, knob}}), 0.0, 0.2) << k;
    }
    EXPECT_NEAR(CentsFrom(57, {{param::kOctave, 7.0f}}), 0.0, 0.2);
    // The second string alone: an octave lower at "1 : 2".
    EXPECT_NEAR(CentsFrom(45, {{param::kStringMix, 1.0f}, {param::kStringRatio, 4.0f}}), 0.0, 0.2);
    // The default matrix leads the wheel to the pitch: two semitones down at the bottom.
    EXPECT_NEAR(CentsFrom(55, {}, 0), 0.0, 0.2);
    EXPECT_NEAR(CentsFrom(59, {{param::kMatrix + 6, 1.0f}}, 0), 0.0, 0.2) << "inverted";
}

}  // namespace
}  // namespace norava
