// The loop over four string lines for machines with AVX2: four lines' doubles in one vector.
// Everything here has internal linkage apart from the one function, and calls nothing that is
// shared, so that none of it can end up where a narrower machine runs it.

#include <immintrin.h>

#include "dsp/string_steps.h"

namespace norava {

namespace {

NORAVA_INLINE v128 samplesAt(const std::byte* const* read, std::size_t offset) {
    return v128{loadLanes<float>(read[0] + offset), loadLanes<float>(read[1] + offset),
                loadLanes<float>(read[2] + offset), loadLanes<float>(read[3] + offset)};
}

}  // namespace

void renderStringStepsWide(StringSteps& lines, const v128* inputs, v128* outputs, int frames) {
    v256d phase = loadLanes<v256d>(lines.phase);
    v256d stamp1 = loadLanes<v256d>(lines.stamp1);
    v256d sample0 = loadLanes<v256d>(lines.sample0);
    v256d stamp0 = loadLanes<v256d>(lines.stamp0);
    const v256d rate = loadLanes<v256d>(lines.rate);
    v128 rounded0 = _mm256_cvtpd_ps(stamp0);
    v256d before = _mm256_cvtps_pd(rounded0);
    v128 state = lines.state, written = lines.written;
    const v128 feedback = lines.feedback, damping = lines.damping;
    const v128i sounds = lines.sounds;
    const std::byte* const read[4] = {lines.read[0], lines.read[1], lines.read[2], lines.read[3]};
    std::byte* const write[4] = {lines.write[0], lines.write[1], lines.write[2], lines.write[3]};
    const std::size_t end = static_cast<std::size_t>(frames) * StringSteps::kStrideBytes;
    for (std::size_t offset = 0; offset < end; offset += StringSteps::kStrideBytes) {
        const v128 rounded1 = _mm256_cvtpd_ps(stamp1);
        const v256d between = _mm256_cvtps_pd(rounded1 - rounded0);
        const v256d t = (phase - before) / between;
        const v256d sample1 = _mm256_cvtps_pd(samplesAt(read, offset + StringSteps::kSampleOffset));
        const v128 played = _mm256_cvtpd_ps(sample0 + (sample1 - sample0) * t);
        const v128i heard = bitsAs<v128i>(played) & sounds;
        const v128i isTiny = bitsAs<v128>(heard & 0x7fffffff) < v128_Set(StringSteps::kTiny);
        const v128 delayed = bitsAs<v128>(heard & ~isTiny);
        state = state + (delayed - state) * damping;
        written = *inputs++ + feedback * state;
        *outputs++ = delayed;

        sample0 = sample1;
        rounded0 = rounded1;
        before = _mm256_cvtps_pd(rounded1);
        stamp0 = stamp1;
        // As the pass before was stamped.
        stamp1 += rate;
        phase += rate;
        // Each line's sample behind its phase.
        for (int lane = 0; lane < 4; ++lane) {
            storeLanes(write[lane] + offset, double{phase[lane]});
            storeLanes(write[lane] + offset + StringSteps::kSampleOffset, float{written[lane]});
        }
    }
    storeLanes(lines.phase, phase);
    storeLanes(lines.stamp0, stamp0);
    storeLanes(lines.stamp1, stamp1);
    storeLanes(lines.sample0, sample0);
    lines.state = state;
    lines.written = written;
    for (int lane = 0; lane < 4; ++lane) {
        lines.read[lane] += end;
        lines.write[lane] += end;
    }
}

}  // namespace norava
