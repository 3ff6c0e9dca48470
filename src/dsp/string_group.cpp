#include "dsp/string_group.h"

#include <algorithm>
#include <utility>

#include "dsp/numbers.h"

namespace norava {

// The lines in flight, two to a pair of double-precision lanes.
class StringLanes {
  public:
    StringLanes(CStringDelay* const* lines, int count);

    // Advances at most to frame `end` and returns the frame to go on with. A steady run trusts that
    // every line takes one entry of its read store a frame and reaches no end of a pass; the other
    // looks before each frame.
    template <bool kSteady>
    int run(const v128* inputs, v128* outputs, int frame, int end);

    // Brings the lines up to date after `frames` frames of `run`.
    void settle(int frames);

    // Finds every line's place in its read store for the frame to come.
    void seek();

    // Frames, from the one to come, that a steady run may take.
    int steadyFrames() const;

  private:
    static std::size_t at(int lane) { return static_cast<std::size_t>(lane); }
    double& phase(int lane) { return phases_[at(lane)]; }
    void endPass(int lane);

    std::array<CStringDelay*, StringGroup::kLanes> lines_;
    int count_;
    std::array<double, StringGroup::kLanes> phases_;
    std::array<double, StringGroup::kLanes> rates_;
    std::array<double, StringGroup::kLanes> stamps0_;
    std::array<float, StringGroup::kLanes> samples0_;
    std::array<const std::byte*, StringGroup::kLanes> read_;
    std::array<std::byte*, StringGroup::kLanes> write_;
    v128 state_, feedback_, damping_;
    v128 written_{};
    v128i sounds_;
};

StringLanes::StringLanes(CStringDelay* const* lines, int count) : count_(count) {
    for (int lane = 0; lane < StringGroup::kLanes; ++lane) {
        // Lanes without a line of their own go along with the first: same values to the same
        // places.
        CStringDelay* line = lines[lane < count ? lane : 0];
        lines_[at(lane)] = line;
        phases_[at(lane)] = line->phase_;
        rates_[at(lane)] = line->rate_;
        state_[lane] = line->state_;
        feedback_[lane] = line->feedback_;
        damping_[lane] = line->damping;
    }
}

void StringLanes::seek() {
    for (int lane = 0; lane < StringGroup::kLanes; ++lane) {
        CStringDelay& line = *lines_[at(lane)];
        const bool sounds = line.read_->seek(phase(lane));
        const int index = line.read_->readIndex;
        const CTapeDelayBuffer::Entry previous = line.read_->entry(index - 1);
        stamps0_[at(lane)] = previous.stamp;
        samples0_[at(lane)] = previous.sample;
        read_[at(lane)] = line.read_->entryAddress(index);
        write_[at(lane)] = line.write_->entryAddress(line.write_->count);
        sounds_[lane] = sounds ? -1 : 0;
    }
}

int StringLanes::steadyFrames() const {
    // Phases and stamps are sums of rates; after a million additions they are off by less than
    // this.
    constexpr double kMargin = 1e-9;
    double frames = StringGroup::kLongestLine;
    for (int lane = 0; lane < count_; ++lane) {
        const CStringDelay& line = *lines_[at(lane)];
        const double rate = line.rate_;
        const double toEnd = 1.0 - kMargin - line.phase_;
        if (line.read_->count > 0) {
            // At the same rate as in the pass before, the phase keeps its distance from the entry
            // behind it.
            const double ahead = line.read_->entry(line.read_->readIndex).stamp - line.phase_;
            const bool keepsStep =
                line.read_->rate == rate && ahead > kMargin && ahead < rate - kMargin;
            if (!keepsStep) return 0;
        }
        frames = std::min(frames, toEnd / rate);
    }
    return frames >= 0.0 ? static_cast<int>(frames) + 1 : 0;
}

void StringLanes::settle(int frames) {
    for (int lane = 0; lane < count_; ++lane) {
        CStringDelay& line = *lines_[at(lane)];
        line.write_->count += frames;
        if (line.read_->count > 0) line.read_->readIndex += frames - 1;
        if (phase(lane) >= 1.0) endPass(lane);
        line.phase_ = phase(lane);
        line.state_ = state_[lane];
    }
    for (int lane = count_; lane < StringGroup::kLanes; ++lane)
        phase(lane) = phase(0);
}

// The last entry written is the sentinel of the pass, and opens the next one too.
void StringLanes::endPass(int lane) {
    CStringDelay& line = *lines_[at(lane)];
    const float written = written_[lane];
    --line.write_->count;
    line.write_->endPass(*line.read_, phase(lane), written);
    phase(lane) -= 1.0;
    std::swap(line.write_, line.read_);
    line.write_->count = 0;
    line.write_->rate = line.rate_;
    line.write_->append(phase(lane), written);
}

template <bool kSteady>
int StringLanes::run(const v128* inputs, v128* outputs, int frame, int end) {
    const v128d one = {1.0, 1.0};
    const v128i sounds = sounds_;
    v128d phaseA = {phases_[0], phases_[1]}, phaseB = {phases_[2], phases_[3]};
    const v128d rateA = {rates_[0], rates_[1]}, rateB = {rates_[2], rates_[3]};
    v128d lastA = {stamps0_[0], stamps0_[1]}, lastB = {stamps0_[2], stamps0_[3]};
    v128 stamp0A = narrow(lastA), stamp0B = narrow(lastB);
    v128d start0A = widen(stamp0A), start0B = widen(stamp0B);
    v128d sample0A = widen(v128{samples0_[0], samples0_[1]});
    v128d sample0B = widen(v128{samples0_[2], samples0_[3]});
    v128 state = state_, written = written_;
    const v128 feedback = feedback_, damping = damping_;
    const std::byte* const read0 = read_[0];
    const std::byte* const read1 = read_[1];
    const std::byte* const read2 = read_[2];
    const std::byte* const read3 = read_[3];
    std::byte* const write0 = write_[0];
    std::byte* const write1 = write_[1];
    std::byte* const write2 = write_[2];
    std::byte* const write3 = write_[3];
    std::size_t offset = 0;
    for (; frame < end; ++frame, offset += CTapeDelayBuffer::kSlotBytes) {
        const v128d stampsA = loadPairD(read0 + offset, read1 + offset);
        const v128d stampsB = loadPairD(read2 + offset, read3 + offset);
        if constexpr (!kSteady) {
            const v128i inStepA = isLess(lastA, phaseA) & isAtMost(phaseA, stampsA);
            const v128i inStepB = isLess(lastB, phaseB) & isAtMost(phaseB, stampsB);
            const v128i ok = (inStepA | ~__builtin_shufflevector(sounds, sounds, 0, 0, 1, 1)) &
                             (inStepB | ~__builtin_shufflevector(sounds, sounds, 2, 2, 3, 3)) &
                             isLess(phaseA, one) & isLess(phaseB, one);
            if (!allTrue(ok)) break;
            lastA = stampsA;
            lastB = stampsB;
        }

        // Interpolation between the two entries, in double precision on single-precision stamps.
        const v128 stamp1A = narrow(stampsA), stamp1B = narrow(stampsB);
        const v128d tA = (phaseA - start0A) / widen(stamp1A - stamp0A);
        const v128d tB = (phaseB - start0B) / widen(stamp1B - stamp0B);
        const v128d sample1A = widen(loadPairF(read0 + offset + 8, read1 + offset + 8));
        const v128d sample1B = widen(loadPairF(read2 + offset + 8, read3 + offset + 8));
        v128 delayed =
            narrow(sample0A + (sample1A - sample0A) * tA, sample0B + (sample1B - sample0B) * tB);
        delayed = flushTiny(bitsAs<v128>(bitsAs<v128i>(delayed) & sounds));
        state = state + (delayed - state) * damping;
        written = inputs[frame] + feedback * state;
        outputs[frame] = delayed;
        phaseA += rateA;
        phaseB += rateB;

        stamp0A = stamp1A;
        stamp0B = stamp1B;
        start0A = widen(stamp1A);
        start0B = widen(stamp1B);
        sample0A = sample1A;
        sample0B = sample1B;

        const v128d twiceA = bitsAs<v128d>(__builtin_shufflevector(written, written, 0, 0, 1, 1));
        const v128d twiceB = bitsAs<v128d>(__builtin_shufflevector(written, written, 2, 2, 3, 3));
        storeLanes(write0 + offset, __builtin_shufflevector(phaseA, twiceA, 0, 2));
        storeLanes(write1 + offset, __builtin_shufflevector(phaseA, twiceA, 1, 3));
        storeLanes(write2 + offset, __builtin_shufflevector(phaseB, twiceB, 0, 2));
        storeLanes(write3 + offset, __builtin_shufflevector(phaseB, twiceB, 1, 3));
    }
    phases_ = {phaseA[0], phaseA[1], phaseB[0], phaseB[1]};
    state_ = state;
    written_ = written;
    return frame;
}

void StringGroup::process(CStringDelay* const* lines, int count, const v128* inputs, v128* outputs,
                          int frames) {
    // To set the lanes up takes longer than a few frames do.
    constexpr int kFewFrames = 2;
    if (frames <= kFewFrames) {
        for (int i = 0; i < frames; ++i) {
            for (int lane = 0; lane < count; ++lane) {
                outputs[i][lane] = lines[lane]->GetFrame(inputs[i][lane]);
            }
        }
        return;
    }
    StringLanes lanes(lines, count);
    int frame = 0;
    while (frame < frames) {
        lanes.seek();
        const int from = frame;
        const int steady = std::min(lanes.steadyFrames(), frames - frame);
        frame = steady > 0 ? lanes.run<true>(inputs, outputs, frame, frame + steady)
                           : lanes.run<false>(inputs, outputs, frame, frames);
        lanes.settle(frame - from);
    }
}

}  // namespace norava
