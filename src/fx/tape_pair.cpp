#include "fx/tape_pair.h"

#include <array>
#include <cmath>
#include <utility>

#include "fx/tape_glide.h"

namespace norava {

class TapeLanes {
  public:
    TapeLanes(CTapeDelay& first, CTapeDelay& second)
        : lines_{&first, &second}, count_(&first == &second ? 1 : 2) {}

    // Advances until a line reaches the end of its pass or needs another step than to the next
    // entry of its read store, or its LFO the end of its cycle, at most to `end`. Returns the frame
    // to go on with. A settled run trusts that both lines have a pass to play, and that speed and
    // wet gain have arrived at their targets.
    template <bool kSettled>
    int run(v128* samples, int frame, int end);

    // Takes over the lines' state for the frame to come.
    void load();

    // Brings the lines up to date after `frames` frames of `run`.
    void store(int frames);

    bool settled() const;

  private:
    static std::size_t at(int lane) { return static_cast<std::size_t>(lane); }

    std::array<CTapeDelay*, 2> lines_;
    int count_;                             // 1 if both lanes are the same line
    std::array<const std::byte*, 2> read_;  // the entry behind the position
    std::array<std::byte*, 2> write_;
    v128d position_, rate_, lfo_;
    v128d stamp0_, sample0_;  // of the entry before the position
    v128 wet_{}, written_{};
    std::array<bool, 2> sounds_;
};

void TapeLanes::load() {
    for (int lane = 0; lane < 2; ++lane) {
        CTapeDelay& line = *lines_[at(lane)];
        sounds_[at(lane)] = line.read_->seek(line.position_);
        const CTapeDelayBuffer::Entry previous = line.read_->entry(line.read_->readIndex - 1);
        stamp0_[lane] = previous.stamp;
        sample0_[lane] = static_cast<double>(previous.sample);
        read_[at(lane)] = line.read_->entryAddress(line.read_->readIndex);
        write_[at(lane)] = line.write_->entryAddress(line.write_->count);
        position_[lane] = line.position_;
        rate_[lane] = line.currentRate_;
        lfo_[lane] = line.lfoPhase_;
        wet_[lane] = line.currentWet_;
    }
}

bool TapeLanes::settled() const {
    const auto arrived = [](const CTapeDelay& line) {
        return glideRate(line.currentRate_, line.targetRate_) == line.currentRate_ &&
               glideWet(line.currentWet_, line.targetWet_) == line.currentWet_;
    };
    return sounds_[0] && sounds_[1] && arrived(*lines_[0]) && arrived(*lines_[1]);
}

void TapeLanes::store(int frames) {
    for (int lane = 0; lane < count_; ++lane) {
        CTapeDelay& line = *lines_[at(lane)];
        line.position_ = position_[lane];
        line.currentRate_ = rate_[lane];
        line.currentWet_ = wet_[lane];
        line.lfoPhase_ = lfo_[lane];
        if (line.lfoPhase_ >= 1.0) line.lfoPhase_ -= std::floor(line.lfoPhase_);
        line.write_->count += frames;
        if (line.read_->count > 0) line.read_->readIndex += frames - 1;
        if (line.position_ >= 1.0) {
            // The last entry written is the sentinel of the pass, and opens the next one too.
            --line.write_->count;
            line.endPass(written_[lane]);
            line.write_->append(line.position_, written_[lane]);
        }
    }
}

template <bool kSettled>
int TapeLanes::run(v128* samples, int frame, int end) {
    const CTapeDelay& first = *lines_[0];
    const CTapeDelay& second = *lines_[1];
    const auto both = [](double x) { return v128d{x, x}; };
    const v128d increment = {first.lfoIncrement_, second.lfoIncrement_};
    const v128d depth = {static_cast<double>(first.depth_), static_cast<double>(second.depth_)};
    const v128d lowest = {first.minimumRate_, second.minimumRate_};
    const v128d targetRate = {first.targetRate_, second.targetRate_};
    const v128 targetWet = {first.targetWet_, second.targetWet_};
    const v128 feedback = {first.feedback_, second.feedback_};
    const v128i soundsF = {sounds_[0] ? -1 : 0, sounds_[1] ? -1 : 0};
    const v128i deaf = ~__builtin_shufflevector(soundsF, soundsF, 0, 0, 1, 1);
    v128d position = position_, rate = rate_, lfo = lfo_, stamp0 = stamp0_, sample0 = sample0_;
    v128 wet = wet_, written = written_;
    const std::byte* const read0 = read_[0];
    const std::byte* const read1 = read_[1];
    std::byte* const write0 = write_[0];
    std::byte* const write1 = write_[1];
    std::size_t offset = 0;
    for (; frame < end; ++frame, offset += CTapeDelayBuffer::kSlotBytes) {
        const v128d stamp1 = loadPairD(read0 + offset, read1 + offset);
        v128i inStep = isLess(stamp0, position) & isAtMost(position, stamp1);
        if constexpr (!kSettled) inStep |= deaf;
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
        if constexpr (!kSettled) played = bitsAs<v128>(bitsAs<v128i>(played) & soundsF);
        played = flushTiny(played);
        written = flushTiny(samples[frame]) + feedback * played;
        samples[frame] = played * wet;
        position += step;
        stamp0 = stamp1;
        sample0 = sample1;

        const v128d twice = bitsAs<v128d>(__builtin_shufflevector(written, written, 0, 0, 1, 1));
        storeLanes(write0 + offset, __builtin_shufflevector(position, twice, 0, 2));
        storeLanes(write1 + offset, __builtin_shufflevector(position, twice, 1, 3));
        if constexpr (!kSettled) {
            wet = glideWet(wet, targetWet);
            rate = glideRate(rate, targetRate);
        }
    }
    position_ = position;
    rate_ = rate;
    lfo_ = lfo;
    wet_ = wet;
    written_ = written;
    return frame;
}

void TapePair::process(CTapeDelay& first, CTapeDelay& second, v128* samples, int frames) {
    // To set the lanes up takes longer than a few frames do.
    constexpr int kFewFrames = 2;
    if (frames <= kFewFrames) {
        for (int i = 0; i < frames; ++i) {
            samples[i][0] = first.GetFrame(samples[i][0]);
            if (&second != &first) samples[i][1] = second.GetFrame(samples[i][1]);
        }
        return;
    }
    TapeLanes lanes(first, second);
    int frame = 0;
    while (frame < frames) {
        lanes.load();
        const int from = frame;
        frame = lanes.settled() ? lanes.run<true>(samples, frame, frames)
                                : lanes.run<false>(samples, frame, frames);
        lanes.store(frame - from);
    }
}

}  // namespace norava
