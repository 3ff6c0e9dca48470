#pragma once

#include <functional>

namespace norava {

// What a thread did that may take long: memory taken or given back, locks, system calls.
struct CallReport {
    int memoryCalls = 0;
    int lockCalls = 0;
    int systemCalls = 0;       // 0 or 1: the first one ends the watch for them
    int firstSystemCall = -1;  // its number
};

// What the calling thread does in a step. Memory and lock functions are counted by twins that the
// whole process, loaded modules too, finds before the C library's; system calls, however they are
// made, by the kernel, which sends a signal before it carries the first one out.
CallReport WatchCalls(const std::function<void()>& step);

}  // namespace norava
