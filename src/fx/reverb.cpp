#include "fx/reverb.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "dsp/lane_pairs.h"
#include "dsp/numbers.h"

namespace norava {

namespace {

constexpr float kLowestRate = 1000.0f;
constexpr float kHighestRate = 768000.0f;
constexpr float kReserveRate = 48000.0f;

std::size_t at(int frame) {
    return static_cast<std::size_t>(frame);
}

std::size_t floatsFor(float sampleRate) {
    return ReverbMemory::sizeOf(reverbLineCapacities(static_cast<int>(sampleRate)));
}

bool isParameter(int index) {
    return index >= 0 && index < kReverbParameters;
}

}  // namespace

fxReverb::fxReverb() {
    setProgram(0);
    cookedRoomSize_ = values_[kReverbRoomSize];
    AllocBuffer();
    notReady_ = false;
}

void fxReverb::setSampleRate(float sampleRate) {
    sampleRate_ = clampOr(sampleRate, kLowestRate, kHighestRate, 44100.0f);
    AllocBuffer();
}

std::size_t fxReverb::bytesFor(float sampleRate) {
    return LineMemory::sizeOf(sizeof(float) * floatsFor(sampleRate));
}

void fxReverb::reserve(float sampleRate, LineMemory& memory) {
    tank_.reserve(floatsFor(sampleRate), memory);
}

void fxReverb::AllocBuffer() {
    tank_.allocate(reverbLineCapacities(static_cast<int>(sampleRate_)), floatsFor(kReserveRate));
    CookParameters();
}

void fxReverb::CookParameters() {
    parametersChanged_ = false;
    c_ = cookReverb(values_, sampleRate_);
    tank_.setCoefficients(c_);
    if (values_[kReverbRoomSize] != cookedRoomSize_) tank_.clearRoom();
    cookedRoomSize_ = values_[kReverbRoomSize];
}

void fxReverb::setParameter(int index, float value) {
    if (!isParameter(index)) return;
    const auto i = static_cast<std::size_t>(index);
    program_.values[i] = value;
    const int cooked = reverbValueOf(static_cast<ReverbParameter>(index), value);
    if (cooked == values_[i]) return;
    values_[i] = cooked;
    parametersChanged_ = true;
}

float fxReverb::getParameter(int index) const {
    return isParameter(index) ? program_.values[static_cast<std::size_t>(index)] : 0.0f;
}

void fxReverb::getParameterName(int index, char* text, std::size_t size) const {
    if (size > 0) text[0] = '\0';
    if (isParameter(index)) reverbParameterName(static_cast<ReverbParameter>(index), text, size);
}

void fxReverb::getParameterLabel(int index, char* text, std::size_t size) const {
    if (size > 0) text[0] = '\0';
    if (isParameter(index)) reverbParameterLabel(static_cast<ReverbParameter>(index), text, size);
}

void fxReverb::getParameterDisplay(int index, char* text, std::size_t size) const {
    if (size > 0) text[0] = '\0';
    if (!isParameter(index)) return;
    reverbParameterDisplay(static_cast<ReverbParameter>(index),
                           values_[static_cast<std::size_t>(index)], text, size);
}

void fxReverb::setProgram(int index) {
    if (index != 0) return;
    for (int i = 0; i < kReverbParameters; ++i) {
        setParameter(i, kDefaultReverbProgram.values[static_cast<std::size_t>(i)]);
    }
}

void fxReverb::getProgramName(char* text, std::size_t size) const {
    std::snprintf(text, size, "%s", program_.name);
}

void fxReverb::suspend() {
    tank_.suspend();
    inputMeters_ = {};
    outputMeters_ = {};
    bypassCountdown_ = -1;
}

void fxReverb::resume() {
    for (Meter& meter : inputMeters_)
        meter.clipped = false;
    for (Meter& meter : outputMeters_)
        meter.clipped = false;
    parametersChanged_ = true;
}

void fxReverb::passThrough(float** inputs, float** outputs, int frames, bool accumulate) {
    for (std::size_t channel = 0; channel < 2; ++channel) {
        for (int i = 0; i < frames; ++i) {
            const float in = inputs[channel][i];
            outputs[channel][i] = accumulate ? outputs[channel][i] + in : in;
        }
        inputMeters_[channel].clipped = false;
        outputMeters_[channel].clipped = false;
    }
    if (bypassCountdown_ >= 0) bypassCountdown_ = std::max(bypassCountdown_ - frames, -1);
}

template <bool kAccumulate>
void fxReverb::run(float** inputs, float** outputs, int frames) {
    if (notReady_) return;
    if (bypass_ || bypassCountdown_ >= 0) {
        passThrough(inputs, outputs, frames, kAccumulate);
        return;
    }
    if (parametersChanged_) CookParameters();
    for (Meter& meter : inputMeters_)
        meter.peak = 0.0f;
    for (Meter& meter : outputMeters_)
        meter.peak = 0.0f;

    using Piece = std::array<float, ReverbTank::kMostFrames>;
    for (int done = 0; done < frames; done += ReverbTank::kMostFrames) {
        const int n = std::min(frames - done, ReverbTank::kMostFrames);
        Piece in[2];
        Piece wet[2];
        for (std::size_t channel = 0; channel < 2; ++channel) {
            const float* input = inputs[channel] + done;
            for (int i = 0; i < n; ++i)
                in[channel][at(i)] = input[i] * c_.inputGain;
            inputMeters_[channel].see(in[channel].data(), n);
        }
        tank_.process(in[0].data(), in[1].data(), wet[0].data(), wet[1].data(), n);
        for (int i = 0; i < n; ++i) {
            const float sum = wet[0][at(i)] + wet[1][at(i)];
            const float difference = (wet[0][at(i)] - wet[1][at(i)]) * c_.width;
            wet[0][at(i)] = in[0][at(i)] * c_.dryGain + sum + difference;
            wet[1][at(i)] = in[1][at(i)] * c_.dryGain + sum - difference;
        }
        for (std::size_t channel = 0; channel < 2; ++channel) {
            outputMeters_[channel].see(wet[channel].data(), n);
            float* output = outputs[channel] + done;
            for (int i = 0; i < n; ++i) {
                output[i] = kAccumulate ? output[i] + wet[channel][at(i)] : wet[channel][at(i)];
            }
        }
    }
}

void fxReverb::Meter::see(const float* samples, int frames) {
    v128 most = v128_Set(peak);
    int i = 0;
    for (; i + 4 <= frames; i += 4)
        most = greater(most, magnitude(loadLanes<v128>(samples + i)));
    for (std::size_t lane = 0; lane < 4; ++lane)
        peak = std::max(peak, most[lane]);
    for (; i < frames; ++i)
        peak = std::max(peak, std::fabs(samples[i]));
    if (peak > 1.0f) clipped = true;
}

void fxReverb::process(float** inputs, float** outputs, int frames) {
    run<true>(inputs, outputs, frames);
}

void fxReverb::processReplacing(float** inputs, float** outputs, int frames) {
    run<false>(inputs, outputs, frames);
}

}  // namespace norava
