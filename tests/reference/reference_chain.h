#pragma once

#include <array>
#include <cmath>
#include <optional>

#include "fx/effects_chain.h"
#include "reference/reference_reverb.h"

// Plain scalar twins of the resonator bank and the effects chain: frame by frame, line by line,
// every setting applied whenever it is used. The product must give the same bits; the benchmarks
// compare with it.

namespace norava::reference {

inline double square(float v) {
    return static_cast<double>(v) * static_cast<double>(v);
}

struct RumbleFilter {
    void setSampleRate(double rate) {
        left.Set(32.0f, 1.0f, static_cast<float>(rate));
        right.Set(32.0f, 1.0f, static_cast<float>(rate));
    }
    void reset() {
        left.Reset();
        right.Reset();
    }

    CFilterIIR_HP left, right;
};

struct Resonator {
    struct Band {
        void restart() {
            first->reset();
            second->reset();
        }

        float delay = 1.0f, feedback = 0.0f;
        bool on = false;
        std::optional<CStringDelay> first, second;
    };

    Band& band(long index) { return bands[static_cast<std::size_t>(index)]; }

    void setSampleRate(double rate) {
        for (Band& b : bands) {
            b.first.emplace(static_cast<long>(rate / 10.0));
            b.second.emplace(static_cast<long>(rate / 10.0));
        }
        highPass.setSampleRate(rate);
    }
    void reset() {
        for (Band& b : bands)
            b.restart();
        highPass.reset();
    }
    void setBandFreq(long index, float v) {
        const double power = std::pow(static_cast<double>(v), 0.10000000149011612);
        band(index).delay = static_cast<float>(1.0 - power);
    }
    void setBandFdbk(long index, float v) {
        band(index).feedback = static_cast<float>(std::sqrt(static_cast<double>(v)) * 0.9999);
    }
    void setBandOn(long index, float v) {
        band(index).on = v != 0.0f;
        if (v != 0.0f) band(index).restart();
    }
    void frame(float& left, float& right) {
        const float in = left + right;
        float outLeft = 0.0f, outRight = 0.0f;
        for (std::size_t k = 0; k < bands.size(); ++k) {
            Band& b = bands[k];
            if (!b.on) continue;
            b.first->setDelay(static_cast<double>(b.delay));
            b.second->setDelay(static_cast<double>(b.delay) * 1.05);
            for (auto* line : {&b.first, &b.second}) {
                (*line)->setFdbk(static_cast<double>(b.feedback));
                (*line)->damping = 0.5f;
            }
            const float y = b.second->GetFrame(-b.first->GetFrame(in));
            outLeft += (k % 2 == 0 ? 0.75f : 1.25f) * y;
            outRight += (k % 2 == 0 ? 1.25f : 0.75f) * y;
        }
        left += highPass.left.GetFrame(outLeft);
        right += highPass.right.GetFrame(outRight);
    }

    std::array<Band, 8> bands;
    RumbleFilter highPass;
};

struct Chain {
    using Lines = std::array<std::optional<CTapeDelay>, 3>;

    static void makeLines(Lines& lines, const double (&lengths)[3], const double (&starts)[3]) {
        for (std::size_t i = 0; i < lines.size(); ++i)
            lines[i].emplace(static_cast<int>(lengths[i]), starts[i]);
    }
    void setSampleRate(double sampleRate) {
        rate = sampleRate;
        const double base = rate * 0.02;
        makeLines(chorus, {base * 1.1, base * 0.854, base}, {0.0, 0.467, 0.778});
        setChorus(chorusRate, chorusDepth, chorusWet);
        const double n = static_cast<int>(2.0 * rate);
        makeLines(delay[0], {n, n * 0.63, n * 0.41}, {0.0, 0.27, 0.4});
        makeLines(delay[1], {n, n * 0.76, n * 0.54}, {0.3, 0.62, 0.87});
        reverb.setSampleRate(static_cast<float>(rate));
        reverb.setParameter(kReverbHighDamping, 1.0f);
        reverb.setParameter(kReverbDiffusion, 1.0f);
        resonator.setSampleRate(rate);
        highPass.setSampleRate(rate);
        reset();
    }
    void reset() {
        highPass.reset();
        for (Lines* lines : {&chorus, &delay[0], &delay[1]}) {
            for (auto& line : *lines)
                line->reset();
        }
        reverb.suspend();
        resonator.reset();
    }
    void setChorus(float speed, float depth, float wet) {
        chorusRate = speed;
        chorusDepth = depth;
        chorusWet = -wet;
        const double hz = 0.1 + 5.0 * static_cast<double>(speed);
        const double ratios[3] = {0.896, 1.0, 0.689};
        for (std::size_t i = 0; i < chorus.size(); ++i) {
            chorus[i]->setSpeed(ratios[i] * hz, rate);
            chorus[i]->setDepth(square(depth) * static_cast<double>(depth));
            chorus[i]->setWet(static_cast<double>(wet));
        }
    }
    void setDelayLines() {
        const double beats[10] = {0, 15, 30, 45, 60, 120, 180, 240, 480, 960};
        const int selector = static_cast<int>(settings.tempoSelector);
        const double time =
            selector != 0 ? 0.5 * beats[selector] / tempo : 0.01 + square(settings.time);
        const double hz = 20.0 * square(settings.modSpeed);
        const double blurs[3] = {1.0, static_cast<double>(settings.blur), square(settings.blur)};
        for (std::size_t i = 0; i < 6; ++i) {
            CTapeDelay& line = *delay[i / 3][i % 3];
            line.setSpeed(i % 2 == 1 ? 1.1 * hz : hz, rate);
            line.setDelay(time);
            line.setFdbk(-0.99 * square(settings.feedback));
            line.setDepth(square(settings.modDepth) * square(settings.modDepth));
            line.setWet(square(settings.wet) * blurs[i % 3]);
        }
    }
    void frame(float& left, float& right) {
        left = highPass.left.GetFrame(left);
        right = highPass.right.GetFrame(right);
        resonator.frame(left, right);
        if (chorusOn) {
            const float mono = left + right;
            const float centre = chorus[1]->GetFrame(mono);
            left = left + chorus[0]->GetFrame(mono) + centre;
            right = right + chorus[2]->GetFrame(mono) + centre;
        }
        if (reverbOn) reverb.frame(left, right);
        if (!delayOn) return;
        for (auto& line : delay[0])
            left = left + line->GetFrame(left);
        for (auto& line : delay[1])
            right = right + line->GetFrame(right);
    }
    void process(float* left, float* right, long frames) {
        if (delayOn) setDelayLines();
        for (long i = 0; i < frames; ++i)
            frame(left[i], right[i]);
    }

    double rate = 0.0;
    double tempo = 120.0;
    float chorusRate = 0.0f, chorusDepth = 0.0f, chorusWet = 0.0f;
    bool chorusOn = false, reverbOn = false, delayOn = false;
    DelaySettings settings;
    Resonator resonator;
    Reverb reverb;
    Lines chorus;
    std::array<Lines, 2> delay;
    RumbleFilter highPass;
};

}  // namespace norava::reference
