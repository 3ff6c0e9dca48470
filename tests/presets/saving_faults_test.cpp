#ifndef NORAVA_SANITIZED  // the sanitizers bring twins of their own

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>

#include "files/file_system.h"
#include "presets/first_start.h"
#include "presets/program_folder.h"

// Saving is stopped at its first, second, ... call of the system until it comes through untouched.
// The twins below stand before the C library's functions for the whole test program.

namespace {

enum class Fault { none, killed, noSpace, ioError };
Fault faultToMake = Fault::none;
int callsUntilFault = 0;

// Whether this call is the one that fails; a kill does not return.
bool Fails() {
    if (faultToMake == Fault::none || callsUntilFault-- > 0) return false;
    if (faultToMake == Fault::killed) kill(getpid(), SIGKILL);
    errno = faultToMake == Fault::noSpace ? ENOSPC : EIO;
    return true;
}

template <typename... Arguments>
int Call(long number, Arguments... arguments) {
    return Fails() ? -1 : static_cast<int>(syscall(number, arguments...));
}

}  // namespace

#define NORAVA_TWIN extern "C" __attribute__((visibility("default")))

NORAVA_TWIN int open(const char* path, int flags, ...) {
    va_list list;
    va_start(list, flags);
    const int mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(list, int) : 0;
    va_end(list);
    return Call(SYS_openat, AT_FDCWD, path, flags, mode);
}
NORAVA_TWIN ssize_t write(int file, const void* bytes, size_t count) {
    return Fails() ? -1 : syscall(SYS_write, file, bytes, count);
}
NORAVA_TWIN int fsync(int file) {
    return Call(SYS_fsync, file);
}
NORAVA_TWIN int fchmod(int file, mode_t mode) noexcept {
    return Call(SYS_fchmod, file, mode);
}
NORAVA_TWIN int linkat(int from, const char* old, int to, const char* name, int flags) noexcept {
    return Call(SYS_linkat, from, old, to, name, flags);
}
NORAVA_TWIN int rename(const char* from, const char* to) noexcept {
    return Call(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0);
}
NORAVA_TWIN int mkdir(const char* path, mode_t mode) noexcept {
    return Call(SYS_mkdirat, AT_FDCWD, path, mode);
}

namespace norava {
namespace {

namespace fs = std::filesystem;
using test::Block;
using test::ProgramFolder;

// Runs `work` in a process of its own with a fault at its `call`th call; 0: it came through.
template <typename Work>
int RunWithFault(Fault fault, int call, Work work) {
    const pid_t child = fork();
    if (child == 0) {
        callsUntilFault = call;
        faultToMake = fault;
        const bool good = work();
        const bool reached = callsUntilFault < 0;
        _exit(reached ? (good ? 2 : 1) : good ? 0 : 3);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

TEST(SavingFaults, LeaveOneOfTheTwoFilesAndNothingBesideIt) {
    const std::string before = Block(0.25f);
    const std::string after = Block(0.75f);
    for (const bool exists : {false, true}) {
        for (const Fault fault : {Fault::killed, Fault::noSpace, Fault::ioError}) {
            for (int call = 0;; ++call) {
                const ProgramFolder folder;
                fs::create_directories(folder.Path("A"));
                if (exists) folder.Write("A/x.norava", before);
                const std::string path = folder.Path("A/x.norava");
                const int result = RunWithFault(fault, call, [&] {
                    return file_system::ReplaceFile(path.c_str(), after.data(), after.size());
                });
                const bool isThere = fs::exists(path);
                const std::string now = isThere ? folder.Read("A/x.norava") : "";
                EXPECT_TRUE(now == after || (exists ? now == before : !isThere)) << call;
                EXPECT_TRUE(result != 1 || now != after) << "reported as failed";
                EXPECT_TRUE(result != 2 || now == after) << "reported as done";
                // Only a kill has no chance to clear up; the next start does.
                if (fault == Fault::killed) file_system::RemoveLeftovers(folder.Path("A").c_str());
                const long left = std::distance(fs::directory_iterator(folder.Path("A")), {});
                EXPECT_EQ(left, isThere ? 1 : 0) << call;
                if (result == 0) {
                    EXPECT_GT(call, 3) << "the twins are not in the way";
                    break;
                }
                ASSERT_LT(call, 100);
            }
        }
    }
}

TEST(SavingFaults, WriteTheBankWholeOrNotAtAll) {
    const std::string block = Block(0.25f);
    const std::span bytes(reinterpret_cast<const unsigned char*>(block.data()), block.size());
    const std::vector<FactoryProgram> bank = {{"A", "1", bytes}, {"B", "2", bytes}};
    for (const Fault fault : {Fault::killed, Fault::noSpace}) {
        for (int call = 0;; ++call) {
            const ProgramFolder folder;
            const int result = RunWithFault(
                fault, call, [&] { return WriteFactoryBank(folder.Root(), "norava", bank); });
            const long written =
                fs::exists(folder.Root())
                    ? std::distance(fs::recursive_directory_iterator(folder.Root()), {})
                    : 0;
            EXPECT_TRUE(written == 0 || written == 4) << call << ": " << written;
            // The next start clears up and tries again.
            EXPECT_EQ(WriteFactoryBank(folder.Root(), "norava", bank), written == 0);
            EXPECT_EQ(folder.Read("B/2.norava"), block);
            EXPECT_EQ(std::distance(fs::directory_iterator(folder.scratch.Path()), {}), 1) << call;
            if (result == 0) break;
            ASSERT_LT(call, 200);
        }
    }
}

}  // namespace
}  // namespace norava

#endif
