#pragma once

#include <array>
#include <cmath>
#include <vector>

#include "fx/reverb_coefficients.h"

// Plain scalar twin of the reverb: one frame after the other through all of it, suspended by
// filling everything.

namespace norava::reference {

struct Reverb {
    struct Line {
        std::vector<float> cells;
        int length = 1;
        int position = 0;

        float& at(int offset) {
            const int i = position + offset;
            return cells[static_cast<std::size_t>(i >= length ? i - length : i)];
        }
        float step(float value) {
            const float old = at(0);
            at(0) = value;
            if (--position < 0) position = length - 1;
            return old;
        }
        float allPass(float in, float out, float store) {
            const float result = at(0) - out * in;
            step(in + store * result);
            return result;
        }
    };

    Reverb() {
        for (int i = 0; i < kReverbParameters; ++i)
            setParameter(i, kDefaultReverbProgram.values[static_cast<std::size_t>(i)]);
    }
    void setSampleRate(float sampleRate) {
        rate = sampleRate;
        const ReverbLengths capacities = reverbLineCapacities(static_cast<int>(rate));
        for (std::size_t i = 0; i < lines.size(); ++i) {
            lines[i].cells.assign(static_cast<std::size_t>(capacities[i]), 1e-30f);
            lines[i].position = 0;
        }
        changed = true;
    }
    void setParameter(int index, float v) {
        const auto parameter = static_cast<ReverbParameter>(index);
        values[parameter] = reverbValueOf(parameter, v);
        changed = true;
    }
    void suspend() {
        for (Line& line : lines)
            std::fill(line.cells.begin(), line.cells.end(), 1e-30f);
        h = apIn = apOut = erL = erR = 0.0f;
        shelfIn = shelfOut = damp = {};
        gain = -1000.0f;
    }
    void cook() {
        changed = false;
        c = cookReverb(values, rate);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            lines[i].length = c.geometry.lengths[i];
            lines[i].position %= c.geometry.lengths[i];
        }
        if (values[kReverbRoomSize] == cookedRoom) return;
        cookedRoom = values[kReverbRoomSize];
        for (std::size_t i = 0; i < lines.size(); ++i) {
            if (i != kPredelayLine) lines[i].cells.assign(lines[i].cells.size(), 0.0f);
        }
    }
    void tank(std::size_t half, float input, float predelayed) {
        Line* l = &lines[4 + 4 * half];
        const float y = input * c.decay;
        const float s = (y - shelfOut[half]) * c.bassAllPass + shelfIn[half];
        shelfIn[half] = y;
        shelfOut[half] = s;
        const float y2 = y + (y + s) * c.bassShelf;
        damp[half] += (y2 + predelayed + 1e-20f - damp[half]) * c.damping;
        const float z = l[1].step(l[0].allPass(damp[half], c.diffusion3, c.diffusion3));
        l[3].step(l[2].allPass(z * c.decay, c.diffusion4, c.diffusion4));
    }
    void frame(float& left, float& right) {
        if (changed) cook();
        const float inL = left * c.inputGain;
        const float inR = right * c.inputGain;
        const float m = (inL + inR) * 0.5f + 1e-30f;
        h += (m - h) * c.highCut;
        const float ap = (h - apOut) * c.lowCut + apIn;
        apIn = h;
        apOut = ap;
        float x = c.lowCut != 0.0f ? (h - ap) * 0.5f + 1e-30f : h;
        const ReverbGeometry& g = c.geometry;
        if (c.earlyGain != 0.0f) {
            erL = erR = 0.0f;
            for (std::size_t i = 0; i < c.earlyLeftWeights.size(); ++i)
                erL += lines[kEarlyLine].at(g.earlyLeftTaps[i]) * c.earlyLeftWeights[i];
            for (std::size_t i = 0; i < c.earlyRightWeights.size(); ++i)
                erR += lines[kEarlyLine].at(g.earlyRightTaps[i]) * c.earlyRightWeights[i];
        }
        x = lines[0].allPass(x, c.diffusion1, c.diffusion1);
        lines[kEarlyLine].step(x);
        x = lines[1].allPass(x, c.diffusion2, c.diffusion1);
        x = lines[2].allPass(x, c.diffusion1, c.diffusion1);
        x = lines[3].allPass(x, c.diffusion2, c.diffusion1);
        const float p = lines[kPredelayLine].step(x);
        tank(0, lines[11].at(0), p);
        tank(1, lines[7].at(0), p);

        const auto& L = g.leftTaps;
        const auto& R = g.rightTaps;
        const auto a = [this](double k) {
            const double decay = static_cast<double>(c.decay);
            return static_cast<float>(decay + (1.0 - decay) * k);
        };
        const float wetL = lines[9].at(L[0]) - lines[9].at(L[1]) * a(0.25) -
                           lines[10].at(L[2]) * a(0.7) - lines[11].at(L[3]) * a(0.2) +
                           lines[5].at(L[4]) * a(0.6) + lines[6].at(L[5]) +
                           lines[7].at(L[6]) * a(0.5);
        const float wetR = lines[5].at(R[0]) + lines[5].at(R[1]) * a(0.25) -
                           lines[6].at(R[2]) * a(0.7) - lines[7].at(R[3]) * a(0.2) -
                           lines[9].at(R[4]) * a(0.6) + lines[10].at(R[5]) +
                           lines[11].at(R[6]) * a(0.5);
        if (gain < -99.0f) gain = c.reverbGain;
        gain += (c.reverbGain - gain) * 0.001f;
        const float oL = wetL * gain + erL * c.earlyGain;
        const float oR = wetR * gain + erR * c.earlyGain;
        left = inL * c.dryGain + (oL + oR) + (oL - oR) * c.width;
        right = inR * c.dryGain + (oL + oR) - (oL - oR) * c.width;
    }

    float rate = 0.0f;
    ReverbValues values;
    ReverbCoefficients c;
    bool changed = true;
    int cookedRoom = 50;
    std::array<Line, kReverbLines> lines;
    float h = 0.0f, apIn = 0.0f, apOut = 0.0f, erL = 0.0f, erR = 0.0f, gain = -1000.0f;
    std::array<float, 2> shelfIn{}, shelfOut{}, damp{};
};

}  // namespace norava::reference
