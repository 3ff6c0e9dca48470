#pragma once

#include <array>
#include <memory>

#include "fx/effects_chain.h"
#include "reference/reference_resonator.h"
#include "reference/reference_reverb.h"

namespace norava::reference {

// Plain scalar twin of the effects chain, delay and chorus included: frame by frame, line by line.
struct Chain {
    using Lines = std::array<std::unique_ptr<CTapeDelay>, 3>;

    static void makeLines(Lines& lines, const double (&lengths)[3], const double (&starts)[3]) {
        for (std::size_t i = 0; i < lines.size(); ++i) {
            lines[i] = std::make_unique<CTapeDelay>(static_cast<int>(lengths[i]), starts[i]);
        }
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
        for (auto& filter : highPass)
            filter.Set(32.0f, 1.0f, static_cast<float>(rate));
        reset();
    }
    void reset() {
        for (auto& filter : highPass)
            filter.Reset();
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
            const double d = static_cast<double>(depth);
            chorus[i]->setSpeed(ratios[i] * hz, rate);
            chorus[i]->setDepth(d * d * d);
            chorus[i]->setWet(static_cast<double>(wet));
        }
    }
    void setDelayLines() {
        const auto squared = [](float v) {
            return static_cast<double>(v) * static_cast<double>(v);
        };
        const double beats[10] = {0, 15, 30, 45, 60, 120, 180, 240, 480, 960};
        const int selector = static_cast<int>(settings.tempoSelector);
        const double time =
            selector != 0 ? 0.5 * beats[selector] / tempo : 0.01 + squared(settings.time);
        const double hz = 20.0 * squared(settings.modSpeed);
        const double blurs[3] = {1.0, static_cast<double>(settings.blur), squared(settings.blur)};
        for (std::size_t i = 0; i < 6; ++i) {
            CTapeDelay& line = *delay[i / 3][i % 3];
            line.setSpeed(i % 2 == 1 ? 1.1 * hz : hz, rate);
            line.setDelay(time);
            line.setFdbk(-0.99 * squared(settings.feedback));
            line.setDepth(squared(settings.modDepth) * squared(settings.modDepth));
            line.setWet(squared(settings.wet) * blurs[i % 3]);
        }
    }
    void process(float* left, float* right, long frames) {
        for (long i = 0; i < frames; ++i) {
            left[i] = highPass[0].GetFrame(left[i]);
            right[i] = highPass[1].GetFrame(right[i]);
        }
        resonator.process(left, right, frames);
        for (long i = 0; chorusOn && i < frames; ++i) {
            const float mono = left[i] + right[i];
            const float a = chorus[0]->GetFrame(mono);
            const float c = chorus[2]->GetFrame(mono);
            const float b = chorus[1]->GetFrame(mono);
            left[i] = left[i] + a + b;
            right[i] = right[i] + c + b;
        }
        if (reverbOn) reverb.process(left, right, frames);
        if (!delayOn) return;
        setDelayLines();
        for (long i = 0; i < frames; ++i) {
            for (auto& line : delay[0])
                left[i] = left[i] + line->GetFrame(left[i]);
            for (auto& line : delay[1])
                right[i] = right[i] + line->GetFrame(right[i]);
        }
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
    std::array<CFilterIIR_HP, 2> highPass;
};

}  // namespace norava::reference
