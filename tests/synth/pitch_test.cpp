#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>

#include "synth/measure.h"
#include "synth/player.h"

namespace norava {
namespace {

using namespace test;

TEST(Pitch, IsTrueOverTheWholeRange) {
    for (const double rate : {44100.0, 48000.0}) {
        for (int note = kFirstKeyNote; note < kFirstKeyNote + kNumKeys; ++note) {
            Player player(rate);
            player.NoteOn(note);
            const Stereo out = player.Render(static_cast<int>(0.6 * rate));
            const double cents = CentsAbove(Part(out.left, 0.5, 1.0), rate, NoteHertz(note));
            EXPECT_LT(std::abs(cents), 0.2) << "note " << note << " at " << rate << " Hz";
        }
    }
}

// How far note 57 with these values lies from another note.
double CentsFrom(int heardNote, std::initializer_list<ParamValue> values, int wheel = 8192) {
    Player player;
    player.Set(values);
    player.Send(0xe0, static_cast<unsigned char>(wheel & 127),
                static_cast<unsigned char>(wheel >> 7));
    player.NoteOn(57);
    const Stereo out = player.Render(24000);
    return CentsAbove(Part(out.left, 0.4, 1.0), 48000.0, NoteHertz(heardNote));
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
