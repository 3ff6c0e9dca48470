#include "program/measures.h"

#include <ebur128.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>
#include <new>

namespace norava {

namespace {

constexpr double kTiny = 1e-20;

struct MeterCloser {
    void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
};

std::unique_ptr<ebur128_state, MeterCloser> Meter(const Recording& recording, int mode) {
    std::unique_ptr<ebur128_state, MeterCloser> state(ebur128_init(2, kCheckRateHz, mode));
    if (!state) throw std::bad_alloc();
    std::vector<float> interleaved(2 * recording.left.size());
    for (std::size_t i = 0; i < recording.left.size(); ++i) {
        interleaved[2 * i] = recording.left[i];
        interleaved[2 * i + 1] = recording.right[i];
    }
    if (ebur128_add_frames_float(state.get(), interleaved.data(), recording.left.size()) !=
        EBUR128_SUCCESS) {
        throw std::bad_alloc();
    }
    return state;
}

double MeanSquare(const std::vector<float>& samples) {
    double sum = 0.0;
    for (const float x : samples)
        sum += double(x) * double(x);
    return samples.empty() ? 0.0 : sum / double(samples.size());
}

double Mean(const std::vector<float>& samples) {
    double sum = 0.0;
    for (const float x : samples)
        sum += double(x);
    return samples.empty() ? 0.0 : sum / double(samples.size());
}

double ToDecibels(double power) {
    return 10.0 * std::log10(power + kTiny);
}

}  // namespace

double LoudnessLufs(const Recording& recording) {
    double loudness = -HUGE_VAL;
    ebur128_loudness_global(Meter(recording, EBUR128_MODE_I).get(), &loudness);
    return loudness;
}

double TruePeakDecibels(const Recording& recording) {
    const auto meter = Meter(recording, EBUR128_MODE_TRUE_PEAK);
    double left = 0.0, right = 0.0;
    ebur128_true_peak(meter.get(), 0, &left);
    ebur128_true_peak(meter.get(), 1, &right);
    const double peak = std::max(left, right);
    return ToDecibels(peak * peak);
}

double DcDecibels(const Recording& recording) {
    const double left = Mean(recording.left), right = Mean(recording.right);
    const double all = MeanSquare(recording.left) + MeanSquare(recording.right);
    return ToDecibels((left * left + right * right) / (all + kTiny));
}

bool IsFinite(const Recording& recording) {
    const auto finite = [](float x) { return std::isfinite(x); };
    return std::ranges::all_of(recording.left, finite) &&
           std::ranges::all_of(recording.right, finite);
}

double LevelDecibels(const Recording& recording) {
    return ToDecibels(0.5 * (MeanSquare(recording.left) + MeanSquare(recording.right)));
}

double DifferenceDecibels(const Recording& a, const Recording& b) {
    Recording difference;
    const auto minus = [](float x, float y) { return x - y; };
    std::ranges::transform(a.left, b.left, std::back_inserter(difference.left), minus);
    std::ranges::transform(a.right, b.right, std::back_inserter(difference.right), minus);
    return LevelDecibels(difference) - LevelDecibels(a);
}

double SecondsToSilence(const Recording& recording, double from) {
    std::size_t end = recording.left.size();
    while (end > 0 && std::fabs(recording.left[end - 1]) < kSilentLevel &&
           std::fabs(recording.right[end - 1]) < kSilentLevel) {
        --end;
    }
    return std::max(0.0, double(end) / kCheckRateHz - from);
}

}  // namespace norava
