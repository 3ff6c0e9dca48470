#include "dsp/tape_store.h"

namespace norava {

std::size_t CTapeDelayBuffer::bytesFor(int length) {
    return (static_cast<std::size_t>(length) + kSpareSlots) * kStrideBytes;
}

void CTapeDelayBuffer::reserve(Pair& stores, int length, LineMemory& memory) {
    const std::size_t bytes = bytesFor(length);
    if (bytes <= stores[0].capacityBytes_) return;
    const std::shared_ptr<std::byte[]> both = memory.take(bytes);
    stores[0].slots_ = both;
    stores[1].slots_ = {both, both ? both.get() + kSlotBytes : nullptr};
    for (CTapeDelayBuffer& store : stores)
        store.capacityBytes_ = both ? bytes : 0;
}

void CTapeDelayBuffer::allocate(Pair& stores, int length) {
    if (bytesFor(length) > stores[0].capacityBytes_) {
        LineMemory own(bytesFor(length));
        reserve(stores, length, own);
    }
    for (CTapeDelayBuffer& store : stores)
        store.reset();
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
