#include "dsp/tape_store.h"

#include <algorithm>

namespace norava {

namespace {

constexpr std::size_t kPageBytes = 4096;
constexpr std::size_t kLoadSlack = 4;  // a 16-byte load of the last 12-byte slot stays inside

}  // namespace

void CTapeDelayBuffer::allocate(int length, int reserveLength) {
    const auto bytesFor = [](int entries) {
        return (static_cast<std::size_t>(entries) + kSpareSlots) * kSlotBytes + kLoadSlack;
    };
    if (bytesFor(length) > capacityBytes_) {
        slots_.reset();
        capacityBytes_ = bytesFor(std::max(length, reserveLength));
        slots_ = std::make_unique_for_overwrite<std::byte[]>(capacityBytes_);
        for (std::size_t at = 0; at < capacityBytes_; at += kPageBytes)
            slots_[at] = std::byte{0};
    }
    reset();
}

void CTapeDelayBuffer::reset() {
    for (int i = 0; i < kFirstSlot; ++i)
        setSlot(i, {0.0, 0.0f});
    count = 0;
    readIndex = 0;
}

void CTapeDelayBuffer::endPass(const CTapeDelayBuffer& before, double stamp, float sample) {
    for (int i = 0; i < kHistory; ++i) {
        Entry entry = before.slot(before.count + kFirstSlot - kHistory + i);
        entry.stamp -= 1.0;
        setSlot(kFirstSlot - kHistory + i, entry);
    }
    setEntry(count, stamp, sample);
    readIndex = 0;
}

}  // namespace norava
