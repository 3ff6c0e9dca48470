#include "dsp/resonator.h"

#include <algorithm>
#include <cmath>

#include "dsp/numbers.h"

namespace norava {

namespace {

constexpr double kLinesPerSecond = 10.0;  // a line is a tenth of a second long
constexpr double kSecondLineRatio = 1.05;
constexpr float kDamping = 0.5f;
constexpr double kHighestFeedback = 0.9999;
constexpr float kRumbleHz = 32.0f;

// The bands that users count as 1, 3, 5 and 7 lean to the right, the others to the left.
float leftGain(int band) {
    return band % 2 == 0 ? 0.75f : 1.25f;
}
float rightGain(int band) {
    return band % 2 == 0 ? 1.25f : 0.75f;
}

long lineLength(double sampleRate) {
    return static_cast<long>(sampleRate / kLinesPerSecond);
}

bool isBand(long band) {
    return band >= 0 && band < CResonator::kBands;
}

// Adds one band a lane to the mix, lane by lane, so that the sum is rounded in the order of the
// bands.
void addBands(const int* bands, int lanes, v128* outputs, float* outLeft, float* outRight,
              int frames) {
    int i = 0;
    for (; i + 4 <= frames; i += 4) {
        v128 rows[4] = {outputs[i], outputs[i + 1], outputs[i + 2], outputs[i + 3]};
        transpose(rows[0], rows[1], rows[2], rows[3]);
        v128 l = loadLanes<v128>(outLeft + i);
        v128 r = loadLanes<v128>(outRight + i);
        for (int lane = 0; lane < lanes; ++lane) {
            l += v128_Set(leftGain(bands[lane])) * rows[lane];
            r += v128_Set(rightGain(bands[lane])) * rows[lane];
        }
        storeLanes(outLeft + i, l);
        storeLanes(outRight + i, r);
    }
    for (; i < frames; ++i) {
        for (int lane = 0; lane < lanes; ++lane) {
            outLeft[i] += leftGain(bands[lane]) * outputs[i][lane];
            outRight[i] += rightGain(bands[lane]) * outputs[i][lane];
        }
    }
}

}  // namespace

CResonator::CResonator() {
    for (long band = 0; band < kBands; ++band) {
        setBandFreq(band, 0.0f);
        setBandFdbk(band, 0.0f);
    }
}

std::size_t CResonator::bytesFor(double sampleRate) {
    return 2 * kBands * CStringDelay::bytesFor(lineLength(sampleRate));
}

void CResonator::reserve(double sampleRate, LineMemory& memory) {
    for (Band& band : bands_) {
        band.first.reserve(lineLength(sampleRate), memory);
        band.second.reserve(lineLength(sampleRate), memory);
    }
}

void CResonator::setSampleRate(double sampleRate) {
    for (Band& band : bands_) {
        band.changed = true;
        band.first.setLength(lineLength(sampleRate));
        band.second.setLength(lineLength(sampleRate));
    }
    hasLines_ = true;
    highPass_.Set(kRumbleHz, 1.0f, static_cast<float>(sampleRate));
}

void CResonator::reset() {
    for (Band& band : bands_) {
        band.first.reset();
        band.second.reset();
    }
    highPass_.Reset();
}

void CResonator::setBandFreq(long band, float value) {
    if (!isBand(band)) return;
    const auto v = static_cast<double>(clampOr(value, 0.0f, 1.0f, 0.0f));
    // The exponent is a single-precision 0.1.
    const double power = std::pow(v, static_cast<double>(0.1f));
    Band& b = bands_[static_cast<std::size_t>(band)];
    b.delay = static_cast<float>(1.0 - power);
    b.changed = true;
}

void CResonator::setBandFdbk(long band, float value) {
    if (!isBand(band)) return;
    const auto v = static_cast<double>(clampOr(value, 0.0f, 1.0f, 0.0f));
    Band& b = bands_[static_cast<std::size_t>(band)];
    b.feedback = static_cast<float>(std::sqrt(v) * kHighestFeedback);
    b.changed = true;
}

void CResonator::setBandOn(long band, float value) {
    if (!isBand(band)) return;
    Band& b = bands_[static_cast<std::size_t>(band)];
    b.on = value != 0.0f;
    if (b.on && hasLines_) {
        b.first.reset();
        b.second.reset();
    }
}

void CResonator::applySettings(Band& band) {
    const auto delay = static_cast<double>(band.delay);
    for (CStringDelay* line : {&band.first, &band.second}) {
        line->damping = kDamping;
        line->setFdbk(static_cast<double>(band.feedback));
    }
    band.first.setDelay(delay);
    band.second.setDelay(delay * kSecondLineRatio);
    band.changed = false;
}

// Lists the bands that are on, in order, their lines set up; returns how many there are.
int CResonator::soundingBands(std::array<int, kBands>& bands) {
    int count = 0;
    for (int k = 0; k < kBands; ++k) {
        Band& band = bands_[static_cast<std::size_t>(k)];
        if (!band.on) continue;
        if (band.changed) applySettings(band);
        bands[static_cast<std::size_t>(count++)] = k;
    }
    return count;
}

void CResonator::process(float* left, float* right, long frames) {
    if (!hasLines_) return;
    std::array<int, kBands> sounding;
    const int count = soundingBands(sounding);
    if (count == 0 && highPass_.atRest()) return;
    for (long done = 0; done < frames; done += kPieceFrames) {
        const long piece = std::min<long>(frames - done, kPieceFrames);
        processPiece(sounding, count, left + done, right + done, static_cast<int>(piece));
    }
}

void CResonator::processPiece(const std::array<int, kBands>& sounding, int count, float* left,
                              float* right, int frames) {
    v128 input[kPieceFrames];
    v128 output[kPieceFrames];
    float outLeft[kPieceFrames];
    float outRight[kPieceFrames];
    std::fill_n(outLeft, frames, 0.0f);
    std::fill_n(outRight, frames, 0.0f);
    for (int i = 0; i < frames; ++i)
        input[i] = v128_Set(flushTiny(left[i] + right[i]));
    // Four bands side by side: the outputs of their first lines, inverted, go into their second
    // lines.
    for (int from = 0; from < count; from += StringGroup::kLanes) {
        Quartet& quartet = quartets_[static_cast<std::size_t>(from / StringGroup::kLanes)];
        const int lanes = std::min(count - from, StringGroup::kLanes);
        CStringDelay* firsts[StringGroup::kLanes];
        CStringDelay* seconds[StringGroup::kLanes];
        const int* bands = &sounding[static_cast<std::size_t>(from)];
        for (int lane = 0; lane < lanes; ++lane) {
            Band& band = bands_[static_cast<std::size_t>(bands[lane])];
            firsts[lane] = &band.first;
            seconds[lane] = &band.second;
        }
        quartet.firsts.process(firsts, lanes, input, output, frames);
        for (int i = 0; i < frames; ++i)
            output[i] = v128_Set(0.0f) - output[i];
        quartet.seconds.process(seconds, lanes, output, output, frames);
        addBands(bands, lanes, output, outLeft, outRight, frames);
    }
    highPass_.process(outLeft, outRight, frames);
    for (int i = 0; i < frames; ++i) {
        left[i] += outLeft[i];
        right[i] += outRight[i];
    }
}

}  // namespace norava
