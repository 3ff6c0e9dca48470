#include "fx/reverb.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numeric>

#include "dsp/numbers.h"

namespace norava {

namespace {

constexpr float kLowestRate = 1000.0f;
constexpr float kHighestRate = 768000.0f;
constexpr int kReserveRate = 48000;

// Instead of zeros, so that the recursive lines never run into denormal numbers.
constexpr float kEmptyCell = 1e-30f;
constexpr float kOffset = 1e-30f;
constexpr float kTankOffset = 1e-20f;

constexpr float kGainJumps = -99.0f;
constexpr float kGainGlide = 0.001f;

bool isParameter(int index) {
    return index >= 0 && index < kReverbParameters;
}

std::size_t memorySize(const ReverbLengths& lengths) {
    return std::accumulate(
        lengths.begin(), lengths.end(), std::size_t{0},
        [](std::size_t sum, int n) { return sum + static_cast<std::size_t>(n); });
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

void fxReverb::AllocBuffer() {
    const ReverbLengths capacities = reverbLineCapacities(static_cast<int>(sampleRate_));
    const std::size_t needed = memorySize(capacities);
    if (needed > capacity_) {
        memory_.reset();
        capacity_ = std::max(needed, memorySize(reverbLineCapacities(kReserveRate)));
        memory_ = std::make_unique<float[]>(capacity_);
    }
    float* next = memory_.get();
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        lines_[i] = {next, capacities[i], capacities[i], 0};
        next += capacities[i];
        clearLine(lines_[i], kEmptyCell);
    }
    CookParameters();
}

void fxReverb::clearLine(Line& line, float value) {
    std::fill_n(line.data, line.capacity, value);
}

void fxReverb::CookParameters() {
    parametersChanged_ = false;
    c_ = cookReverb(values_, sampleRate_);
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        lines_[i].length = c_.lengths[i];
        lines_[i].position %= lines_[i].length;
    }
    if (values_[kReverbRoomSize] != cookedRoomSize_) {
        cookedRoomSize_ = values_[kReverbRoomSize];
        for (std::size_t i = 0; i < kReverbTankLines; ++i)
            clearLine(lines_[i], 0.0f);
        clearLine(lines_[kEarlyLine], 0.0f);
    }
}

void fxReverb::setParameter(int index, float value) {
    if (!isParameter(index)) return;
    const auto i = static_cast<std::size_t>(index);
    program_.values[i] = value;
    values_[i] = reverbValueOf(static_cast<ReverbParameter>(index), value);
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
    for (Line& line : lines_)
        clearLine(line, kEmptyCell);
    state_ = {};
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

namespace {

// All-pass diffuser: out = delayed - outCoefficient * in, stored = in + storeCoefficient * out.
template <class Line>
float diffuse(Line& line, float in, float outCoefficient, float storeCoefficient) {
    const float out = line.read() - outCoefficient * in;
    line.writeAndStep(in + storeCoefficient * out);
    return out;
}

}  // namespace

void fxReverb::updateEarlyReflections() {
    const Line& line = lines_[kEarlyLine];
    const int mask = line.length - 1;
    const auto left = [&](std::size_t i) {
        return line.data[(line.position + c_.earlyLeftTaps[i]) & mask] * c_.earlyLeftGains[i];
    };
    const auto right = [&](std::size_t i) {
        return line.data[(line.position + c_.earlyRightTaps[i]) & mask] * c_.earlyRightGains[i];
    };
    // The eighth tap on the left stays unused; the room was tuned without it.
    state_.early.left = left(0) + left(1) - left(2) + left(3) + left(4) + left(5) + left(6);
    state_.early.right =
        right(0) - right(1) + right(2) + right(3) - right(4) + right(5) + right(6) - right(7);
}

// One half of the tank, from `input`, the end of the other half, to its own end. The half's four
// lines follow each other.
float fxReverb::tankHalf(float input, float predelayed, ReverbLine firstLine, ShelfState& shelf,
                         float& damping) {
    Line* lines = &lines_[firstLine];
    const float y = input * c_.decay;
    const float s = (y - shelf.output) * c_.bassAllPass + shelf.input;
    shelf = {y, s};
    const float shelved = y + (y + s) * c_.bassShelf;
    damping += (shelved + predelayed + kTankOffset - damping) * c_.damping;

    const float diffused = diffuse(lines[0], damping, c_.diffusion3, c_.diffusion3);
    const float delayed = lines[1].read();
    lines[1].writeAndStep(diffused);
    lines[3].writeAndStep(diffuse(lines[2], delayed * c_.decay, c_.diffusion4, c_.diffusion4));
    return lines[3].read();
}

fxReverb::Stereo fxReverb::outputTaps() const {
    const auto& l = c_.leftTaps;
    const auto& r = c_.rightTaps;
    const float left =
        lines_[kRightDelay1].tap(l[0]) - lines_[kRightDelay1].tap(l[1]) * c_.weight25 -
        lines_[kRightDiffuser2].tap(l[2]) * c_.weight70 -
        lines_[kRightDelay2].tap(l[3]) * c_.weight20 + lines_[kLeftDelay1].tap(l[4]) * c_.weight60 +
        lines_[kLeftDiffuser2].tap(l[5]) + lines_[kLeftDelay2].tap(l[6]) * c_.weight50;
    const float right =
        lines_[kLeftDelay1].tap(r[0]) + lines_[kLeftDelay1].tap(r[1]) * c_.weight25 -
        lines_[kLeftDiffuser2].tap(r[2]) * c_.weight70 -
        lines_[kLeftDelay2].tap(r[3]) * c_.weight20 - lines_[kRightDelay1].tap(r[4]) * c_.weight60 +
        lines_[kRightDiffuser2].tap(r[5]) + lines_[kRightDelay2].tap(r[6]) * c_.weight50;
    return {left, right};
}

// Wet sound of one frame; the inputs already carry the input gain.
fxReverb::Stereo fxReverb::frame(float inLeft, float inRight) {
    const float mono = (inLeft + inRight) * 0.5f + kOffset;
    state_.highCut += (mono - state_.highCut) * c_.highCut;
    const float allPassed = (state_.highCut - state_.lowCutOutput) * c_.lowCut + state_.lowCutInput;
    state_.lowCutInput = state_.highCut;
    state_.lowCutOutput = allPassed;
    float x = state_.highCut;
    if (c_.lowCut != 0.0f) x = (state_.highCut - allPassed) * 0.5f + kOffset;

    if (c_.earlyGain != 0.0f) updateEarlyReflections();
    x = diffuse(lines_[kInputDiffuser1], x, c_.diffusion1, c_.diffusion1);
    lines_[kEarlyLine].writeAndStep(x);
    // The second and the fourth diffuser store with the first coefficient; the room was tuned that
    // way.
    x = diffuse(lines_[kInputDiffuser2], x, c_.diffusion2, c_.diffusion1);
    x = diffuse(lines_[kInputDiffuser3], x, c_.diffusion1, c_.diffusion1);
    x = diffuse(lines_[kInputDiffuser4], x, c_.diffusion2, c_.diffusion1);
    const float predelayed = lines_[kPredelayLine].read();
    lines_[kPredelayLine].writeAndStep(x);

    const float across = tankHalf(lines_[kRightDelay2].read(), predelayed, kLeftDiffuser1,
                                  state_.leftShelf, state_.leftDamping);
    tankHalf(across, predelayed, kRightDiffuser1, state_.rightShelf, state_.rightDamping);

    const Stereo wet = outputTaps();
    float& gain = state_.smoothedGain;
    if (gain < kGainJumps) gain = c_.reverbGain;
    gain += (c_.reverbGain - gain) * kGainGlide;
    return {wet.left * gain + state_.early.left * c_.earlyGain,
            wet.right * gain + state_.early.right * c_.earlyGain};
}

template <bool accumulate>
void fxReverb::run(float** inputs, float** outputs, int frames) {
    if (notReady_) return;
    const auto put = [outputs](std::size_t channel, int i, float value) {
        float& out = outputs[channel][i];
        out = accumulate ? out + value : value;
    };
    if (bypass_ || bypassCountdown_ >= 0) {
        for (std::size_t channel = 0; channel < 2; ++channel) {
            for (int i = 0; i < frames; ++i)
                put(channel, i, inputs[channel][i]);
            inputMeters_[channel].clipped = false;
            outputMeters_[channel].clipped = false;
        }
        if (bypassCountdown_ >= 0) bypassCountdown_ = std::max(bypassCountdown_ - frames, -1);
        return;
    }
    if (parametersChanged_) CookParameters();

    const auto meter = [](Meter& m, float value) {
        m.peak = std::max(m.peak, std::fabs(value));
        if (m.peak > 1.0f) m.clipped = true;
    };
    for (Meter& m : inputMeters_)
        m.peak = 0.0f;
    for (Meter& m : outputMeters_)
        m.peak = 0.0f;
    for (int i = 0; i < frames; ++i) {
        const float inLeft = inputs[0][i] * c_.inputGain;
        const float inRight = inputs[1][i] * c_.inputGain;
        const Stereo wet = frame(inLeft, inRight);
        const float sum = wet.left + wet.right;
        const float difference = (wet.left - wet.right) * c_.width;
        const float outLeft = inLeft * c_.dryGain + sum + difference;
        const float outRight = inRight * c_.dryGain + sum - difference;
        meter(inputMeters_[0], inLeft);
        meter(inputMeters_[1], inRight);
        meter(outputMeters_[0], outLeft);
        meter(outputMeters_[1], outRight);
        put(0, i, outLeft);
        put(1, i, outRight);
    }
}

void fxReverb::process(float** inputs, float** outputs, int frames) {
    run<true>(inputs, outputs, frames);
}

void fxReverb::processReplacing(float** inputs, float** outputs, int frames) {
    run<false>(inputs, outputs, frames);
}

}  // namespace norava
