#include "framework/event_buffer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace norava {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CountingBuffer : public CEventBuffer {
  public:
    void DeleteEventData(void* data) override {
        ++numDeleted;
        CEventBuffer::DeleteEventData(data);
    }
    int numDeleted = 0;
};

// Each event carries its number, so that the order shows.
CEventBuffer::Event* Add(CEventBuffer& buffer, int position, unsigned char number = 0) {
    auto* const event = buffer.CreateEvent(position, 4);
    event->data[3] = number;
    return event;
}

std::vector<int> Positions(const CEventBuffer& buffer) {
    std::vector<int> positions;
    for (auto* event = buffer.GetFirstEvent(); event != nullptr; event = event->next)
        positions.push_back(event->position);
    return positions;
}

std::vector<int> Numbers(const CEventBuffer& buffer) {
    std::vector<int> numbers;
    for (auto* event = buffer.GetFirstEvent(); event != nullptr; event = event->next)
        numbers.push_back(event->data[3]);
    return numbers;
}

TEST(EventBuffer, InsertsByPositionWithTheHeadsException) {
    CEventBuffer buffer;
    Add(buffer, 10, 1);
    Add(buffer, 10, 2);  // at the tail's position: behind it
    Add(buffer, 50, 3);
    Add(buffer, 10, 4);  // at the head's position while later ones exist: before it
    Add(buffer, 50, 5);
    Add(buffer, 20, 6);
    Add(buffer, 20, 7);  // inside the list: behind its equals
    Add(buffer, 15, 8);  // before the last insertion inside
    Add(buffer, 5, 9);
    EXPECT_THAT(Positions(buffer), ElementsAre(5, 10, 10, 10, 15, 20, 20, 50, 50));
    EXPECT_THAT(Numbers(buffer), ElementsAre(9, 4, 1, 2, 8, 6, 7, 3, 5));
}

TEST(EventBuffer, MeasuresTheSpaceBetweenEvents) {
    CEventBuffer buffer;
    EXPECT_EQ(buffer.GetSequenceTimeSpace(nullptr), 0x7FFFFFFF);
    auto* const first = Add(buffer, 37);
    EXPECT_EQ(buffer.GetSequenceTimeSpace(nullptr), 37);
    EXPECT_EQ(buffer.GetSequenceTimeSpace(first), 0x7FFFFFFF);
    auto* const second = Add(buffer, 40);
    EXPECT_EQ(buffer.GetSequenceTimeSpace(first), 3);
    second->position = 30;  // behind the back of the list: never negative
    EXPECT_EQ(buffer.GetSequenceTimeSpace(first), 0);
    first->position = std::numeric_limits<int>::min();
    EXPECT_EQ(buffer.GetSequenceTimeSpace(first), 0x7FFFFFFF);
}

TEST(EventBuffer, DeletesByPosition) {
    CEventBuffer buffer;
    for (int position : {0, 5, 5, 9, 20, 30})
        Add(buffer, position);
    EXPECT_EQ(buffer.DeleteEvents(5, 5), 0);
    EXPECT_EQ(buffer.DeleteEvents(5, 9), 2);
    EXPECT_EQ(buffer.DeleteEventsAfter(20), 1);
    EXPECT_EQ(buffer.DeleteEventsBefore(9), 1);
    EXPECT_THAT(Positions(buffer), ElementsAre(9, 20));
    buffer.DeleteEvent(nullptr);
    buffer.DeleteEvent(buffer.GetEventByNum(1));
    Add(buffer, 15);  // the tail has gone: this is the new one
    EXPECT_THAT(Positions(buffer), ElementsAre(9, 15));
    EXPECT_EQ(buffer.GetNumEvents(), 2);
}

TEST(EventBuffer, HoldsRemovalBackWhileLocked) {
    CountingBuffer buffer;
    Add(buffer, 1);
    auto* const kept = Add(buffer, 2);
    ++kept->refCount;  // somebody else holds it too
    buffer.LockEvents();
    buffer.LockEvents();
    buffer.DeleteAllEvents();
    buffer.UnlockEvents();
    EXPECT_EQ(buffer.GetNumEvents(), 2);
    EXPECT_EQ(buffer.numDeleted, 0);
    buffer.UnlockEvents();
    EXPECT_THAT(Positions(buffer), ElementsAre(2));
    EXPECT_EQ(buffer.numDeleted, 1);
    buffer.UnlockEvents();  // one too many does no harm
    buffer.LockEvents();
    buffer.DeleteAllEvents();
    EXPECT_EQ(buffer.GetNumEvents(), 1);
    buffer.UnlockEvents();
    EXPECT_THAT(Positions(buffer), IsEmpty());
}

TEST(EventBuffer, MovesAndShiftsEvents) {
    CEventBuffer buffer;
    for (int i = 0; i < 4; ++i)
        Add(buffer, i * 10, static_cast<unsigned char>(i));
    buffer.SetEventPosition(buffer.GetEventByNum(3), 0);  // behind its equal, at the head too
    EXPECT_THAT(Numbers(buffer), ElementsAre(0, 3, 1, 2));
    buffer.SetEventPosition(buffer.GetFirstEvent(), 99);
    Add(buffer, 99, 7);
    EXPECT_THAT(Numbers(buffer), ElementsAre(3, 1, 2, 0, 7));
    buffer.ShiftEventPositions(-10);
    EXPECT_THAT(Positions(buffer), ElementsAre(-10, 0, 10, 89, 89));
    buffer.ShiftEventPositions(std::numeric_limits<int>::max());
    EXPECT_EQ(buffer.GetEventByNum(4)->position, std::numeric_limits<int>::max());
}

TEST(EventBuffer, TakesMemoryOnlyBeyondThePoolAndRefusesAHostThatNeverProcesses) {
    CountingBuffer buffer;
    const unsigned char note[] = {0x90, 60, 100, 7};
    for (int block = 1; block <= 3; ++block) {
        for (int i = 0; i < CEventBuffer::kPoolSize; ++i)
            ASSERT_NE(buffer.CreateMIDIEvent(i - 3, note, 4), nullptr);
        EXPECT_EQ(buffer.GetFirstEvent()->position, 0);
        EXPECT_EQ(buffer.GetFirstEvent()->data[3], 7);
        EXPECT_EQ(buffer.GetNumHeapEvents(), 0);
        buffer.DeleteAllEvents();
        EXPECT_EQ(buffer.numDeleted, block * CEventBuffer::kPoolSize);
    }
    auto* const large = buffer.CreateEvent(0, 65535);
    EXPECT_EQ(large->dataSize, 65535);
    EXPECT_EQ(large->data[65534], 0);
    EXPECT_EQ(buffer.GetNumHeapEvents(), 1);
    for (int i = 1; i < CEventBuffer::kMaxWaitingMIDIEvents; ++i)
        ASSERT_NE(buffer.CreateMIDIEvent(i, note, 4), nullptr);
    EXPECT_GT(buffer.GetNumHeapEvents(), 1);
    EXPECT_EQ(buffer.CreateMIDIEvent(0, note, 4), nullptr);
    // What is left is freed with the buffer, in the pool and beyond it.
}

}  // namespace
}  // namespace norava
