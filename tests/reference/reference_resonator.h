#pragma once

#include <array>
#include <cmath>
#include <memory>

#include "dsp/iir_filters.h"
#include "dsp/string_delay.h"

namespace norava::reference {

// Plain scalar twin of the resonator bank: frame by frame, line by line, every setting applied in
// every frame. The library must give the same bits; the benchmarks compare with it.
struct Resonator {
    struct Band {
        float delay = 1.0f;
        float feedback = 0.0f;
        bool on = false;
        std::unique_ptr<CStringDelay> first;
        std::unique_ptr<CStringDelay> second;
    };

    void setSampleRate(double rate) {
        for (Band& band : bands) {
            band.first = std::make_unique<CStringDelay>(static_cast<long>(rate / 10.0));
            band.second = std::make_unique<CStringDelay>(static_cast<long>(rate / 10.0));
        }
        for (auto& filter : highPass)
            filter.Set(32.0f, 1.0f, static_cast<float>(rate));
    }
    void reset() {
        for (Band& band : bands)
            restart(band);
        for (auto& filter : highPass)
            filter.Reset();
    }
    static void restart(Band& band) {
        band.first->reset();
        band.second->reset();
    }
    void setBandFreq(std::size_t band, float v) {
        const double power = std::pow(static_cast<double>(v), 0.10000000149011612);
        bands[band].delay = static_cast<float>(1.0 - power);
    }
    void setBandFdbk(std::size_t band, float v) {
        bands[band].feedback = static_cast<float>(std::sqrt(static_cast<double>(v)) * 0.9999);
    }
    void setBandOn(std::size_t band, float v) {
        bands[band].on = v != 0.0f;
        if (bands[band].on) restart(bands[band]);
    }
    void process(float* left, float* right, long frames) {
        for (long i = 0; i < frames; ++i) {
            const float in = left[i] + right[i];
            float outLeft = 0.0f;
            float outRight = 0.0f;
            for (std::size_t k = 0; k < bands.size(); ++k) {
                if (!bands[k].on) continue;
                const double delay = static_cast<double>(bands[k].delay);
                bands[k].first->setDelay(delay);
                bands[k].second->setDelay(delay * 1.05);
                for (CStringDelay* line : {bands[k].first.get(), bands[k].second.get()}) {
                    line->setFdbk(static_cast<double>(bands[k].feedback));
                    line->damping = 0.5f;
                }
                const float y = bands[k].second->GetFrame(-bands[k].first->GetFrame(in));
                outLeft += (k % 2 == 0 ? 0.75f : 1.25f) * y;
                outRight += (k % 2 == 0 ? 1.25f : 0.75f) * y;
            }
            left[i] += highPass[0].GetFrame(outLeft);
            right[i] += highPass[1].GetFrame(outRight);
        }
    }

    std::array<Band, 8> bands;
    std::array<CFilterIIR_HP, 2> highPass;
};

}  // namespace norava::reference
