#include "program/fingerprint.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "program/spectrum.h"

namespace norava {

namespace {

constexpr double kFloor = -50.0;  // dB; nobody tells what lies further below the loudest
constexpr double kLowestHertz = 50.0;
constexpr double kStepSeconds = 0.1;
constexpr double kOnsetSeconds = 0.2;

template <std::size_t n>
void BelowLoudest(std::array<double, n>& power) {
    const double loudest = std::max(*std::ranges::max_element(power), 1e-20);
    for (double& value : power)
        value = std::max(10.0 * std::log10(value / loudest + 1e-20), kFloor);
}

std::vector<float> Mid(const Recording& recording) {
    std::vector<float> mid(recording.left.size());
    std::ranges::transform(recording.left, recording.right, mid.begin(),
                           [](float l, float r) { return 0.5f * (l + r); });
    return mid;
}

// Power in bands, summed over pieces of a third of a second so that all of the sound counts.
std::array<double, kColourBands> Colour(std::span<const float> sound) {
    constexpr std::size_t kPiece = 16384;
    std::array<double, kColourBands> bands{};
    for (std::size_t at = 0; at < sound.size(); at += kPiece / 2) {
        const auto piece = sound.subspan(at, std::min(kPiece, sound.size() - at));
        const std::vector<double> power = PowerSpectrum(piece, kPiece);
        for (std::size_t bin = 1; bin < power.size(); ++bin) {
            const double hertz = double(bin) * kCheckRateHz / double(kPiece);
            const auto band = std::lround(3.0 * std::log2(hertz / kLowestHertz));
            if (band >= 0 && band < kColourBands) bands[std::size_t(band)] += power[bin];
        }
    }
    BelowLoudest(bands);
    return bands;
}

double Power(std::span<const float> sound) {
    double sum = 0.0;
    for (const float x : sound)
        sum += double(x) * double(x);
    return sum;
}

template <std::size_t n>
double RmsDifference(const std::array<double, n>& a, const std::array<double, n>& b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < n; ++i)
        sum += (a[i] - b[i]) * (a[i] - b[i]);
    return std::sqrt(sum / double(n));
}

}  // namespace

Fingerprint TakeFingerprint(const Recording& phrase, const Recording& note) {
    Fingerprint print;
    print.phrase = Colour(Mid(phrase));
    const std::vector<float> sound = Mid(note);
    const auto onset = std::min(std::size_t(kOnsetSeconds * kCheckRateHz), sound.size());
    print.onset = Colour(std::span(sound).first(onset));
    print.rest = Colour(std::span(sound).subspan(onset));
    const auto step = std::size_t(kStepSeconds * kCheckRateHz);
    for (std::size_t i = 0; i < kEnvelopeSteps && (i + 1) * step <= sound.size(); ++i)
        print.envelope[i] = Power(std::span(sound).subspan(i * step, step));
    BelowLoudest(print.envelope);
    return print;
}

double Distance(const Fingerprint& a, const Fingerprint& b) {
    return (RmsDifference(a.phrase, b.phrase) + RmsDifference(a.onset, b.onset) +
            RmsDifference(a.rest, b.rest) + RmsDifference(a.envelope, b.envelope)) /
           4.0;
}

}  // namespace norava
