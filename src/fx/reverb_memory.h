#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "dsp/line_memory.h"
#include "fx/reverb_coefficients.h"
#include "fx/reverb_line.h"

namespace norava {

// The reverb's fourteen lines, back to back in one array.
//
// Forgetting all sound fills the whole array with the smallest sound that keeps recursions away
// from denormal numbers. That would be a long time for the audio thread, so the cells are only
// declared empty, and filled shortly before they are read: `prepare` fills what each of the
// reverb's reads will meet in the coming frames, as long as it has not been written since.
// Afterwards every read sees what a fill of everything would have left.
class ReverbMemory {
  public:
    static constexpr float kEmptyCell = 1e-30f;

    // Takes `floats` floats out of `memory`, if there are fewer so far; to be followed by allocate.
    void reserve(std::size_t floats, LineMemory& memory);

    // Lines of these capacities and as many frames long, empty, positions 0. New memory is taken
    // only if there is too little, and then at least `leastFloats` floats. Not on the audio thread.
    void allocate(const ReverbLengths& capacities, std::size_t leastFloats);

    // Takes over lengths and taps; a position beyond its line comes round. Takes long if they
    // differ from the present ones; what counts as empty is filled then.
    void setGeometry(const ReverbGeometry& geometry);

    // Zeros in all lines but the predelay.
    void clearRoom();

    // All cells count as empty from here on.
    void empty();

    // To be called before every 1..kMostFrames frames that are processed.
    void prepare(int frames) {
        if (framesSinceEmpty_ < longestReach_) fillAhead(frames);
        framesSinceEmpty_ += frames;
    }
    static constexpr int kMostFrames = 64;

    ReverbLine& operator[](std::size_t line) { return lines_[line]; }
    const ReverbLine& operator[](std::size_t line) const { return lines_[line]; }

    static std::size_t sizeOf(const ReverbLengths& lengths);

  private:
    // A place that the reverb reads in every frame, in cells above the position at the frame's
    // start. The cell there was written `reach` frames ago.
    struct Reader {
        std::size_t line;
        int offset;
        int reach;
    };

    void listReaders();
    void addReader(std::size_t line, int offset, int reach);
    void fillAhead(int frames);
    void fillEverything();

    std::shared_ptr<std::byte[]> memory_;
    std::size_t capacity_ = 0;  // floats in memory_
    std::array<ReverbLine, kReverbLines> lines_;
    ReverbGeometry geometry_;

    static constexpr std::size_t kMostReaders =
        kReverbLines + 2 * kReverbOutputTaps + 2 * kReverbEarlyTaps;
    std::array<Reader, kMostReaders> readers_{};
    std::size_t readerCount_ = 0;
    std::int64_t longestReach_ = 0;
    std::int64_t framesSinceEmpty_ = 0;
    std::int64_t filledUntil_ = 0;  // frames since `empty` whose reads are prepared
};

}  // namespace norava
