#pragma once

#include <span>
#include <vector>

namespace norava {

// Power of the first half of the bins of a Hann-windowed piece, padded with zeros to `size` frames
// (a power of two, not less than the piece's).
std::vector<double> PowerSpectrum(std::span<const float> piece, std::size_t size);

// Cents by which the partials of a sounding note lie above those of `hertz`: the peaks near its
// first four partials, weighted by their power. Within -70..70; not a number for silence.
double CentsAbove(std::span<const float> piece, double sampleRateHz, double hertz);

}  // namespace norava
