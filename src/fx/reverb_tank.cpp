#include "fx/reverb_tank.h"

#include <algorithm>

#include "dsp/lanes.h"

namespace norava {

namespace {

constexpr float kInputOffset = 1e-30f;  // keep the recursions out of denormal numbers
constexpr float kTankOffset = 1e-20f;
constexpr float kGainJumps = -99.0f;
constexpr float kGainGlide = 0.001f;

// Pieces shorter than this are cheaper frame by frame.
constexpr int kShortestPiece = 6;

// All-pass diffuser: out = delayed - outCoefficient * in, stored = in + storeCoefficient * out.
float diffuseFrame(ReverbLine& line, float in, float outCoefficient, float storeCoefficient) {
    const float out = line.read() - outCoefficient * in;
    line.writeAndStep(in + storeCoefficient * out);
    return out;
}

template <std::size_t kTaps>
struct TapCursor {
    std::array<const ReverbLine*, kTaps> lines;
    std::array<int, kTaps> tops;  // cell of the first frame; later frames lie below
};

// Weighted sum of taps over `frames` frames, in reversed order.
template <std::size_t kTaps>
void sumTaps(TapCursor<kTaps> taps, const std::array<float, kTaps>& weights, float* sums,
             int frames) {
    while (frames > 0) {
        // As far as no tap comes to the end of its line.
        int run = frames;
        for (const int top : taps.tops)
            run = std::min(run, top + 1);
        std::array<const float*, kTaps> cells;
        for (std::size_t k = 0; k < kTaps; ++k) {
            const ReverbLine& line = *taps.lines[k];
            cells[k] = line.data + taps.tops[k] + 1 - run;
            taps.tops[k] = line.wrapped(taps.tops[k] - run);
        }
        float* out = sums + frames - run;
        int i = 0;
        for (; i + 4 <= run; i += 4) {
            v128 sum = loadLanes<v128>(cells[0] + i) * v128_Set(weights[0]);
            for (std::size_t k = 1; k < kTaps; ++k) {
                sum += loadLanes<v128>(cells[k] + i) * v128_Set(weights[k]);
            }
            storeLanes(out + i, sum);
        }
        for (; i < run; ++i) {
            float sum = cells[0][i] * weights[0];
            for (std::size_t k = 1; k < kTaps; ++k)
                sum += cells[k][i] * weights[k];
            out[i] = sum;
        }
        frames -= run;
    }
}

}  // namespace

void ReverbTank::setCoefficients(const ReverbCoefficients& coefficients) {
    c_ = coefficients;
    memory_.setGeometry(c_.geometry);
    longestPiece_ = longestPiece();
}

void ReverbTank::suspend() {
    memory_.empty();
    state_ = {};
}

// In a piece, all lines but the predelay are read before any of the piece is written to them, and
// the output taps are read when all of it is written: what a read meets must be older than the
// piece, or not yet overwritten.
int ReverbTank::longestPiece() const {
    const ReverbGeometry& g = c_.geometry;
    int frames = kMostFrames;
    for (std::size_t i = 0; i < kReverbTankLines; ++i)
        frames = std::min(frames, g.lengths[i] - 1);
    const auto fitTap = [&](std::size_t line, int tap) {
        const int age = tap == 0 ? g.lengths[line] : tap;
        frames = std::min(frames, g.lengths[line] - age + 1);
    };
    for (std::size_t i = 0; i < kReverbOutputTaps; ++i) {
        fitTap(kLeftTapLines[i], g.leftTaps[i]);
        fitTap(kRightTapLines[i], g.rightTaps[i]);
    }
    return std::max(frames, 1);
}

void ReverbTank::process(const float* inLeft, const float* inRight, float* wetLeft, float* wetRight,
                         int frames) {
    memory_.prepare(frames);
    for (int done = 0; done < frames;) {
        const int n = std::min(frames - done, longestPiece_);
        if (n >= kShortestPiece) {
            piece(inLeft + done, inRight + done, wetLeft + done, wetRight + done, n);
        } else {
            for (int i = done; i < done + n; ++i) {
                const Stereo wet = frame(inLeft[i], inRight[i]);
                wetLeft[i] = wet.left;
                wetRight[i] = wet.right;
            }
        }
        done += n;
    }
}

float ReverbTank::filterInput(float inLeft, float inRight) {
    const float mono = (inLeft + inRight) * 0.5f + kInputOffset;
    State& s = state_;
    s.highCut += (mono - s.highCut) * c_.highCut;
    // The low cut is half the difference of the signal and its all-pass.
    const float allPassed = (s.highCut - s.lowCutOutput) * c_.lowCut + s.lowCutInput;
    s.lowCutInput = s.highCut;
    s.lowCutOutput = allPassed;
    return c_.lowCut != 0.0f ? (s.highCut - allPassed) * 0.5f + kInputOffset : s.highCut;
}

// Bass shelf and high damping at the entrance of a half; `y` carries the decay gain already.
float ReverbTank::damp(Half& half, float y, float predelayed) const {
    const float s = (y - half.shelfOutput) * c_.bassAllPass + half.shelfInput;
    half.shelfInput = y;
    half.shelfOutput = s;
    const float shelved = y + (y + s) * c_.bassShelf;
    half.damping += (shelved + predelayed + kTankOffset - half.damping) * c_.damping;
    return half.damping;
}

float ReverbTank::glideGain() {
    if (state_.gain < kGainJumps) state_.gain = c_.reverbGain;
    state_.gain += (c_.reverbGain - state_.gain) * kGainGlide;
    return state_.gain;
}

// ---- One frame ----

ReverbTank::Stereo ReverbTank::frame(float inLeft, float inRight) {
    float x = filterInput(inLeft, inRight);
    if (c_.earlyGain != 0.0f) earlyFrame();
    // The second and the fourth diffuser store with the first coefficient; the room was tuned that
    // way.
    x = diffuseFrame(memory_[kInputDiffuser1], x, c_.diffusion1, c_.diffusion1);
    memory_[kEarlyLine].writeAndStep(x);
    x = diffuseFrame(memory_[kInputDiffuser2], x, c_.diffusion2, c_.diffusion1);
    x = diffuseFrame(memory_[kInputDiffuser3], x, c_.diffusion1, c_.diffusion1);
    x = diffuseFrame(memory_[kInputDiffuser4], x, c_.diffusion2, c_.diffusion1);
    const float predelayed = memory_[kPredelayLine].read();
    memory_[kPredelayLine].writeAndStep(x);

    halfFrame(state_.halves[0], kLeftDiffuser1, memory_[kRightDelay2].read(), predelayed);
    halfFrame(state_.halves[1], kRightDiffuser1, memory_[kLeftDelay2].read(), predelayed);

    const ReverbGeometry& g = c_.geometry;
    const auto left = [&](std::size_t k) {
        return memory_[kLeftTapLines[k]].tap(g.leftTaps[k]) * c_.leftWeights[k];
    };
    const auto right = [&](std::size_t k) {
        return memory_[kRightTapLines[k]].tap(g.rightTaps[k]) * c_.rightWeights[k];
    };
    const float wetLeft = left(0) + left(1) + left(2) + left(3) + left(4) + left(5) + left(6);
    const float wetRight =
        right(0) + right(1) + right(2) + right(3) + right(4) + right(5) + right(6);
    const float gain = glideGain();
    return {wetLeft * gain + state_.early.left * c_.earlyGain,
            wetRight * gain + state_.early.right * c_.earlyGain};
}

void ReverbTank::earlyFrame() {
    const ReverbLine& line = memory_[kEarlyLine];
    const ReverbGeometry& g = c_.geometry;
    const auto left = [&](std::size_t k) {
        return line.tap(g.earlyLeftTaps[k]) * c_.earlyLeftWeights[k];
    };
    const auto right = [&](std::size_t k) {
        return line.tap(g.earlyRightTaps[k]) * c_.earlyRightWeights[k];
    };
    state_.early.left = left(0) + left(1) + left(2) + left(3) + left(4) + left(5) + left(6);
    state_.early.right =
        right(0) + right(1) + right(2) + right(3) + right(4) + right(5) + right(6) + right(7);
}

// A half's four lines follow each other.
void ReverbTank::halfFrame(Half& half, std::size_t firstLine, float input, float predelayed) {
    const float damped = damp(half, input * c_.decay, predelayed);
    const float diffused = diffuseFrame(memory_[firstLine], damped, c_.diffusion3, c_.diffusion3);
    const float delayed = memory_[firstLine + 1].read();
    memory_[firstLine + 1].writeAndStep(diffused);
    memory_[firstLine + 3].writeAndStep(
        diffuseFrame(memory_[firstLine + 2], delayed * c_.decay, c_.diffusion4, c_.diffusion4));
}

// ---- A piece of frames; all samples in reversed order ----

void ReverbTank::piece(const float* inLeft, const float* inRight, float* wetLeft, float* wetRight,
                       int frames) {
    Piece x;
    Piece gain;
    for (int i = 0; i < frames; ++i) {
        const auto at = static_cast<std::size_t>(frames - 1 - i);
        x[at] = filterInput(inLeft[i], inRight[i]);
        gain[at] = glideGain();
    }
    diffuse(kInputDiffuser1, x.data(), frames, c_.diffusion1, c_.diffusion1);
    memory_[kEarlyLine].forRuns(0, frames, [&](float* cells, int first, int count) {
        std::copy_n(x.data() + first, count, cells);
    });
    diffuse(kInputDiffuser2, x.data(), frames, c_.diffusion2, c_.diffusion1);
    diffuse(kInputDiffuser3, x.data(), frames, c_.diffusion1, c_.diffusion1);
    diffuse(kInputDiffuser4, x.data(), frames, c_.diffusion2, c_.diffusion1);
    delay(kPredelayLine, x.data(), frames);

    // Each half starts from the end of the other: the left one before the frame's step, the right
    // one after it.
    Piece left;
    Piece right;
    memory_[kRightDelay2].forRuns(0, frames, [&](const float* cells, int first, int count) {
        std::copy_n(cells, count, left.data() + first);
    });
    memory_[kLeftDelay2].forRuns(-1, frames, [&](const float* cells, int first, int count) {
        std::copy_n(cells, count, right.data() + first);
    });
    for (auto i = static_cast<std::size_t>(frames); i-- > 0;) {
        left[i] = damp(state_.halves[0], left[i] * c_.decay, x[i]);
        right[i] = damp(state_.halves[1], right[i] * c_.decay, x[i]);
    }
    halfPiece(kLeftDiffuser1, left.data(), frames);
    halfPiece(kRightDiffuser1, right.data(), frames);

    outputPiece(left.data(), right.data(), frames);
    Piece earlyLeft;
    Piece earlyRight;
    earlyPiece(earlyLeft.data(), earlyRight.data(), frames);
    memory_[kEarlyLine].advance(frames);
    for (int i = 0; i < frames; ++i) {
        const auto at = static_cast<std::size_t>(frames - 1 - i);
        wetLeft[i] = left[at] * gain[at] + earlyLeft[at] * c_.earlyGain;
        wetRight[i] = right[at] * gain[at] + earlyRight[at] * c_.earlyGain;
    }
}

void ReverbTank::diffuse(std::size_t line, float* samples, int frames, float outCoefficient,
                         float storeCoefficient) {
    memory_[line].forRuns(0, frames, [&](float* __restrict cells, int first, int count) {
        float* __restrict x = samples + first;
        for (int i = 0; i < count; ++i) {
            const float out = cells[i] - outCoefficient * x[i];
            cells[i] = x[i] + storeCoefficient * out;
            x[i] = out;
        }
    });
    memory_[line].advance(frames);
}

// Exchanges the samples for what the line holds.
void ReverbTank::delay(std::size_t line, float* samples, int frames) {
    ReverbLine& l = memory_[line];
    if (l.length < frames) {
        for (int i = frames - 1; i >= 0; --i) {
            const float old = l.read();
            l.writeAndStep(samples[i]);
            samples[i] = old;
        }
        return;
    }
    l.forRuns(0, frames, [&](float* __restrict cells, int first, int count) {
        float* __restrict x = samples + first;
        for (int i = 0; i < count; ++i) {
            const float old = cells[i];
            cells[i] = x[i];
            x[i] = old;
        }
    });
    l.advance(frames);
}

void ReverbTank::halfPiece(std::size_t firstLine, float* damped, int frames) {
    diffuse(firstLine, damped, frames, c_.diffusion3, c_.diffusion3);
    delay(firstLine + 1, damped, frames);
    for (int i = 0; i < frames; ++i)
        damped[i] *= c_.decay;
    diffuse(firstLine + 2, damped, frames, c_.diffusion4, c_.diffusion4);
    memory_[firstLine + 3].forRuns(0, frames, [&](float* cells, int first, int count) {
        std::copy_n(damped + first, count, cells);
    });
    memory_[firstLine + 3].advance(frames);
}

void ReverbTank::outputPiece(float* left, float* right, int frames) const {
    const auto cursor = [&](const auto& lines, const auto& taps) {
        TapCursor<kReverbOutputTaps> result;
        for (std::size_t k = 0; k < kReverbOutputTaps; ++k) {
            const ReverbLine& line = memory_[lines[k]];
            result.lines[k] = &line;
            // The position after the first frame's step lies frames - 1 above the present one.
            result.tops[k] = line.wrapped(line.wrapped(line.position + frames - 1) + taps[k]);
        }
        return result;
    };
    sumTaps(cursor(kLeftTapLines, c_.geometry.leftTaps), c_.leftWeights, left, frames);
    sumTaps(cursor(kRightTapLines, c_.geometry.rightTaps), c_.rightWeights, right, frames);
}

// The early line has been written, but has not moved on yet.
void ReverbTank::earlyPiece(float* left, float* right, int frames) {
    if (c_.earlyGain != 0.0f) {
        const ReverbLine& line = memory_[kEarlyLine];
        const ReverbGeometry& g = c_.geometry;
        const auto sum = [&](const auto& weights, const auto& taps, float* sums) {
            TapCursor<std::tuple_size_v<std::decay_t<decltype(weights)>>> cursor;
            for (std::size_t k = 0; k < cursor.lines.size(); ++k) {
                cursor.lines[k] = &line;
                cursor.tops[k] = line.wrapped(line.position + taps[k]);
            }
            sumTaps(cursor, weights, sums, frames);
        };
        sum(c_.earlyLeftWeights, g.earlyLeftTaps, left);
        sum(c_.earlyRightWeights, g.earlyRightTaps, right);
        state_.early = {left[0], right[0]};
    } else {
        std::fill_n(left, frames, state_.early.left);
        std::fill_n(right, frames, state_.early.right);
    }
}

}  // namespace norava
