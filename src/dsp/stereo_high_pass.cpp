#include "dsp/stereo_high_pass.h"

#include <algorithm>
#include <bit>
#include <cstdint>

#include "dsp/lane_pairs.h"

namespace norava {

namespace {

constexpr long kPieceFrames = 64;
constexpr long kShortestPiece = 6;  // below, frame by frame is cheaper

// Whether all samples are 0 to the bit; -0 counts as sound, because it leaves a filter as +0.
bool isSilent(const float* samples, long frames) {
    std::uint32_t bits = 0;
    for (long i = 0; i < frames; ++i)
        bits |= std::bit_cast<std::uint32_t>(samples[i]);
    return bits == 0;
}

// b (x - 2 x1 + x2), which depends on no earlier output. Keeps the last two inputs.
void feedForward(float b, IirMemory& memory, const float* input, float* output, int frames) {
    float x[kPieceFrames + 2];
    x[0] = memory.x2;
    x[1] = memory.x1;
    for (int i = 0; i < frames; ++i)
        x[i + 2] = flushTiny(input[i]);
    for (int i = 0; i < frames; ++i)
        output[i] = b * (x[i + 2] - 2.0f * x[i + 1] + x[i]);
    memory.x2 = x[frames];
    memory.x1 = x[frames + 1];
}

}  // namespace

void StereoHighPass::Set(float frequency, float q, float sampleRate) {
    left_.Set(frequency, q, sampleRate);
    right_.Set(frequency, q, sampleRate);
}

void StereoHighPass::Reset() {
    left_.Reset();
    right_.Reset();
}

void StereoHighPass::process(float* left, float* right, long frames) {
    if (atRest() && isSilent(left, frames) && isSilent(right, frames)) return;
    if (frames < kShortestPiece) {
        for (long i = 0; i < frames; ++i) {
            left[i] = left_.GetFrame(left[i]);
            right[i] = right_.GetFrame(right[i]);
        }
        return;
    }
    for (long done = 0; done < frames; done += kPieceFrames) {
        const long piece = std::min(frames - done, kPieceFrames);
        processPiece(left + done, right + done, static_cast<int>(piece));
    }
}

void StereoHighPass::processPiece(float* left, float* right, int frames) {
    const IirCoefficients& cl = left_.coefficients_;
    const IirCoefficients& cr = right_.coefficients_;
    IirMemory& ml = left_.memory_;
    IirMemory& mr = right_.memory_;
    feedForward(cl.b, ml, left, left, frames);
    feedForward(cr.b, mr, right, right, frames);

    // Lane 0 is left, lane 1 right, the others stay 1 so that they never look silent.
    const v128 c1 = {cl.c1, cr.c1, 0.0f, 0.0f};
    const v128 c2 = {cl.c2, cr.c2, 0.0f, 0.0f};
    v128 y1 = {ml.y1, mr.y1, 1.0f, 1.0f};
    v128 y2 = {ml.y2, mr.y2, 1.0f, 1.0f};
    for (int i = 0; i < frames; ++i) {
        v128 y = v128{left[i], right[i], 1.0f, 1.0f} - c1 * y1 - c2 * y2;
        // Looked at beside the recursion, which goes on with the guess that nothing is to be
        // flushed.
        if (anyTiny(y)) [[unlikely]]
            y = flushTiny(y);
        left[i] = y[0];
        right[i] = y[1];
        y2 = y1;
        y1 = y;
    }
    ml.y1 = y1[0];
    ml.y2 = y2[0];
    mr.y1 = y1[1];
    mr.y2 = y2[1];
}

}  // namespace norava
