#pragma once

#include <thread>
#include <utility>

#ifndef _WIN32
#include <csignal>
#endif

namespace norava {

// Starts a thread that takes no signals but its own faults: they are the host's, and its handlers
// expect its own threads.
template <typename Work>
std::thread StartQuietThread(Work work) {
#ifndef _WIN32
    sigset_t all, before;
    sigfillset(&all);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL})
        sigdelset(&all, fault);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    std::thread started(std::move(work));
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return started;
#else
    return std::thread(std::move(work));
#endif
}

}  // namespace norava
