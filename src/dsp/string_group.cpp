#include "dsp/string_group.h"

#include <algorithm>
#include <bit>
#include <cstdint>

#include "dsp/numbers.h"

namespace norava {

namespace {

// Two lines in flight. What is named 0 belongs to the entry before the phase; stamps take part in
// the interpolation in single precision.
struct StringPair {
    v128d phase;
    v128d rate;
    v128d sounds;  // all bits set in lanes whose read store holds a pass
    v128d stamp0;
    v128 rounded0;
    v128d sample0;
    std::array<const std::byte*, 2> read;  // the entry at or behind the phase
    std::array<std::byte*, 2> write;

    // Whether the phase of each lane lies between the two entries, and within the pass.
    NORAVA_INLINE v128i inStep(v128d stamp1) const {
        const v128i between = isLess(stamp0, phase) & isAtMost(phase, stamp1);
        return (between | ~bitsAs<v128i>(sounds)) & isLess(phase, v128d{1.0, 1.0});
    }

    NORAVA_INLINE v128d stamps(std::size_t offset) const {
        return loadPairD(read[0] + offset, read[1] + offset);
    }

    // The sample at the phase; goes on to the next entry.
    NORAVA_INLINE v128d play(v128d stamp1, std::size_t offset) {
        const std::size_t sampleOffset = offset + sizeof(double);
        const v128 rounded1 = narrow(stamp1);
        const v128d t = (phase - widen(rounded0)) / widen(rounded1 - rounded0);
        const v128d sample1 = widen(loadPairF(read[0] + sampleOffset, read[1] + sampleOffset));
        const v128d sample = sample0 + (sample1 - sample0) * t;
        rounded0 = rounded1;
        stamp0 = stamp1;
        sample0 = sample1;
        return sample;
    }

    // Stores lane i of a line's sample, given twice over, with its phase.
    NORAVA_INLINE void record(v128 twice, std::size_t offset) const {
        const v128d samples = bitsAs<v128d>(twice);
        storeLanes(write[0] + offset, __builtin_shufflevector(phase, samples, 0, 2));
        storeLanes(write[1] + offset, __builtin_shufflevector(phase, samples, 1, 3));
    }
};

}  // namespace

// The lines in flight.
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
    CStringDelay& line(int lane) const { return *lines_[static_cast<std::size_t>(lane)]; }
    StringPair& pairOf(int lane) { return pairs_[static_cast<std::size_t>(lane / 2)]; }
    void endPass(CStringDelay& line, float written) const;

    std::array<CStringDelay*, StringGroup::kLanes> lines_;
    int count_;
    std::array<StringPair, StringGroup::kLanes / 2> pairs_;
    v128 state_, feedback_, damping_;
    v128 written_{};
};

StringLanes::StringLanes(CStringDelay* const* lines, int count) : count_(count) {
    for (int lane = 0; lane < StringGroup::kLanes; ++lane) {
        // Lanes without a line of their own go along with the first: same values to the same
        // places.
        CStringDelay* source = lines[lane < count ? lane : 0];
        lines_[static_cast<std::size_t>(lane)] = source;
        pairOf(lane).rate[lane % 2] = source->rate_;
        state_[lane] = source->state_;
        feedback_[lane] = source->feedback_;
        damping_[lane] = source->damping;
    }
}

void StringLanes::seek() {
    for (int lane = 0; lane < StringGroup::kLanes; ++lane) {
        CStringDelay& l = line(lane);
        StringPair& pair = pairOf(lane);
        const int half = lane % 2;
        const bool sounds = l.read_->seek(l.phase_);
        const CTapeDelayBuffer::Entry previous = l.read_->entry(l.read_->readIndex - 1);
        pair.phase[half] = l.phase_;
        pair.sounds[half] = std::bit_cast<double>(std::int64_t{sounds ? -1 : 0});
        pair.stamp0[half] = previous.stamp;
        pair.rounded0[half] = static_cast<float>(previous.stamp);
        pair.sample0[half] = static_cast<double>(previous.sample);
        pair.read[static_cast<std::size_t>(half)] = l.read_->entryAddress(l.read_->readIndex);
        pair.write[static_cast<std::size_t>(half)] = l.write_->entryAddress(l.write_->count);
    }
}

int StringLanes::steadyFrames() const {
    // Phases and stamps are sums of rates; after a million additions they are off by less than
    // this.
    constexpr double kMargin = 1e-9;
    double frames = StringGroup::kLongestLine;
    for (int lane = 0; lane < count_; ++lane) {
        const CStringDelay& l = line(lane);
        const double rate = l.rate_;
        const double toEnd = 1.0 - kMargin - l.phase_;
        if (l.read_->count > 0) {
            // At the same rate as in the pass before, the phase keeps its distance from the entry
            // behind it.
            const double ahead = l.read_->entry(l.read_->readIndex).stamp - l.phase_;
            const bool keepsStep =
                l.read_->rate == rate && ahead > kMargin && ahead < rate - kMargin;
            if (!keepsStep) return 0;
        }
        frames = std::min(frames, toEnd / rate);
    }
    return frames >= 0.0 ? static_cast<int>(frames) + 1 : 0;
}

void StringLanes::settle(int frames) {
    for (int lane = 0; lane < count_; ++lane) {
        CStringDelay& l = line(lane);
        l.write_->count += frames;
        if (l.read_->count > 0) l.read_->readIndex += frames - 1;
        l.phase_ = pairOf(lane).phase[lane % 2];
        l.state_ = state_[lane];
        if (l.phase_ >= 1.0) endPass(l, written_[lane]);
    }
}

// The last entry written is the sentinel of the pass, and opens the next one too.
void StringLanes::endPass(CStringDelay& line, float written) const {
    --line.write_->count;
    line.endPass(written);
    line.write_->append(line.phase_, written);
}

template <bool kSteady>
int StringLanes::run(const v128* inputs, v128* outputs, int frame, int end) {
    StringPair a = pairs_[0];
    StringPair b = pairs_[1];
    const v128 sounds = bitsAs<v128>(
        __builtin_shufflevector(bitsAs<v128i>(a.sounds), bitsAs<v128i>(b.sounds), 0, 2, 4, 6));
    const v128 feedback = feedback_, damping = damping_;
    v128 state = state_, written = written_;
    std::size_t offset = 0;
    for (; frame < end; ++frame, offset += CTapeDelayBuffer::kSlotBytes) {
        const v128d stampsA = a.stamps(offset);
        const v128d stampsB = b.stamps(offset);
        if (!kSteady && !allTrue(a.inStep(stampsA) & b.inStep(stampsB))) break;

        const v128 played = narrow(a.play(stampsA, offset), b.play(stampsB, offset));
        const v128 delayed = flushTiny(bitsAs<v128>(bitsAs<v128i>(played) & bitsAs<v128i>(sounds)));
        state = state + (delayed - state) * damping;
        written = inputs[frame] + feedback * state;
        outputs[frame] = delayed;

        a.phase += a.rate;
        b.phase += b.rate;
        a.record(__builtin_shufflevector(written, written, 0, 0, 1, 1), offset);
        b.record(__builtin_shufflevector(written, written, 2, 2, 3, 3), offset);
    }
    pairs_[0].phase = a.phase;
    pairs_[1].phase = b.phase;
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
