#include "fx/reverb_coefficients.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "dsp/numbers.h"

namespace norava {

namespace {

constexpr std::array<int, kReverbTankLines> kMaxTab{142,  107,  379, 277,  672,  4453,
                                                    1800, 3720, 908, 4217, 2656, 3163};
constexpr int kBaseRate = 20000;  // Hz, of the lengths above and the output taps below
constexpr std::array<int, kReverbOutputTaps> kLeftTapPoints{266, 2974, 1913, 2496, 1690, 187, 1566};
constexpr std::array<int, kReverbOutputTaps> kRightTapPoints{353, 3627, 1728, 3173, 1811, 335, 621};

constexpr double kEarlyBaseRate = 44100.0;  // Hz, of the tables below
constexpr std::array<int, kReverbEarlyTaps> kEarlyLeftPoints{1102, 2904, 3784, 4873,
                                                             5878, 7470, 9062, 9263};
constexpr std::array<int, kReverbEarlyTaps> kEarlyRightPoints{837,  1423, 2865, 3938,
                                                              5278, 5978, 7532, 9263};

const double kLog60dB = std::log(0.001);

// Lengths are computed in 64 bits: base length times sample rate passes 32 bits above 153 kHz.
int scaled(int base, std::int64_t rate, int baseRate) {
    return static_cast<int>(base * rate / baseRate);
}

// Coefficient of the one-pole y += (x - y) * c that is 3 dB down at `hundredHertz` * 100 Hz.
float onePole(int hundredHertz, double rate) {
    if (hundredHertz >= kReverbFilterOff) return 1.0f;
    const double x = 2.0 - std::cos(2.0 * kPi * 100.0 * hundredHertz / rate);
    return static_cast<float>(1.0 - (x - std::sqrt(x * x - 1.0)));
}

// Gain of a pass of `seconds` that makes the sound die away by 60 dB within `decaySeconds`.
double decayGain(double seconds, double decaySeconds) {
    return std::exp(kLog60dB * seconds / decaySeconds);
}

void cookRoom(ReverbGeometry& g, const ReverbValues& v, std::int64_t rate) {
    const std::int64_t room = rate * (v[kReverbRoomSize] + 15) / 115;
    for (std::size_t i = 0; i < kMaxTab.size(); ++i) {
        g.lengths[i] = std::max(scaled(kMaxTab[i], room, kBaseRate), 1);
    }
    for (std::size_t i = 0; i < kLeftTapPoints.size(); ++i) {
        g.leftTaps[i] = scaled(kLeftTapPoints[i], room, kBaseRate);
        g.rightTaps[i] = scaled(kRightTapPoints[i], room, kBaseRate);
    }
    g.lengths[kPredelayLine] = std::max(scaled(v[kReverbPredelay], rate, 1000), 1);
}

void cookEarlyReflections(ReverbCoefficients& c, const ReverbValues& v, std::int64_t rate) {
    constexpr std::array<double, kReverbEarlyTaps - 1> kLeftSigns{1, 1, -1, 1, 1, 1, 1};
    constexpr std::array<double, kReverbEarlyTaps> kRightSigns{1, -1, 1, 1, -1, 1, 1, -1};
    auto& left = c.geometry.earlyLeftTaps;
    auto& right = c.geometry.earlyRightTaps;
    const std::int64_t whole = rate * (v[kReverbRoomSize] + 3) / 103;
    const auto e = static_cast<double>(whole);
    for (std::size_t i = 0; i < kReverbEarlyTaps; ++i) {
        left[i] = static_cast<int>(1.5 * kEarlyLeftPoints[i] * e / kEarlyBaseRate);
        right[i] = static_cast<int>(1.5 * kEarlyRightPoints[i] * e / kEarlyBaseRate);
    }
    const double nearest = std::min(left[0], right[0]);
    for (std::size_t i = 0; i < kLeftSigns.size(); ++i) {
        c.earlyLeftWeights[i] = static_cast<float>(kLeftSigns[i] * (0.5 * nearest / left[i]));
    }
    for (std::size_t i = 0; i < kRightSigns.size(); ++i) {
        c.earlyRightWeights[i] = static_cast<float>(kRightSigns[i] * (0.36 * nearest / right[i]));
    }
}

void cookDiffusion(ReverbCoefficients& c, const ReverbValues& v, double rate) {
    if (v[kReverbDiffusion] == 0) return;  // the coefficients stay 0: nothing is diffused
    const ReverbLengths& lengths = c.geometry.lengths;
    const double d = v[kReverbDiffusion] / 100.0;
    const auto meanSeconds = [&](ReverbLineIndex a, ReverbLineIndex b) {
        return (lengths[a] + lengths[b]) * 0.5 / rate;
    };
    const auto coefficient = [d](double seconds, double decaySeconds) {
        return static_cast<float>(decayGain(seconds, decaySeconds * d));
    };
    c.diffusion1 = coefficient(meanSeconds(kInputDiffuser1, kInputDiffuser2), 0.07);
    c.diffusion2 = coefficient(meanSeconds(kInputDiffuser3, kInputDiffuser4), 0.11);
    c.diffusion3 = coefficient(meanSeconds(kLeftDiffuser1, kRightDiffuser1), 0.35);
    c.diffusion4 = coefficient(meanSeconds(kLeftDiffuser2, kRightDiffuser2), 0.51);
}

void cookDecay(ReverbCoefficients& c, const ReverbValues& v, double rate) {
    const ReverbLengths& lengths = c.geometry.lengths;
    const double loopSeconds = (lengths[kLeftDelay1] + lengths[kLeftDelay2] +
                                lengths[kRightDelay1] + lengths[kRightDelay2]) /
                               rate;
    const double decaySeconds = v[kReverbDecay] / 10.0;
    const double gain = std::pow(decayGain(loopSeconds, decaySeconds), 0.25);
    const double bassSeconds = decaySeconds * v[kReverbBassMultiplier] / 10.0;
    const double bassGain = std::pow(decayGain(loopSeconds, bassSeconds), 0.25);
    const double ratio = bassGain / gain;
    const double limited = std::min(ratio, 1.0);
    // Above half the sample rate the tangent would turn the shelf's all-pass unstable.
    const double t = std::tan(kPi * std::min<double>(v[kReverbCrossover], 0.5 * rate) / rate);
    c.decay = static_cast<float>(gain);
    c.bassShelf = static_cast<float>((ratio - 1.0) * 0.5);
    c.bassAllPass = static_cast<float>((t - limited) / (t + limited));

    // The output taps weigh decay + (1 - decay) * K.
    const auto weight = [g = static_cast<double>(c.decay)](double k) {
        return static_cast<float>(g + (1.0 - g) * k);
    };
    const float w20 = weight(0.2);
    const float w25 = weight(0.25);
    const float w50 = weight(0.5);
    const float w60 = weight(0.6);
    const float w70 = weight(0.7);
    c.leftWeights = {1.0f, -w25, -w70, -w20, w60, 1.0f, w50};
    c.rightWeights = {1.0f, w25, -w70, -w20, -w60, 1.0f, w50};
}

void cookGains(ReverbCoefficients& c, const ReverbValues& v) {
    const auto gain = [&](ReverbParameter level, ReverbParameter mute) {
        return v[mute] != 0 ? 0.0 : SfGetRatioFromdB(v[level], kReverbLevelOff);
    };
    c.inputGain = static_cast<float>(gain(kReverbInput, kReverbMuteInput));
    c.dryGain = static_cast<float>(gain(kReverbDry, kReverbMuteDry));
    c.earlyGain = static_cast<float>(gain(kReverbER, kReverbMuteER) * 0.5);
    c.reverbGain = static_cast<float>(gain(kReverbReverb, kReverbMuteReverb) * 0.6 * 0.5);
    c.width = static_cast<float>(v[kReverbWidth] * 0.01);
}

void cookFilters(ReverbCoefficients& c, const ReverbValues& v, double rate) {
    if (v[kReverbLowCut] > kReverbLowCutOff) {
        const double t = std::tan(kPi * std::min<double>(v[kReverbLowCut], 0.5 * rate) / rate);
        c.lowCut = static_cast<float>((t - 1.0) / (t + 1.0));
    }
    c.highCut = onePole(v[kReverbHighCut], rate);
    c.damping = onePole(v[kReverbHighDamping], rate);
}

}  // namespace

ReverbLengths reverbLineCapacities(int rate) {
    ReverbLengths capacities;
    for (std::size_t i = 0; i < kMaxTab.size(); ++i) {
        capacities[i] = std::max(scaled(kMaxTab[i], rate, kBaseRate), 1);
    }
    capacities[kPredelayLine] = std::max(scaled(250, rate, 1000), 1);
    // Twice the next power of two above the longest reflection: more than its taps need, but it
    // decides what a change of room size finds in the line.
    int bits = 0;
    for (int n = scaled(13950, rate, 44100); n != 0; n /= 2)
        ++bits;
    capacities[kEarlyLine] = 1 << (bits + 1);
    return capacities;
}

ReverbCoefficients cookReverb(const ReverbValues& values, float sampleRate) {
    const auto rate = static_cast<double>(sampleRate);
    const auto wholeRate = static_cast<std::int64_t>(sampleRate);
    ReverbCoefficients c;
    cookGains(c, values);
    cookFilters(c, values, rate);
    cookRoom(c.geometry, values, wholeRate);
    c.geometry.lengths[kEarlyLine] = reverbLineCapacities(static_cast<int>(wholeRate))[kEarlyLine];
    cookEarlyReflections(c, values, wholeRate);
    cookDiffusion(c, values, rate);
    cookDecay(c, values, rate);
    return c;
}

}  // namespace norava
