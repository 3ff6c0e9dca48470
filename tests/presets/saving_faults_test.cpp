#if defined(__linux__) && defined(__x86_64__) && !defined(NORAVA_SANITIZED)

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <optional>
#include <set>

#include "files/file_system.h"
#include "presets/first_start.h"
#include "presets/program_folder.h"

// Saving is stopped at its first, second, ... call of the system until it comes through untouched.
// It runs in a process of its own under a tracer, so that every call is met, whoever makes it.

namespace norava {
namespace {

namespace fs = std::filesystem;
using test::Block;
using test::Eventually;
using test::ProgramFolder;

// An error that the system answers with, or none: the process is killed instead. ENOENT: another
// process took an unfinished file for a leftover and removed it.
using Fault = int;
constexpr Fault kKilled = 0;
// Some file systems, those of other makers' disks among them, know neither files without a name nor
// a renaming that replaces nothing.
enum class System { full, plain };

struct Attempt {
    std::optional<bool> saved;  // none: it died
    bool wasStopped = false;
    bool wasFlushed = false;
    bool namedUnflushed = false;  // the content got a name before the disk had it
};

// A call that no saving makes: behind it nothing is struck any more.
constexpr unsigned long long kEndOfWork = SYS_sched_yield;

// Calls that no disk makes fail.
bool IsAboutFiles(unsigned long long call) {
    static const std::set<unsigned long long> others = {
        SYS_brk,   SYS_mmap,   SYS_munmap,         SYS_mprotect,   SYS_madvise,
        SYS_futex, SYS_getpid, SYS_rt_sigprocmask, SYS_exit_group, SYS_getrandom};
    return !others.contains(call);
}

bool IsUnknown(System system, const user_regs_struct& registers) {
    if (system == System::full) return false;
    return registers.orig_rax == SYS_renameat2 ||
           (registers.orig_rax == SYS_openat && (registers.rdx & O_TMPFILE) == O_TMPFILE);
}

// Lets the child go on to its next entry into the system or return from it; false when it is gone.
bool GoOn(pid_t child, int& status) {
    return ptrace(PTRACE_SYSCALL, child, nullptr, nullptr) == 0 &&
           waitpid(child, &status, 0) == child && WIFSTOPPED(status);
}

template <typename Work>
Attempt RunWithFault(System system, Fault fault, int callsBefore, Work work) {
    std::fflush(stdout);  // or the child would write it once more
    const pid_t child = fork();
    if (child == 0) {
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        raise(SIGSTOP);
        const bool saved = work();
        syscall(kEndOfWork);
        std::exit(saved);  // not at once: what was reached is written down then
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_EXITKILL), 0);
    Attempt run;
    while (GoOn(child, status)) {
        user_regs_struct registers{};
        ptrace(PTRACE_GETREGS, child, nullptr, &registers);
        if (registers.orig_rax == kEndOfWork) {
            ptrace(PTRACE_DETACH, child, nullptr, nullptr);
            waitpid(child, &status, 0);
            break;
        }
        run.wasFlushed = run.wasFlushed || registers.orig_rax == SYS_fsync;
        if (registers.orig_rax == SYS_linkat || registers.orig_rax == SYS_rename)
            run.namedUnflushed = run.namedUnflushed || !run.wasFlushed;
        const bool isUnknown = IsUnknown(system, registers);
        const bool strikes =
            !isUnknown && !run.wasStopped && IsAboutFiles(registers.orig_rax) && callsBefore-- == 0;
        run.wasStopped = run.wasStopped || strikes;
        if (strikes && fault == kKilled) {
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            break;
        }
        const bool isRefused = strikes || isUnknown;
        if (isRefused) ptrace(PTRACE_POKEUSER, child, offsetof(user_regs_struct, orig_rax), -1L);
        if (!GoOn(child, status)) break;  // returned
        const long answer = isUnknown ? -EINVAL : -fault;
        if (isRefused) ptrace(PTRACE_POKEUSER, child, offsetof(user_regs_struct, rax), answer);
    }
    if (WIFEXITED(status)) run.saved = WEXITSTATUS(status) != 0;
    return run;
}

long NumEntries(const std::string& folder) {
    return std::distance(fs::directory_iterator(folder), {});
}

class SavingFaults : public testing::TestWithParam<System> {};
INSTANTIATE_TEST_SUITE_P(Systems, SavingFaults, testing::Values(System::full, System::plain));

// Whether the save came through untouched.
bool SaveWithFault(System system, Fault fault, int call, bool exists) {
    SCOPED_TRACE(testing::Message() << "fault " << fault << " at call " << call);
    const ProgramFolder folder;
    const std::string before = exists ? Block(0.25f) : "", after = Block(0.75f);
    const std::string path = folder.Path("A/x.norava");
    fs::create_directories(folder.Path("A"));
    if (exists) folder.Write("A/x.norava", before);
    const Attempt run = RunWithFault(system, fault, call, [&] {
        return file_system::ReplaceFile(path.c_str(), after.data(), after.size());
    });
    const bool isThere = fs::exists(path);
    const std::string now = folder.Read("A/x.norava");
    EXPECT_TRUE(now == after || (now == before && isThere == exists));
    EXPECT_TRUE(!run.saved || *run.saved == (now == after));
    EXPECT_FALSE(run.namedUnflushed);
    EXPECT_EQ(!run.saved, fault == kKilled && run.wasStopped);
    // Whoever was killed had no chance to clear up: the next start does.
    const auto next = run.saved ? nullptr : PresetLibrary::Open(folder.Place());
    const auto nothingBeside = [&] { return NumEntries(folder.Path("A")) == isThere; };
    EXPECT_TRUE(run.saved ? nothingBeside() : Eventually(nothingBeside));
    EXPECT_TRUE(run.wasStopped || call > 8) << "the tracer sees the calls";
    return !run.wasStopped;
}

TEST_P(SavingFaults, LeaveOneOfTheTwoFilesAndNothingBesideIt) {
    for (const bool exists : {false, true}) {
        for (const Fault fault : {kKilled, ENOSPC, EIO, EINTR, ENOENT}) {
            for (int call = 0; !SaveWithFault(GetParam(), fault, call, exists); ++call)
                ASSERT_LT(call, 100);
        }
    }
}

TEST_P(SavingFaults, WriteTheBankWholeOrNotAtAll) {
    const std::string block = Block(0.25f);
    const std::span bytes(reinterpret_cast<const unsigned char*>(block.data()), block.size());
    const std::vector<FactoryProgram> bank = {{"A", "1", bytes}, {"B", "2", bytes}};
    for (const Fault fault : {kKilled, ENOSPC}) {
        for (int call = 0;; ++call) {
            const ProgramFolder folder;
            const Attempt run = RunWithFault(GetParam(), fault, call, [&] {
                return WriteFactoryBank(folder.Root(), "norava", bank);
            });
            const long written =
                fs::exists(folder.Root())
                    ? std::distance(fs::recursive_directory_iterator(folder.Root()), {})
                    : 0;
            EXPECT_TRUE(written == 0 || written == 4) << call << ": " << written;
            // The next start clears up and tries again.
            EXPECT_EQ(WriteFactoryBank(folder.Root(), "norava", bank), written == 0);
            EXPECT_EQ(folder.Read("B/2.norava"), block);
            EXPECT_EQ(NumEntries(folder.scratch.Path()), 1) << call;
            if (!run.wasStopped) break;
            ASSERT_LT(call, 300);
        }
    }
}

}  // namespace
}  // namespace norava

#endif
