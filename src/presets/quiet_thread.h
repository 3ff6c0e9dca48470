#pragma once

#include <thread>
#include <utility>

#ifndef _WIN32
#include <csignal>
#endif

namespace norava {

#ifndef _WIN32
// Keeps signals from the calling thread while it lives.
class BlockedSignals {
  public:
    BlockedSignals() {
        sigset_t all;
        sigfillset(&all);
        for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL})
            sigdelset(&all, fault);
        pthread_sigmask(SIG_SETMASK, &all, &before);
    }
    ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

  private:
    sigset_t before;
};
#endif

// Starts a thread that takes no signals but its own faults: they are the host's, and its handlers
// expect its own threads.
template <typename Work>
std::thread StartQuietThread(Work work) {
#ifndef _WIN32
    const BlockedSignals blocked;  // a thread begins with its maker's
#endif
    return std::thread(std::move(work));
}

}  // namespace norava
