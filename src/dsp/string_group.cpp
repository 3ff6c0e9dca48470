#include "dsp/string_group.h"

#include <algorithm>

#include "dsp/numbers.h"

namespace norava {

namespace {

static_assert(StringSteps::kStrideBytes == CTapeDelayBuffer::kStrideBytes);
static_assert(StringSteps::kSampleOffset == sizeof(CTapeDelayBuffer::Entry::stamp));
static_assert(StringSteps::kTiny == kSilence);

// Two of the lines, see StringSteps.
struct StringPair {
    v128d phase;
    v128d rate;
    v128d sounds;
    v128d stamp0;
    v128 rounded0;
    v128d sample0;
    std::array<const std::byte*, 2> read;
    std::array<std::byte*, 2> write;

    NORAVA_INLINE StringPair(const StringSteps& s, std::size_t first)
        : phase(loadLanes<v128d>(s.phase + first)),
          rate(loadLanes<v128d>(s.rate + first)),
          sounds(bitsAs<v128d>(first == 0
                                   ? __builtin_shufflevector(s.sounds, s.sounds, 0, 0, 1, 1)
                                   : __builtin_shufflevector(s.sounds, s.sounds, 2, 2, 3, 3))),
          stamp0(loadLanes<v128d>(s.stamp0 + first)),
          rounded0(narrow(stamp0)),
          sample0(loadLanes<v128d>(s.sample0 + first)),
          read{s.read[first], s.read[first + 1]},
          write{s.write[first], s.write[first + 1]} {}

    // Whether the phase of each lane lies between the two entries, and within the pass.
    NORAVA_INLINE v128i inStep(v128d stamp1) const {
        const v128i between = isLess(stamp0, phase) & isAtMost(phase, stamp1);
        return (between | ~bitsAs<v128i>(sounds)) & isLess(phase, v128d{1.0, 1.0});
    }

    NORAVA_INLINE v128d stamps(std::size_t offset) const {
        return loadPairD(read[0] + offset, read[1] + offset);
    }

    // The sample at the phase; goes on to the next entry. Stamps take part in single precision.
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

    // Stores the lines' samples, each behind its phase.
    NORAVA_INLINE void record(float first, float second, std::size_t offset) const {
        storeLanes(write[0] + offset, double{phase[0]});
        storeLanes(write[1] + offset, double{phase[1]});
        storeLanes(write[0] + offset + sizeof(double), first);
        storeLanes(write[1] + offset + sizeof(double), second);
    }

    NORAVA_INLINE void put(StringSteps& s, std::size_t first, std::size_t moved) const {
        storeLanes(s.phase + first, phase);
        storeLanes(s.stamp0 + first, stamp0);
        storeLanes(s.sample0 + first, sample0);
        for (std::size_t i = 0; i < 2; ++i) {
            s.read[first + i] += moved;
            s.write[first + i] += moved;
        }
    }
};

// Advances at most by `frames` frames and returns by how many. A steady run trusts what
// RenderStringSteps says; the other looks before each frame, and leaves `stamp1` as it is.
template <bool kSteady>
NORAVA_INLINE int run(StringSteps& s, const v128* inputs, v128* outputs, int frames) {
    StringPair a(s, 0);
    StringPair b(s, 2);
    v128d stampsA = loadLanes<v128d>(s.stamp1);
    v128d stampsB = loadLanes<v128d>(s.stamp1 + 2);
    const v128 sounds = bitsAs<v128>(s.sounds);
    const v128 feedback = s.feedback, damping = s.damping;
    v128 state = s.state, written = s.written;
    std::size_t offset = 0;
    int frame = 0;
    for (; frame < frames; ++frame, offset += CTapeDelayBuffer::kStrideBytes) {
        if constexpr (!kSteady) {
            stampsA = a.stamps(offset);
            stampsB = b.stamps(offset);
            if (!allTrue(a.inStep(stampsA) & b.inStep(stampsB))) break;
        }
        const v128 played = narrow(a.play(stampsA, offset), b.play(stampsB, offset));
        const v128 delayed = flushTiny(bitsAs<v128>(bitsAs<v128i>(played) & bitsAs<v128i>(sounds)));
        state = state + (delayed - state) * damping;
        written = inputs[frame] + feedback * state;
        outputs[frame] = delayed;

        a.phase += a.rate;
        b.phase += b.rate;
        if constexpr (kSteady) {
            // As the pass before was stamped.
            stampsA += a.rate;
            stampsB += b.rate;
        }
        a.record(written[0], written[1], offset);
        b.record(written[2], written[3], offset);
    }
    a.put(s, 0, offset);
    b.put(s, 2, offset);
    storeLanes(s.stamp1, stampsA);
    storeLanes(s.stamp1 + 2, stampsB);
    s.state = state;
    s.written = written;
    return frame;
}

}  // namespace

void renderStringStepsBaseline(StringSteps& lines, const v128* inputs, v128* outputs, int frames) {
    run<true>(lines, inputs, outputs, frames);
}

#if !defined(__x86_64__)
void renderStringStepsWide(StringSteps& lines, const v128* inputs, v128* outputs, int frames) {
    renderStringStepsBaseline(lines, inputs, outputs, frames);
}
#endif

StringGroup::StringGroup(KernelPath path)
    : renderSteps_(path == KernelPath::wide ? renderStringStepsWide : renderStringStepsBaseline) {}

bool StringGroup::holds(CStringDelay* const* lines, int count) const {
    return count == count_ && std::equal(lines, lines + count, lines_.begin());
}

void StringGroup::take(CStringDelay* const* lines, int count) {
    release();
    count_ = count;
    for (int lane = 0; lane < kLanes; ++lane) {
        // Lanes without a line of their own go along with the first: same values to the same
        // places.
        CStringDelay* const source = lines[lane < count ? lane : 0];
        lines_[static_cast<std::size_t>(lane)] = source;
        if (lane < count) source->takeBack();
        source->group_ = this;
        steps_.rate[lane] = source->rate_;
        steps_.state[lane] = source->state_;
        steps_.feedback[lane] = source->feedback_;
        steps_.damping[lane] = source->damping;
        steps_.written[lane] = 0.0f;
    }
    steadyLeft_ = 0;
}

void StringGroup::release() {
    settle();
    for (int lane = 0; lane < count_; ++lane)
        line(lane).group_ = nullptr;
    count_ = 0;
}

void StringGroup::seek() {
    for (int lane = 0; lane < kLanes; ++lane) {
        CStringDelay& l = line(lane);
        const bool sounds = l.read_->seek(l.phase_);
        const CTapeDelayBuffer::Entry previous = l.read_->entry(l.read_->readIndex - 1);
        steps_.phase[lane] = l.phase_;
        steps_.sounds[lane] = sounds ? -1 : 0;
        steps_.stamp0[lane] = previous.stamp;
        steps_.stamp1[lane] = l.read_->entry(l.read_->readIndex).stamp;
        steps_.sample0[lane] = static_cast<double>(previous.sample);
        steps_.read[lane] = l.read_->entryAddress(l.read_->readIndex);
        steps_.write[lane] = l.write_->entryAddress(l.write_->count);
    }
}

// Frames, from the one to come, that renderSteps_ may take.
int StringGroup::steadyFrames() const {
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

// Brings the lines up to date.
void StringGroup::settle() {
    if (unsettled_ == 0) return;
    for (int lane = 0; lane < count_; ++lane) {
        CStringDelay& l = line(lane);
        l.write_->count += unsettled_;
        if (l.read_->count > 0) l.read_->readIndex += unsettled_ - 1;
        l.phase_ = steps_.phase[lane];
        l.state_ = steps_.state[lane];
        if (l.phase_ >= 1.0) endPass(l, steps_.written[lane]);
    }
    unsettled_ = 0;
}

// The last entry written is the sentinel of the pass, and opens the next one too.
void StringGroup::endPass(CStringDelay& line, float written) const {
    --line.write_->count;
    line.endPass(written);
    line.write_->append(line.phase_, written);
}

void StringGroup::process(CStringDelay* const* lines, int count, const v128* inputs, v128* outputs,
                          int frames) {
    if (!holds(lines, count)) take(lines, count);
    for (int frame = 0; frame < frames;) {
        if (steadyLeft_ == 0) {
            settle();
            seek();
            steadyLeft_ = steadyFrames();
        }
        int done;
        if (steadyLeft_ > 0) {
            done = std::min(steadyLeft_, frames - frame);
            renderSteps_(steps_, inputs + frame, outputs + frame, done);
            steadyLeft_ -= done;
        } else {
            done = run<false>(steps_, inputs + frame, outputs + frame, frames - frame);
        }
        unsettled_ += done;
        frame += done;
    }
}

}  // namespace norava
