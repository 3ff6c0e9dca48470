#pragma once

#include <span>
#include <vector>

#include "program_text/program_text.h"

// Short pieces of music played on a program, and what came out.

namespace norava {

inline constexpr int kCheckRateHz = 48000;

struct PlayedNote {
    double seconds;  // from the start
    double length;   // seconds
    int note;        // MIDI, 60 is middle C
    int velocity;    // 1..127
};

struct Performance {
    std::vector<PlayedNote> notes;
    double seconds = 0.0;      // of the recording
    int wheel = 0;             // modulation wheel, 0..127
    int pressure = 0;          // of the whole keyboard, 0..127
    bool dry = false;          // without resonators, chorus, reverb and delay
    bool untilSilent = false;  // stop early when it has died away
};

struct Recording {
    std::vector<float> left;
    std::vector<float> right;
    bool died = false;  // the last of it is silence
    double Seconds() const { return double(left.size()) / kCheckRateHz; }
};

// Below it, -80 dBFS, a sound counts as silent.
inline constexpr float kSilentLevel = 1.0e-4f;

// An arpeggio, struck chords, and held chords under a melody, all forte and between C2 and D5:
// eight seconds that let slow sounds speak and short ones fill the time.
Performance ReferencePhrase();
// A chord of four notes at full velocity, held for three seconds, until it has died away.
Performance FullChord();
// The same chord held for eight seconds, long enough for slow sweeps and for what is random.
Performance LongChord();
Performance SingleNote(int note, int velocity, double length, double seconds);

// With an instrument of its own; any thread.
Recording Play(const Program& program, const Performance& performance);

}  // namespace norava
