#pragma once

#include "program/performance.h"

namespace norava {

double LoudnessLufs(const Recording& recording);      // integrated, after EBU R 128
double TruePeakDecibels(const Recording& recording);  // dBFS, oversampled four times
double DcDecibels(const Recording& recording);        // the mean, dB below the whole
bool IsFinite(const Recording& recording);
double LevelDecibels(const Recording& recording);  // root mean square, dBFS
// Level of the difference of two recordings of equal length, dB below the first one's.
double DifferenceDecibels(const Recording& a, const Recording& b);
// Seconds after `from` until the sound stays silent.
double SecondsToSilence(const Recording& recording, double from);

}  // namespace norava
