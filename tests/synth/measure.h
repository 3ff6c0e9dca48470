#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>
#include <vector>

// What an ear would say of a piece of sound.

namespace norava::test {

using Samples = std::span<const float>;

inline Samples Part(const std::vector<float>& samples, double from, double to) {
    const double n = static_cast<double>(samples.size());
    const auto first = static_cast<std::size_t>(n * from);
    return Samples(samples).subspan(first, static_cast<std::size_t>(n * to) - first);
}

inline double Rms(Samples samples) {
    double sum = 0.0;
    for (float x : samples)
        sum += static_cast<double>(x) * x;
    return std::sqrt(sum / static_cast<double>(samples.size()));
}

// Larger for more treble: the level of the differences to the level itself.
inline double Brightness(Samples samples) {
    double sum = 0.0;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        const double d = static_cast<double>(samples[i]) - samples[i - 1];
        sum += d * d;
    }
    return std::sqrt(sum / static_cast<double>(samples.size())) / Rms(samples);
}

// How much a signal differs from itself `lag` frames later: 0 for a period, or several, of a steady
// tone.
inline double Difference(Samples samples, double lag) {
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

// Cents by which a steady tone lies above `hertz`, from -50 to 50: the lag after which it repeats
// itself best, first of a few periods, so that one more or less is out of reach, then of more and
// more of them.
inline double CentsAbove(Samples samples, double rate, double hertz) {
    double best = 0.0;
    const struct {
        double seconds, reach, step;
    } stages[] = {{0.003, 50.0, 1.0}, {0.03, 2.0, 0.2}, {0.1, 0.5, 0.02}};
    for (const auto& stage : stages) {
        const double periods = std::max(1.0, std::floor(hertz * stage.seconds));
        double least = 1.0e300;
        double found = best;
        const int steps = static_cast<int>(std::lround(2.0 * stage.reach / stage.step));
        for (int i = 0; i <= steps; ++i) {
            const double c = best - stage.reach + i * stage.step;
            const double lag = periods * rate / (hertz * std::exp2(c / 1200.0));
            const double difference = Difference(samples, lag);
            if (difference < least) {
                least = difference;
                found = c;
            }
        }
        best = found;
    }
    return best;
}

inline double NoteHertz(int note) {
    return 440.0 * std::exp2((note - 69) / 12.0);
}

}  // namespace norava::test
