#include "framework/event_buffer.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace norava {
namespace {

// Each event carries its number, so that the order shows.
void Add(CEventBuffer& buffer, int position, unsigned char number = 0) {
    buffer.CreateEvent(position, 4)->data[3] = number;
}

using Listed = std::vector<std::pair<int, int>>;  // position, number

Listed List(const CEventBuffer& buffer) {
    Listed list;
    for (auto* event = buffer.GetFirstEvent(); event != nullptr; event = event->next)
        list.emplace_back(event->position, event->data[3]);
    return list;
}

TEST(EventBuffer, InsertsByPositionWithTheHeadsException) {
    CEventBuffer buffer;
    Add(buffer, 10, 1);
    Add(buffer, 10, 2);  // at the tail's position: behind it
    Add(buffer, 50, 3);
    Add(buffer, 10, 4);  // at the head's position while later ones exist: before it
    Add(buffer, 20, 6);
    Add(buffer, 20, 7);  // inside the list: behind its equals
    Add(buffer, 15, 8);  // before the last insertion inside
    Add(buffer, 5, 9);
    EXPECT_EQ(List(buffer),
              (Listed{{5, 9}, {10, 4}, {10, 1}, {10, 2}, {15, 8}, {20, 6}, {20, 7}, {50, 3}}));
}

TEST(EventBuffer, MeasuresDeletesAndMoves) {
    CEventBuffer buffer;
    EXPECT_EQ(buffer.GetSequenceTimeSpace(nullptr), 0x7FFFFFFF);
    for (int position : {1, 5, 5, 9, 20, 30})
        Add(buffer, position);
    EXPECT_EQ(buffer.GetSequenceTimeSpace(nullptr), 1);
    EXPECT_EQ(buffer.GetSequenceTimeSpace(buffer.GetFirstEvent()), 4);
    EXPECT_EQ(buffer.DeleteEvents(5, 5), 0);
    EXPECT_EQ(buffer.DeleteEvents(5, 9), 2);
    EXPECT_EQ(buffer.DeleteEventsAfter(20), 1);
    EXPECT_EQ(buffer.DeleteEventsBefore(9), 1);
    buffer.DeleteEvent(buffer.GetEventByNum(1));
    Add(buffer, 15);  // the tail has gone: this is the new one
    buffer.SetEventPosition(buffer.GetFirstEvent(), 20);
    buffer.ShiftEventPositions(-5);
    EXPECT_EQ(List(buffer), (Listed{{10, 0}, {15, 0}}));
    EXPECT_EQ(buffer.GetNumEvents(), 2);
}

TEST(EventBuffer, HoldsRemovalBackWhileLocked) {
    CEventBuffer buffer;
    Add(buffer, 1);
    Add(buffer, 2);
    ++buffer.GetEventByNum(1)->refCount;  // somebody else holds it too
    buffer.LockEvents();
    buffer.LockEvents();
    buffer.DeleteAllEvents();
    buffer.UnlockEvents();
    EXPECT_EQ(buffer.GetNumEvents(), 2);
    buffer.UnlockEvents();
    EXPECT_EQ(List(buffer), (Listed{{2, 0}}));
    buffer.UnlockEvents();  // one too many does no harm
    buffer.LockEvents();
    buffer.DeleteAllEvents();
    EXPECT_EQ(buffer.GetNumEvents(), 1);
}

TEST(EventBuffer, TakesMemoryOnlyBeyondThePoolAndRefusesAHostThatNeverProcesses) {
    CEventBuffer buffer;
    const unsigned char note[] = {0x90, 60, 100, 7};
    for (int block = 0; block < 3; ++block) {
        buffer.DeleteAllEvents();
        for (int i = 0; i < CEventBuffer::kPoolSize; ++i)
            ASSERT_NE(buffer.CreateMIDIEvent(i - 3, note, 4), nullptr);
        EXPECT_EQ(List(buffer).front(), std::pair(0, 7));
        EXPECT_EQ(buffer.GetNumHeapEvents(), 0);
    }
    buffer.DeleteAllEvents();
    EXPECT_EQ(buffer.CreateEvent(0, 65535)->data[65534], 0);
    EXPECT_EQ(buffer.GetNumHeapEvents(), 1);
    for (int i = 1; i < CEventBuffer::kMaxWaitingMIDIEvents; ++i)
        ASSERT_NE(buffer.CreateMIDIEvent(i, note, 4), nullptr);
    EXPECT_EQ(buffer.CreateMIDIEvent(0, note, 4), nullptr);
    // What is left is freed with the buffer, in the pool and beyond it.
}

}  // namespace
}  // namespace norava
