#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "framework/nonblocking.h"

namespace norava {

// The timed events of the current host block, kept sorted by position. Removal waits until nobody
// walks the list (LockEvents/UnlockEvents). Audio thread only. Records come from a pool that is
// made with the object; a record beyond the pool, or a payload of more than 4 bytes, comes from the
// heap and is counted.
class CEventBuffer {
  public:
    static constexpr int kPoolSize = 4096;
    static constexpr unsigned short kMIDIEventSize = 4;  // status, two data bytes, one spare
    static constexpr int kNoMoreEvents = 0x7FFFFFFF;     // frames, from GetSequenceTimeSpace
    // A host that keeps sending and never processes does not fill the memory.
    static constexpr int kMaxWaitingMIDIEvents = 1 << 16;

    class Event {
      public:
        int position = 0;               // frames from the start of the host block
        unsigned char* data = nullptr;  // null when dataSize is 0
        unsigned short dataSize = 0;    // bytes
        int refCount = 1;               // the record goes when this drops below 1
        Event* next = nullptr;

      private:
        friend class CEventBuffer;
        std::array<unsigned char, kMIDIEventSize> inlineData{};
    };

    CEventBuffer();
    CEventBuffer(const CEventBuffer&) = delete;
    CEventBuffer& operator=(const CEventBuffer&) = delete;

    // What TranslateMIDIEvent calls; the base returns the last argument. Numbers are 0..127, the
    // wheel -1..1.
    virtual unsigned char MIDITrnsl_NoteOn(unsigned char note, unsigned char velocity);
    virtual unsigned char MIDITrnsl_NoteOff(unsigned char note, unsigned char velocity);
    virtual float MIDITrnsl_PitchWheel(float position);
    virtual unsigned char MIDITrnsl_CC(unsigned char number, unsigned char value);
    virtual unsigned char MIDITrnsl_NoteAftertouch(unsigned char note, unsigned char pressure);
    virtual unsigned char MIDITrnsl_ChnAftertouch(unsigned char pressure);
    virtual unsigned char MIDITrnsl_ProgramNum(unsigned char program);
    // Receives each payload that is removed and gives heap memory back; payloads of the pool need
    // nothing.
    virtual void DeleteEventData(void* data);
    virtual ~CEventBuffer();

    // Makes a record with a zeroed payload and inserts it: after all records of smaller or equal
    // position, except that a record at or before the head's position becomes the new head while a
    // later one exists. Null without memory.
    Event* CreateEvent(int position, unsigned short size);
    // The same for a MIDI message that a host sent: a negative position counts as 0. Null when it
    // was not taken.
    Event* CreateMIDIEvent(int position, const unsigned char* bytes, std::size_t numBytes);

    Event* GetFirstEvent() const noexcept { return first; }
    static Event* GetNextEvent(const Event* event) noexcept;
    Event* GetEventByNum(int n) const noexcept;  // the head for n < 1; null beyond the end
    int GetNumEvents() const noexcept { return numEvents; }
    static int GetEventPosition(const Event* event) noexcept;             // 0 for null
    static unsigned char* GetEventDataPtr(const Event* event) noexcept;   // null for null
    static unsigned short GetEventDataSize(const Event* event) noexcept;  // 0 for null

    void SetEventPosition(Event* event, int position);
    void ShiftEventPositions(int deltaFrames);

    void DeleteEvent(Event* event);
    void DeleteAllEvents();
    // These three return how many records they marked.
    int DeleteEventsBefore(int position);  // from the head while position < the argument
    int DeleteEventsAfter(int position);   // every record with a position > the argument
    int DeleteEvents(int from, int to);    // every record with from <= position < to

    void LockEvents() noexcept { ++lockCount; }
    void UnlockEvents();

    // Frames from `event` to its successor, or from the block's start to the first event for null;
    // kNoMoreEvents when there is none.
    int GetSequenceTimeSpace(const Event* event) const noexcept;
    // Decodes a 4-byte payload and calls the translator for it. False for everything that is no
    // channel message.
    bool TranslateMIDIEvent(const Event* event);

    // Heap blocks taken so far because the pool could not serve: on the audio thread each one is a
    // defect.
    int GetNumHeapEvents() const noexcept { return numHeapEvents; }

  private:
    Event* TakeRecord();
    bool GivePayload(Event* event, unsigned short size);
    void FreeRecord(Event* event) noexcept;
    void FreePayload(Event* event) noexcept;
    bool IsPooled(const void* memory) const noexcept;
    void Insert(Event* event) noexcept;
    void Unlink(Event* event) noexcept;
    template <typename Predicate>
    int MarkDeleted(Predicate predicate);

    Event* first = nullptr;
    Event* last = nullptr;
    int numEvents = 0;  // records in the list, marked ones included until they are removed
    int lockCount = 1;  // 1: unlocked

    Event* hint = nullptr;  // last record inserted inside the list: sorted runs that overlap stay
                            // cheap to merge
    std::unique_ptr<Event[]> pool;
    Event* freeRecords = nullptr;
    int numHeapEvents = 0;
};

}  // namespace norava
