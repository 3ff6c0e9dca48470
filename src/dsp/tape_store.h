#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <memory>
#include <utility>

#include "dsp/line_memory.h"

namespace norava {

// The samples of one pass round a loop of tape, each with its stamp: the position (0..1 within the
// pass) at which it was written. A line writes one store while it reads the other, written during
// the pass before, and swaps them at the end of each pass; reading at the position of the present
// pass gives a delay of exactly one pass, of any real length.
//
// Entry i of a pass lives in slot i + 10. Slots 7, 8 and 9 hold the last three entries of the pass
// before, stamps lowered by 1, so that reading at the very start of a pass can interpolate. The
// slot after the last entry holds the end sentinel, stamped 1 or more.
//
// A slot is 12 bytes, stamp then sample: every reader wants both. The slots of a line's two stores
// take turns in memory: what is read of the one and written of the other mostly lies side by side.
//
// Slots are written before they are read: after a reset only slots 7..9 are read, and later nothing
// above count + 10, the sentinel that the end of the pass put there. So a reset clears the slots
// below 10 and leaves the rest as it is, whatever the length.
class CTapeDelayBuffer {
  public:
    struct Entry {
        double stamp;
        float sample;
    };

    static constexpr int kFirstSlot = 10;
    static constexpr int kHistory = 3;  // entries kept from the pass before
    static constexpr int kSpareSlots = 256;

    // The two stores of a line.
    using Pair = std::array<CTapeDelayBuffer, 2>;

    // Bytes that passes of up to `length` entries need in both stores.
    static std::size_t bytesFor(int length);

    // Takes room for passes of up to `length` entries out of `memory`, if there is less so far.
    static void reserve(Pair& stores, int length, LineMemory& memory);

    // Passes have up to `length` entries from here on; resets. Takes memory of its own if too
    // little is reserved.
    static void allocate(Pair& stores, int length);

    // The same from here on as after `allocate`. Takes the same short time for any length.
    void reset();

    Entry entry(int index) const { return slot(index + kFirstSlot); }
    void setEntry(int index, double stamp, float sample) {
        setSlot(index + kFirstSlot, {stamp, sample});
    }

    // Appends to the pass being written.
    void append(double stamp, float sample) { setEntry(count++, stamp, sample); }

    // Ends the pass that this store was written in: takes over the last entries of `before`, the
    // pass that was read meanwhile, as its history, and the sentinel. `stamp` has reached 1; it is
    // not counted as an entry.
    void endPass(const CTapeDelayBuffer& before, double stamp, float sample);

    // Moves the read index to the first entry stamped `position` or later, if it is not there yet.
    // Positions only grow within a pass. False if the pass holds no such entry.
    bool seek(double position) {
        if (count == 0) return false;
        while (readIndex <= count && position > entry(readIndex).stamp)
            ++readIndex;
        return readIndex <= count;
    }

    int count = 0;      // entries written in this pass
    int readIndex = 0;  // the reader's place in this store
    double rate =
        0.0;  // distance of neighbouring stamps of this pass, 0 if they differ or nobody kept count

    // The slot of an entry, for readers and writers that walk through a pass themselves.
    std::byte* entryAddress(int index) const { return slotAddress(index + kFirstSlot); }

    static constexpr std::size_t kSlotBytes = sizeof(double) + sizeof(float);
    static constexpr std::size_t kStrideBytes = 2 * kSlotBytes;  // from one slot to the next

  private:
    std::byte* slotAddress(int index) const {
        return slots_.get() + static_cast<std::size_t>(index) * kStrideBytes;
    }
    Entry slot(int index) const {
        Entry result;
        std::memcpy(&result.stamp, slotAddress(index), sizeof(double));
        std::memcpy(&result.sample, slotAddress(index) + sizeof(double), sizeof(float));
        return result;
    }
    void setSlot(int index, const Entry& value) {
        std::memcpy(slotAddress(index), &value.stamp, sizeof(double));
        std::memcpy(slotAddress(index) + sizeof(double), &value.sample, sizeof(float));
    }

    std::shared_ptr<std::byte[]> slots_;  // of both stores, from this one's first on
    std::size_t capacityBytes_ = 0;
};

}  // namespace norava
