#include "program/program_check.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "program/measures.h"
#include "program/spectrum.h"

namespace norava {

namespace {

constexpr int kSoft = 32, kMiddling = 96, kHard = 120;  // velocities
constexpr int kA3 = 57, kMiddleC = 60, kC5 = 72;
constexpr int kUp = 127;  // of the wheel, and of pressure

double NoteHertz(int note) {
    return 440.0 * std::exp2((note - 69) / 12.0);
}

// Of a held note once it has spoken.
double PitchCents(const Program& program, int note) {
    Performance held = SingleNote(note, kMiddling, 1.2, 1.1);
    held.dry = true;
    const Recording recording = Play(program, held);
    std::vector<float> sound(recording.left);
    for (std::size_t i = 0; i < sound.size(); ++i)
        sound[i] += recording.right[i];
    const auto start = std::size_t(0.1 * kCheckRateHz);
    return CentsAbove(std::span(sound).subspan(start), kCheckRateHz, NoteHertz(note));
}

Recording PlayMiddleC(const Program& program, int velocity, int wheel) {
    Performance note = SingleNote(kMiddleC, velocity, 1.6, 2.4);
    note.wheel = wheel;
    return Play(program, note);
}

bool TakesPressure(const Program& program) {
    constexpr float kPressure = 5.0f;  // "aftch" in the menu of sources
    for (int slot = 0; slot < kMatrixSlots; ++slot) {
        if (program.values[std::size_t(param::kMatrix + slot * kMatrixSlotSize)] == kPressure)
            return true;
    }
    return false;
}

// Of the wheel, the keys' pressure and both.
double RaisedPeakDecibels(const Program& program) {
    Performance chord = LongChord();
    const auto peak = [&](int wheel, int pressure) {
        chord.wheel = wheel;
        chord.pressure = pressure;
        return TruePeakDecibels(Play(program, chord));
    };
    const double wheelPeak = peak(kUp, 0);
    return TakesPressure(program) ? std::max({wheelPeak, peak(0, kUp), peak(kUp, kUp)}) : wheelPeak;
}

std::string Fault(const char* form, double value) {
    char text[96];
    std::snprintf(text, sizeof(text), form, value);
    return text;
}

}  // namespace

ProgramFigures MeasureProgram(const Program& program) {
    ProgramFigures figures;
    const Recording phrase = Play(program, ReferencePhrase());
    figures.loudness = LoudnessLufs(phrase);
    figures.dc = DcDecibels(phrase);

    const Performance chord = FullChord();
    const Recording chordSound = Play(program, chord);
    figures.chordPeak = TruePeakDecibels(chordSound);
    figures.raisedPeak = RaisedPeakDecibels(program);
    figures.decaySeconds = SecondsToSilence(chordSound, chord.notes.front().length);
    figures.finite = IsFinite(phrase) && IsFinite(chordSound);

    figures.centsA3 = PitchCents(program, kA3);
    figures.centsC5 = PitchCents(program, kC5);

    const Recording note = PlayMiddleC(program, kMiddling, 0);
    figures.wheelChange = DifferenceDecibels(note, PlayMiddleC(program, kMiddling, kUp));
    figures.velocityRange = LevelDecibels(PlayMiddleC(program, kHard, 0)) -
                            LevelDecibels(PlayMiddleC(program, kSoft, 0));
    figures.print = TakeFingerprint(phrase, note);
    return figures;
}

std::vector<std::string> FindFaults(const Program& program, const ProgramFigures& figures) {
    std::vector<std::string> faults;
    const auto require = [&](bool good, const char* form, double value) {
        if (!good) faults.push_back(Fault(form, value));
    };
    require(figures.finite, "not finite", 0.0);
    require(std::fabs(figures.loudness - kLoudnessTarget) <= kLoudnessTolerance,
            "loudness %.1f LUFS", figures.loudness);
    require(figures.chordPeak < kHighestPeak, "peak %.1f dBFS", figures.chordPeak);
    require(figures.raisedPeak < kHighestPeak, "peak %.1f dBFS with wheel or pressure up",
            figures.raisedPeak);
    require(figures.dc < kHighestDc, "dc %.0f dB", figures.dc);
    require(program.HasTag("drone") || figures.decaySeconds < kLongestDecay - 0.1,
            "rings for %.0f s", figures.decaySeconds);
    if (program.HasTag("pitched")) {
        require(std::fabs(figures.centsA3) <= kPitchTolerance, "A3 %+.1f cents", figures.centsA3);
        require(std::fabs(figures.centsC5) <= kPitchTolerance, "C5 %+.1f cents", figures.centsC5);
    }
    require(figures.velocityRange >= kLeastVelocityRange, "velocity gives only %.1f dB",
            figures.velocityRange);
    require(figures.wheelChange >= kLeastWheelChange, "wheel changes only %.0f dB",
            figures.wheelChange);
    return faults;
}

}  // namespace norava
