#include "host/call_watch.h"

#ifndef NORAVA_SANITIZED  // the sanitizers bring twins of their own

#include <dlfcn.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <ucontext.h>

#include <csignal>
#include <cstddef>

namespace {

thread_local bool counting = false;
thread_local norava::CallReport report;

// Read by the kernel at each system call of the thread.
constexpr char kAllow = 0;
constexpr char kBlock = 1;
thread_local volatile char selector = kAllow;

void CountMemory() {
    if (counting) ++report.memoryCalls;
}

void OnSystemCall(int, siginfo_t* info, [[maybe_unused]] void* context) {
    selector = kAllow;
    // Back onto the instruction: the call is carried out after all, as its caller relies on it.
#if defined(__x86_64__)
    static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_RIP] -= 2;
#elif defined(__aarch64__)
    static_cast<ucontext_t*>(context)->uc_mcontext.pc -= 4;
#endif
    ++report.systemCalls;
    report.firstSystemCall = info->si_syscall;
}

}  // namespace

#define NORAVA_TWIN extern "C" __attribute__((visibility("default")))

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier): the C library's own names
void* __libc_malloc(std::size_t);
void __libc_free(void*);
void* __libc_memalign(std::size_t, std::size_t);
// NOLINTEND(bugprone-reserved-identifier)
}

NORAVA_TWIN void* malloc(std::size_t size) {
    CountMemory();
    return __libc_malloc(size);
}
NORAVA_TWIN void free(void* memory) {
    CountMemory();
    __libc_free(memory);
}
NORAVA_TWIN void* aligned_alloc(std::size_t alignment, std::size_t size) {
    CountMemory();
    return __libc_memalign(alignment, size);
}

// NOLINTBEGIN(bugprone-macro-parentheses): a name and a type
#define NORAVA_LOCK_TWIN(name, type)                                                        \
    NORAVA_TWIN int name(type* lock) {                                                      \
        static const auto next = reinterpret_cast<int (*)(type*)>(dlsym(RTLD_NEXT, #name)); \
        if (counting) ++report.lockCalls;                                                   \
        return next(lock);                                                                  \
    }
NORAVA_LOCK_TWIN(pthread_mutex_lock, pthread_mutex_t)
NORAVA_LOCK_TWIN(pthread_mutex_trylock, pthread_mutex_t)
#undef NORAVA_LOCK_TWIN
// NOLINTEND(bugprone-macro-parentheses)

namespace norava {

CallReport WatchCalls(const std::function<void()>& step) {
    struct sigaction action {
    }, before{};
    action.sa_sigaction = OnSystemCall;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGSYS, &action, &before);
    report = {};
    prctl(PR_SET_SYSCALL_USER_DISPATCH, PR_SYS_DISPATCH_ON, 0, 0, &selector);
    counting = true;
    selector = kBlock;
    step();
    selector = kAllow;
    counting = false;
    prctl(PR_SET_SYSCALL_USER_DISPATCH, PR_SYS_DISPATCH_OFF, 0, 0, 0);
    sigaction(SIGSYS, &before, nullptr);
    return report;
}

}  // namespace norava

#endif
