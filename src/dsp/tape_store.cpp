#include "dsp/tape_store.h"

namespace norava {

std::size_t CTapeDelayBuffer::bytesFor(int length) {
    constexpr std::size_t kLoadSlack = 4;  // a 16-byte load of the last 12-byte slot stays inside
    return (static_cast<std::size_t>(length) + kSpareSlots) * kSlotBytes + kLoadSlack;
}

void CTapeDelayBuffer::reserve(int length, LineMemory& memory) {
    if (bytesFor(length) <= capacityBytes_) return;
    slots_ = memory.take(bytesFor(length));
    capacityBytes_ = slots_ ? bytesFor(length) : 0;
}

void CTapeDelayBuffer::allocate(int length) {
    if (bytesFor(length) > capacityBytes_) {
        LineMemory own(bytesFor(length));
        reserve(length, own);
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
