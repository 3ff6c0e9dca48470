#include "fx/tape_pair.h"

#include <cmath>
#include <utility>

#include "fx/tape_glide.h"

namespace norava {

void TapePair::take(CTapeDelay& first, CTapeDelay& second) {
    release();
    lines_ = {&first, &second};
    count_ = &first == &second ? 1 : 2;
    for (int lane = 0; lane < count_; ++lane) {
        lines_[at(lane)]->takeBack();
        lines_[at(lane)]->pair_ = this;
    }
    Lanes& s = lanes_;
    for (int lane = 0; lane < 2; ++lane) {
        const CTapeDelay& line = *lines_[at(lane)];
        s.increment[lane] = line.lfoIncrement_;
        s.depth[lane] = static_cast<double>(line.depth_);
        s.lowest[lane] = line.minimumRate_;
        s.targetRate[lane] = line.targetRate_;
        s.targetWet[lane] = line.targetWet_;
        s.feedback[lane] = line.feedback_;
    }
}

void TapePair::release() {
    settle();
    for (int lane = 0; lane < count_; ++lane)
        lines_[at(lane)]->pair_ = nullptr;
    count_ = 0;
    lines_ = {};
}

void TapePair::seek() {
    Lanes& s = lanes_;
    for (int lane = 0; lane < 2; ++lane) {
        CTapeDelay& line = *lines_[at(lane)];
        const bool sounds = line.read_->seek(line.position_);
        s.sounds[2 * lane] = s.sounds[2 * lane + 1] = sounds ? -1 : 0;
        const CTapeDelayBuffer::Entry previous = line.read_->entry(line.read_->readIndex - 1);
        s.stamp0[lane] = previous.stamp;
        s.sample0[lane] = static_cast<double>(previous.sample);
        s.read[at(lane)] = line.read_->entryAddress(line.read_->readIndex);
        s.write[at(lane)] = line.write_->entryAddress(line.write_->count);
        s.position[lane] = line.position_;
        s.rate[lane] = line.currentRate_;
        s.lfo[lane] = line.lfoPhase_;
        s.wet[lane] = line.currentWet_;
    }
    arrived_ = hasArrived();
    ready_ = true;
}

// Whether both lines have a pass to play, and speed and wet gain have come to their targets.
bool TapePair::hasArrived() const {
    const auto arrived = [](const CTapeDelay& line) {
        return glideRate(line.currentRate_, line.targetRate_) == line.currentRate_ &&
               glideWet(line.currentWet_, line.targetWet_) == line.currentWet_;
    };
    return allTrue(lanes_.sounds) && arrived(*lines_[0]) && arrived(*lines_[1]);
}

// Brings the lines up to date.
void TapePair::settle() {
    const Lanes& s = lanes_;
    for (int lane = 0; lane < count_ && unsettled_ != 0; ++lane) {
        CTapeDelay& line = *lines_[at(lane)];
        line.position_ = s.position[lane];
        line.currentRate_ = s.rate[lane];
        line.currentWet_ = s.wet[lane];
        line.lfoPhase_ = s.lfo[lane];
        if (line.lfoPhase_ >= 1.0) line.lfoPhase_ -= std::floor(line.lfoPhase_);
        line.write_->count += unsettled_;
        if (line.read_->count > 0) line.read_->readIndex += unsettled_ - 1;
        if (line.position_ >= 1.0) {
            // The last entry written is the sentinel of the pass, and opens the next one too.
            --line.write_->count;
            line.endPass(s.written[lane]);
            line.write_->append(line.position_, s.written[lane]);
        }
    }
    unsettled_ = 0;
    ready_ = false;
}

// Advances until a line reaches the end of its pass or needs another step than to the next entry of
// its read store, or its LFO the end of its cycle, at most by `frames` frames. Returns by how many.
template <bool kArrived>
int TapePair::run(const v128* inputs, v128* outputs, int frames) {
    Lanes& s = lanes_;
    const auto both = [](double x) { return v128d{x, x}; };
    const v128d increment = s.increment, depth = s.depth, lowest = s.lowest;
    const v128d targetRate = s.targetRate;
    const v128 targetWet = s.targetWet, feedback = s.feedback;
    // One lane of `sounds` a line, as its samples lie, and two, as its doubles do.
    const v128i sounds = __builtin_shufflevector(s.sounds, s.sounds, 0, 2, 0, 2);
    const v128i deaf = ~s.sounds;
    v128d position = s.position, rate = s.rate, lfo = s.lfo, stamp0 = s.stamp0;
    v128d sample0 = s.sample0;
    v128 wet = s.wet, written = s.written;
    const std::byte* const read0 = s.read[0];
    const std::byte* const read1 = s.read[1];
    std::byte* const write0 = s.write[0];
    std::byte* const write1 = s.write[1];
    int frame = 0;
    std::size_t offset = 0;
    for (; frame < frames; ++frame, offset += CTapeDelayBuffer::kStrideBytes) {
        const v128d stamp1 = loadPairD(read0 + offset, read1 + offset);
        v128i inStep = isLess(stamp0, position) & isAtMost(position, stamp1);
        if constexpr (!kArrived) inStep |= deaf;
        if (!allTrue(inStep & isLess(position, both(1.0)) & isLess(lfo, both(1.0)))) break;

        // The speed of the tape. A triangle is min(2 p, 2 - 2 p) of the LFO's phase p.
        const v128d triangle = lesser(lfo + lfo, both(2.0) - (lfo + lfo));
        const v128d smooth = triangle * triangle * (both(3.0) - (triangle + triangle));
        const v128d wow = both(1.0) + smooth * depth;
        const v128d step = greater(lesser(rate * wow, both(kHighestTapeStep)), lowest);
        lfo += increment;

        const v128d sample1 =
            widen(loadPairF(read0 + offset + sizeof(double), read1 + offset + sizeof(double)));
        const v128d fraction = (position - stamp0) / (stamp1 - stamp0);
        v128 played = narrow(sample0 + (sample1 - sample0) * fraction);
        if constexpr (!kArrived) played = bitsAs<v128>(bitsAs<v128i>(played) & sounds);
        played = flushTiny(played);
        written = flushTiny(inputs[frame]) + feedback * played;
        outputs[frame] = played * wet;
        position += step;
        stamp0 = stamp1;
        sample0 = sample1;

        storeLanes(write0 + offset, double{position[0]});
        storeLanes(write1 + offset, double{position[1]});
        storeLanes(write0 + offset + sizeof(double), float{written[0]});
        storeLanes(write1 + offset + sizeof(double), float{written[1]});
        if constexpr (!kArrived) {
            wet = glideWet(wet, targetWet);
            rate = glideRate(rate, targetRate);
        }
    }
    s.position = position;
    s.rate = rate;
    s.lfo = lfo;
    s.stamp0 = stamp0;
    s.sample0 = sample0;
    s.wet = wet;
    s.written = written;
    s.read = {read0 + offset, read1 + offset};
    s.write = {write0 + offset, write1 + offset};
    return frame;
}

void TapePair::process(CTapeDelay& first, CTapeDelay& second, const v128* inputs, v128* outputs,
                       int frames) {
    if (lines_[0] != &first || lines_[1] != &second) take(first, second);
    for (int frame = 0; frame < frames;) {
        if (!ready_) seek();
        const int done = arrived_ ? run<true>(inputs + frame, outputs + frame, frames - frame)
                                  : run<false>(inputs + frame, outputs + frame, frames - frame);
        unsettled_ += done;
        frame += done;
        if (frame < frames || !arrived_) settle();
    }
}

}  // namespace norava
