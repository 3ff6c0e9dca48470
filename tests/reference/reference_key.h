#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

#include "dsp/envelope.h"
#include "dsp/sound_settings.h"

// The key voice and its kernel as plainly as they can be said: one key, one line, one sample at a
// time, every formula evaluated whenever its result is used, every buffer cleared in one go. The
// product's voice must give the same bits.

namespace norava::reference {

constexpr int kBufferFrames = 48000;

struct Line {
    std::vector<float> data = std::vector<float>(kBufferFrames);
    int position = 0;
    int end = 1;
    float inverse = 1.0f;

    void setEnd(int frames) {
        end = std::clamp(frames, 1, kBufferFrames);
        inverse = static_cast<float>(1.0 / end);
    }
    float& head() { return data[static_cast<std::size_t>(position)]; }
};

// What a key forgets when it is silenced: everything becomes 0.
struct Voice {
    CEgADSR envelope;
    bool active, firstBlock, released;
    float envelopeValue, lfoValue, velocity;
    double sinceStart, sinceRelease, stringFrequency, baseFrequency, pitchRatio, phase;
    float saturation, noiseCoefficient, clip, mix1, mix2;
    float ampTarget, ampRate, amp, envTarget, envRate, env, cutoff, feedback;
    float b, c1, c2, x1, x2, y1, y2, held;
    float combLevel, combFeedback;
    std::array<float, 4> stage, damping, sharpness, gain, smoothedGain, f1, f2, mean;
    std::array<float, 4> output, smoothedOutput;  // string 1 left, right, string 2 left, right
    float previousLeft, previousRight, currentLeft, currentRight;
    std::array<Line, 6> lines;  // 1a, 1b, 2a, 2b, comb 1, comb 2
};

inline double clamp01(double x) {
    return std::clamp(x, 0.0, 1.0);
}

struct Key : Voice {
    Key(int note, const SoundSettings& instrument) : Voice{}, settings(instrument), key(note) {}

    void reset() { static_cast<Voice&>(*this) = Voice{}; }

    void start(float noteVelocity) {
        constexpr int kFirst[] = {4, 3, 2, 1, 1, 1, 1}, kSecond[] = {1, 1, 1, 1, 2, 3, 4};
        sinceStart = 0;
        released = false;
        velocity = noteVelocity;
        const double ratio = settings.combRatio;
        const int octave = static_cast<int>(settings.octaveSelector * 6.0f);
        const auto keyFrequency = static_cast<float>(220.0 * std::exp2((key - 57) / 12.0));
        stringFrequency = keyFrequency * std::pow(2.0, octave - 3);
        const int period = static_cast<int>(48000 / stringFrequency);
        const int unit = std::max(period / kFirst[settings.stringRatio], 1);
        const int first = unit * kFirst[settings.stringRatio];
        const int second = unit * kSecond[settings.stringRatio];
        for (std::size_t line = 0; line < 4; ++line)
            lines[line].setEnd(line < 2 ? first : second);
        for (std::size_t comb = 0; comb < 2; ++comb)
            lines[4 + comb].setEnd(static_cast<int>(lines[2 * comb].end * ratio));
        baseFrequency = 48000.0 / lines[0].end;
        envelope.start(0, settings.egAttackSeconds, settings.egDecaySeconds, settings.egSustain,
                       settings.egReleaseSeconds, 0, 0, 0, 48000.0, 1.0);
        x1 = x2 = y1 = y2 = 0;
        active = firstBlock = true;
    }

    void release() {
        sinceRelease = 0;
        released = true;
        envelope.release();
    }

    float modulation(int destination) const {
        double sum = 0;
        bool used = false;
        for (const ModulationSlot& slot : settings.matrix) {
            if (slot.destination != destination || slot.source == 0) continue;
            used = true;
            const double sources[] = {0,
                                      envelopeValue,
                                      lfoValue,
                                      settings.modWheel,
                                      settings.pitchWheel,
                                      settings.channelAftertouch,
                                      velocity,
                                      key / 80.0,
                                      released ? 1.0 : 0.0};
            if (slot.source > 0 && slot.source < 9)
                sum += static_cast<double>(slot.amount) * sources[slot.source];
        }
        if (!used && destination < 2) return 1.0f;
        return static_cast<float>(std::clamp(sum, -64.0, 64.0));
    }

    void updateParams(int frames) {
        if (!active) return;
        const auto m = [this](int d) { return static_cast<double>(modulation(d)); };
        const auto table = [this](const float* values, double neutral) {
            return values ? values[key] : neutral;
        };
        const auto single = [](double x) { return static_cast<float>(x); };
        saturation = single(std::pow(static_cast<double>(settings.stringSaturation), 3) * 100);
        const double semitones = table(settings.keyTuningSemitones, 0) + settings.tuneSemitones;
        pitchRatio = stringFrequency / baseFrequency * std::exp2(m(3) / 6 + semitones / 12);
        pitchRatio = std::min(pitchRatio, 15.999);
        envelopeValue = envelope.GetFrame(frames);
        lfoValue = settings.lfoValue * modulation(0);
        noiseCoefficient = single(std::pow(1 - clamp01(settings.noiseRate + m(14)), 0.25) * 0.996);
        clip = settings.hiCutDrive;
        const double noise = settings.noiseLevelComplement;
        mix1 = single(noise * noise);
        mix2 = single(1 - noise);

        const double attack = 0.5 * std::pow(clamp01(settings.hiCutAttack + m(6)), 2);
        const double decay = 0.001 + 3 * std::pow(clamp01(settings.hiCutDecay + m(7)), 3);
        if (released) {
            envTarget = 0;
            envRate = 0.002f;
        } else if (sinceStart <= attack) {
            envTarget = 1;
            envRate = attack < 0.001 ? 1.0f : single(0.0002 / attack);
        } else {
            envTarget = single(std::pow(static_cast<double>(settings.hiCutSustain), 2));
            envRate = single(0.0002 / decay);
        }
        const double hiCut = clamp01(std::pow(settings.hiCutCutoff + 0.5 * m(5), 2));
        cutoff = single(hiCut);
        feedback = single(std::max(-10.0 * settings.hiCutResonance * (1 - hiCut), -4.0));

        const double w = 2 * std::numbers::pi *
                         std::exp2(9.3 * clamp01(settings.loCutCutoff + 0.5 * m(4)) + 5) / 48000;
        const double q = settings.loCutResonance * 10.0 + 1;
        b = single((1 + std::cos(w)) / (2 + std::sin(w) / q));
        c1 = single(-2 * q * std::cos(w) / (q + std::sin(w)));
        c2 = single((q - std::sin(w)) / (q + std::sin(w)));

        for (std::size_t string = 0; string < 2; ++string) {
            const StringSettings& sound = string == 0 ? settings.string1 : settings.string2;
            const int own = static_cast<int>(string);
            const double x = clamp01(sound.dampAmount + (m(13) + m(11 + own)));
            const double f = std::pow(50.0, 2.57 * (1 - 0.35 * x * x * x));
            const double y = clamp01(sound.decay + (m(10) + m(8 + own)));
            const float loop = single(std::pow(y, static_cast<double>(0.05f)));
            for (std::size_t line = 2 * string; line < 2 * string + 2; ++line) {
                const double offset = line % 2 == 0 ? 0.0 : sound.dampOffset;
                damping[line] = single(std::min(f * (1.0 - offset) / 22050, 1.0));
                sharpness[line] = single(-0.5 * sound.dampSharpness * (1.0 - damping[line]));
                gain[line] = sound.decayInverted ? 0.0f - loop : loop;
            }
        }

        const double level = std::min(std::pow(10.0, 2 * m(1)), 1e30);
        const double separation = settings.stringStereoSeparation;
        const double left = table(settings.keyGainLeft, 1);
        const double right = table(settings.keyGainRight, 1);
        const double k1 = level * (1.0 - settings.stringMix) * 0.05;
        const double k2 = level * settings.stringMix * 0.05;
        const double p1 = clamp01(separation + m(2)), p2 = clamp01(1 - separation + m(2));
        output = {single(k1 * (1 - p1) * left), single(k1 * p1 * right),
                  single(k2 * (1 - p2) * left), single(k2 * p2 * right)};
        combFeedback =
            settings.combFeedbackInverted ? -settings.combFeedback : settings.combFeedback;
        combLevel = settings.combLevelInverted ? -settings.combLevel : settings.combLevel;

        const auto rate = [&](double seconds) { return single(8.82 / (seconds * 48000)); };
        const double dt = frames / 48000.0;
        if (released) {
            if (sinceRelease > settings.ampReleaseSeconds) return reset();
            ampTarget = 0;
            ampRate = rate(settings.ampReleaseSeconds);
            sinceRelease += dt;
        } else if (settings.ampAttackSeconds > sinceStart) {
            ampTarget = 5;
            ampRate = rate(settings.ampAttackSeconds * 39.441975);
        } else {
            ampTarget = settings.ampSustain;
            ampRate = rate(settings.ampDecaySeconds);
        }
        if (firstBlock) {
            smoothedGain = gain;
            smoothedOutput = output;
        }
        sinceStart += dt;
    }

    void stringStep(float e, float saturationAmount, float* peak1, float* peak2) {
        for (Line& line : lines) {
            if (line.position >= line.end) line.position = 0;
        }
        std::array<float, 4> h;
        for (std::size_t i = 0; i < 4; ++i) {
            mean[i] = mean[i] + (e - mean[i]) * lines[i].inverse;
            const float driven = e - mean[i];
            h[i] = lines[i].head();
            f1[i] = f1[i] + damping[i] * (h[i] + sharpness[i] * f2[i] - f1[i]);
            f2[i] = f2[i] + damping[i] * (f1[i] - f2[i]);
            f2[i] = f2[i] / (1.0f + saturationAmount * (f2[i] * f2[i]));
            lines[i].head() = f2[i] * smoothedGain[i] + driven;
        }
        const float o1 = h[0] + lines[4].head() * combLevel;
        const float o2 = h[2] + lines[5].head() * combLevel;
        *peak1 = std::max(*peak1, std::abs(o1 * (smoothedOutput[0] + smoothedOutput[1])));
        *peak2 = std::max(*peak2, std::abs(o2 * (smoothedOutput[2] + smoothedOutput[3])));
        lines[4].head() = lines[4].head() * combFeedback + h[1];
        lines[5].head() = lines[5].head() * combFeedback + h[3];
        for (Line& line : lines)
            ++line.position;
        previousLeft = currentLeft;
        previousRight = currentRight;
        currentLeft = o1 * smoothedOutput[0] + o2 * smoothedOutput[2];
        currentRight = o1 * smoothedOutput[1] + o2 * smoothedOutput[3];
        for (std::size_t i = 0; i < 4; ++i) {
            smoothedGain[i] += 0.05f * (gain[i] - smoothedGain[i]);
            smoothedOutput[i] += 0.001f * (output[i] - smoothedOutput[i]);
        }
    }

    float excite(std::uint32_t& seed) {
        const float u = static_cast<float>(seed) / 4294967296.0f;
        seed = seed * 0x0BB38435u + 0x3619636Bu;
        if (u > noiseCoefficient) held = u;
        const float x = held * mix1 + mix2;
        const float y = b * (x - 2.0f * x1 + x2) - (c1 * y1 + c2 * y2);
        x2 = x1;
        x1 = x;
        y2 = y1;
        y1 = y;
        env = env + (envTarget - env) * envRate;
        const float g = env * cutoff;
        stage[0] = stage[0] + g * (y + feedback * stage[3] - stage[0]);
        for (std::size_t n = 1; n < 4; ++n)
            stage[n] = stage[n] + g * (stage[n - 1] - stage[n]);
        stage[3] = stage[3] / (1.0f + clip * (stage[3] * stage[3]));
        return stage[3];
    }

    const SoundSettings& settings;
    int key;
};

inline void renderGroup(const std::array<Key*, 4>& group, std::uint32_t& seed, float* left,
                        float* right, int frames, float* peak1, float* peak2) {
    for (int i = 0; i < frames; ++i) {
        std::array<float, 4> exciter;
        for (std::size_t lane = 0; lane < 4; ++lane)
            exciter[lane] = group[lane]->excite(seed);
        double sumLeft = 0, sumRight = 0;
        for (std::size_t lane = 0; lane < 4; ++lane) {
            Key& k = *group[lane];
            if (!k.active) continue;
            k.phase += k.pitchRatio;
            const int steps = static_cast<int>(k.phase);
            k.phase -= steps;
            for (int n = 0; n < steps; ++n)
                k.stringStep(exciter[lane], group[0]->saturation, peak1, peak2);
            const double pl = k.previousLeft, pr = k.previousRight;
            sumLeft += (pl + (k.currentLeft - pl) * k.phase) * static_cast<double>(k.amp);
            sumRight += (pr + (k.currentRight - pr) * k.phase) * static_cast<double>(k.amp);
            k.amp = std::min(k.amp + (k.ampTarget - k.amp) * k.ampRate, 1.0f);
        }
        left[i] += static_cast<float>(sumLeft);
        right[i] += static_cast<float>(sumRight);
    }
}

// processKeys over `keys` in note order, in groups of four; `seed` is the instrument's.
inline void processKeys(std::vector<Key>& keys, std::uint32_t& seed, float* left, float* right,
                        int frames, float* peak1, float* peak2) {
    std::vector<Key*> list, silent;
    for (Key& k : keys) {
        k.updateParams(frames);
        (k.active ? list : silent).push_back(&k);
    }
    const std::size_t sounding = list.size();
    list.insert(list.end(), silent.begin(), silent.end());
    if (sounding > 0) {
        std::fill_n(left, frames, 0.0f);
        std::fill_n(right, frames, 0.0f);
    }
    for (std::size_t i = 0; i < sounding; i += 4)
        renderGroup({list[i], list[i + 1], list[i + 2], list[i + 3]}, seed, left, right, frames,
                    peak1, peak2);
}

}  // namespace norava::reference
