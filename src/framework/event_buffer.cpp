#include "framework/event_buffer.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <new>

namespace norava {

CEventBuffer::CEventBuffer() : pool(std::make_unique<Event[]>(kPoolSize)) {
    for (int i = kPoolSize - 1; i >= 0; --i) {
        pool[static_cast<std::size_t>(i)].next = freeRecords;
        freeRecords = &pool[static_cast<std::size_t>(i)];
    }
}

CEventBuffer::~CEventBuffer() {
    // The hook of a derived class is gone by now: payloads are freed here without it.
    for (Event* event = first; event != nullptr;) {
        Event* const next = event->next;
        FreePayload(event);
        FreeRecord(event);
        event = next;
    }
}

void CEventBuffer::DeleteEventData(void* data) {
    if (data != nullptr && !IsPooled(data)) delete[] static_cast<unsigned char*>(data);
}

// Records

bool CEventBuffer::IsPooled(const void* memory) const noexcept {
    const std::less_equal<> notAfter;
    return notAfter(pool.get(), memory) && !notAfter(pool.get() + kPoolSize, memory);
}

CEventBuffer::Event* CEventBuffer::TakeRecord() {
    Event* event = freeRecords;
    if (event != nullptr) {
        freeRecords = event->next;
        *event = Event();
        return event;
    }
    event = new (std::nothrow) Event();
    if (event != nullptr) ++numHeapEvents;
    return event;
}

bool CEventBuffer::GivePayload(Event* event, unsigned short size) {
    event->dataSize = size;
    if (size == 0) return true;
    if (size <= kMIDIEventSize && IsPooled(event)) {
        event->data = event->inlineData.data();
        return true;
    }
    event->data = new (std::nothrow) unsigned char[size]();
    if (event->data != nullptr) ++numHeapEvents;
    return event->data != nullptr;
}

void CEventBuffer::FreePayload(Event* event) noexcept {
    if (event->data != event->inlineData.data()) delete[] event->data;
    event->data = nullptr;
}

void CEventBuffer::FreeRecord(Event* event) noexcept {
    if (!IsPooled(event)) {
        delete event;
        return;
    }
    event->next = freeRecords;
    freeRecords = event;
}

CEventBuffer::Event* CEventBuffer::CreateEvent(int position, unsigned short size) {
    Event* const event = TakeRecord();
    if (event == nullptr) return nullptr;
    if (!GivePayload(event, size)) {
        FreeRecord(event);
        return nullptr;
    }
    event->position = position;
    Insert(event);
    ++numEvents;
    return event;
}

CEventBuffer::Event* CEventBuffer::CreateMIDIEvent(int position, const unsigned char* bytes,
                                                   std::size_t numBytes) {
    if (numEvents >= kMaxWaitingMIDIEvents) return nullptr;
    Event* const event = CreateEvent(std::max(position, 0), kMIDIEventSize);
    if (event != nullptr)
        std::memcpy(event->data, bytes, std::min<std::size_t>(numBytes, kMIDIEventSize));
    return event;
}

// The list

void CEventBuffer::Insert(Event* event) noexcept {
    if (first == nullptr) {
        first = last = event;
    } else if (event->position >= last->position) {
        last->next = event;
        last = event;
    } else if (event->position > first->position) {
        Event* before = hint != nullptr && hint->position <= event->position ? hint : first;
        while (before->next->position <= event->position)
            before = before->next;
        event->next = before->next;
        before->next = event;
        hint = event;
    } else {
        event->next = first;
        first = event;
    }
}

void CEventBuffer::Unlink(Event* event) noexcept {
    hint = nullptr;
    Event* before = nullptr;
    for (Event* at = first; at != nullptr && at != event; at = at->next)
        before = at;
    (before != nullptr ? before->next : first) = event->next;
    if (last == event) last = before;
    event->next = nullptr;
}

CEventBuffer::Event* CEventBuffer::GetNextEvent(const Event* event) noexcept {
    return event != nullptr ? event->next : nullptr;
}

CEventBuffer::Event* CEventBuffer::GetEventByNum(int n) const noexcept {
    Event* event = first;
    for (; n > 0 && event != nullptr; --n)
        event = event->next;
    return event;
}

int CEventBuffer::GetEventPosition(const Event* event) noexcept {
    return event != nullptr ? event->position : 0;
}

unsigned char* CEventBuffer::GetEventDataPtr(const Event* event) noexcept {
    return event != nullptr ? event->data : nullptr;
}

unsigned short CEventBuffer::GetEventDataSize(const Event* event) noexcept {
    return event != nullptr ? event->dataSize : static_cast<unsigned short>(0);
}

void CEventBuffer::SetEventPosition(Event* event, int position) {
    if (event == nullptr) return;
    LockEvents();
    Unlink(event);
    event->position = position;
    // Behind its equals at the head too, unlike a new record.
    Event* before = nullptr;
    for (Event* at = first; at != nullptr && at->position <= position; at = at->next)
        before = at;
    event->next = before != nullptr ? before->next : first;
    (before != nullptr ? before->next : first) = event;
    if (event->next == nullptr) last = event;
    UnlockEvents();
}

void CEventBuffer::ShiftEventPositions(int deltaFrames) {
    if (numEvents == 0 || deltaFrames == 0) return;
    LockEvents();
    for (Event* event = first; event != nullptr; event = event->next) {
        const auto shifted = static_cast<std::int64_t>(event->position) + deltaFrames;
        event->position = static_cast<int>(std::clamp<std::int64_t>(
            shifted, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
    }
    UnlockEvents();
}

template <typename Predicate>
int CEventBuffer::MarkDeleted(Predicate predicate) {
    LockEvents();
    int numMarked = 0;
    for (Event* event = first; event != nullptr; event = event->next) {
        if (!predicate(*event)) continue;
        --event->refCount;
        ++numMarked;
    }
    UnlockEvents();
    return numMarked;
}

void CEventBuffer::DeleteEvent(Event* event) {
    if (event == nullptr) return;
    LockEvents();
    --event->refCount;
    UnlockEvents();
}

void CEventBuffer::DeleteAllEvents() {
    if (first != nullptr) MarkDeleted([](const Event&) { return true; });
}

int CEventBuffer::DeleteEventsBefore(int position) {
    return MarkDeleted([position](const Event& event) { return event.position < position; });
}

int CEventBuffer::DeleteEventsAfter(int position) {
    return MarkDeleted([position](const Event& event) { return event.position > position; });
}

int CEventBuffer::DeleteEvents(int from, int to) {
    if (from >= to) return 0;
    return MarkDeleted(
        [from, to](const Event& event) { return from <= event.position && event.position < to; });
}

void CEventBuffer::UnlockEvents() {
    lockCount = std::max(lockCount - 1, 1);
    if (lockCount > 1) return;
    hint = nullptr;
    last = nullptr;
    for (Event** link = &first; *link != nullptr;) {
        Event* const event = *link;
        if (event->refCount >= 1) {
            last = event;
            link = &event->next;
            continue;
        }
        *link = event->next;
        numEvents = std::max(numEvents - 1, 0);
        if (event->data != nullptr) DeleteEventData(event->data);
        FreeRecord(event);
    }
}

int CEventBuffer::GetSequenceTimeSpace(const Event* event) const noexcept {
    if (first == nullptr) return kNoMoreEvents;
    if (event == nullptr) return first->position;
    if (event->next == nullptr) return kNoMoreEvents;
    const auto frames = static_cast<std::int64_t>(event->next->position) - event->position;
    return static_cast<int>(std::clamp<std::int64_t>(frames, 0, kNoMoreEvents));
}

}  // namespace norava
