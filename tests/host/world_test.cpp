#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>
#if defined(__SSE__)
#include <xmmintrin.h>
#endif

#include "host/vst_host.h"

// The process, the loader and the machine that an instrument meets. What belongs to them it leaves
// as it finds it, whatever it is.

namespace norava {
namespace {

namespace fs = std::filesystem;

TEST(ModuleEnvironment, KeepsSignalsLocaleAndFolder) {
    ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);  // "C" would hide a change to it
    const auto folder = fs::current_path();
    const auto signalHandlers = [] {
        std::vector<void (*)(int)> handlers;
        for (int number = 1; number < 32; ++number) {
            struct sigaction action {};
            sigaction(number, nullptr, &action);
            handlers.push_back(action.sa_handler);
        }
        return handlers;
    };
    const auto handlers = signalHandlers();
    {
        VstInstance instance(44100.0f);
        instance.SwitchEverythingOn();
        instance.Note(60);
        instance.Render(5000);
        instance.LoadChunk(instance.Chunk());
        for (int i = 0; i < VstInstance::kParams; ++i)
            instance.Text(vst::effGetParamDisplay, i, 32);
    }
    EXPECT_EQ(signalHandlers(), handlers);
    EXPECT_EQ(fs::current_path(), folder);
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C.UTF-8");
    std::setlocale(LC_ALL, "C");
}

// A signal that this thread does not take now is nobody's until it does.
TEST(ModuleEnvironment, LeavesSignalsToTheHostsThreads) {
    VstInstance instance;
    sigset_t signals, before, waiting;
    sigemptyset(&signals);
    sigaddset(&signals, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &signals, &before);
    auto* const handler = std::signal(SIGUSR1, [](int) {});
    kill(getpid(), SIGUSR1);
    usleep(100000);  // a thread that takes it has to wake first
    sigpending(&waiting);
    EXPECT_EQ(sigismember(&waiting, SIGUSR1), 1) << "a signal went to a thread of ours";
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    std::signal(SIGUSR1, handler);
}

#if defined(__SSE__)
TEST(ModuleEnvironment, KeepsTheFloatingPointMode) {
    const unsigned before = _mm_getcsr();
    std::vector<test::Stereo> sounds;
    for (const unsigned flushed : {0u, 0x8000u, 0x8040u}) {
        _mm_setcsr((before & ~0x8040u) | flushed);
        const unsigned host = _mm_getcsr();
        VstInstance instance(44100.0f);
        instance.Note(60);
        sounds.push_back(instance.Render(44100));
        EXPECT_EQ(_mm_getcsr(), host);
        EXPECT_TRUE(sounds.back() == sounds.front()) << "sounds otherwise in another mode";
    }
    _mm_setcsr(before);
}
#endif

long NumEntries(const char* folder) {
    return std::distance(fs::directory_iterator(folder), {});
}

// One of ten is played, and closed with a note that waits for a block.
void MakeAndClose(int number) {
    VstInstance instance(number % 3 == 0 ? 0.0f : 44100.0f);
    if (number % 10 != 0) return;
    for (const int state : {0, 0, 1, 1}) {
        instance.Dispatch(vst::effMainsChanged, 0, state);
        instance.Note(60);
        EXPECT_TRUE(instance.Render(512).IsFinite());
    }
    instance.LoadChunk(instance.Chunk());
    instance.Note(61);
}

TEST(ModuleLife, IsClosedAtAnyTimeAndLeavesNoFileOpen) {
    const auto openFiles = [] { return NumEntries("/proc/self/fd"); };
    const auto before = openFiles();
    for (const int number : {0, 1, 10})
        MakeAndClose(number);
    EXPECT_EQ(openFiles(), before);
}

TEST(World, IsLeftAsItWasByAThousandInstances) {
    const auto kilobytes = [] {
        long size = 0, resident = 0;
        std::ifstream("/proc/self/statm") >> size >> resident;
        return resident * sysconf(_SC_PAGESIZE) / 1024;
    };
    // The first ones fill what the process keeps for itself, such as the C library's arenas.
    for (int i = 0; i < 100; ++i)
        MakeAndClose(i);
    [[maybe_unused]] const long filled = kilobytes();
    const long numThreads = NumEntries("/proc/self/task");
    const long numFiles = NumEntries("/proc/self/fd");
    for (int i = 0; i < 1000; ++i)
        MakeAndClose(i);
    EXPECT_EQ(NumEntries("/proc/self/task"), numThreads);
    EXPECT_EQ(NumEntries("/proc/self/fd"), numFiles);
#ifndef NORAVA_SANITIZED  // those checkers keep what was freed for a while
    EXPECT_LT(kilobytes() - filled, 1024);
#endif
}

// What needs no disk works: programs of the built-in bank, and sound.
void ExpectToPlay(const char* what) {
    VstInstance instance(44100.0f);
    instance.Send({{0, {0xB0, 32, 2}}, {0, {0xC0, 3, 0}}, {1, {0x90, 60, 100}}});
    EXPECT_GT(instance.Render(8000).Peak(), 0.0f) << what;
    EXPECT_NE(instance.ProgramName(), "") << what;
}

TEST(World, NeedsNoHome) {
    setenv("XDG_DATA_HOME", "/dev/null/nowhere", 1);
    ExpectToPlay("a home that cannot be");
    const fs::path root = UseProgramFolder("vanishing");
    VstInstance instance(44100.0f);
    fs::remove_all(root.parent_path());
    for (unsigned char i = 0; i < 20; ++i) {
        instance.Send({{0, {0xB0, 32, i}}, {5, {0xC0, i, 0}}, {9, {0x90, 60, 100}}});
        EXPECT_TRUE(instance.Render(512).IsFinite());
    }
    ExpectToPlay("a home that has gone");
    UseProgramFolder("empty");
}

#ifndef NORAVA_SANITIZED  // the checkers need file handles themselves
TEST(World, NeedsNoFileHandle) {
    UseProgramFolder("no-handles");
    { VstInstance loaded; }  // which is the system's business
    rlimit usual{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &usual), 0);
    const rlimit none{0, usual.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    ExpectToPlay("no file handle left");
    EXPECT_EQ(VstInstance().Dispatch(vst::effEditOpen), 0) << "no panel without a display";
    setrlimit(RLIMIT_NOFILE, &usual);
    ExpectToPlay("handles again");
    UseProgramFolder("empty");
}
#endif

std::string Output(const std::string& command) {
    std::string output;
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::array<char, 4096> piece;
    while (pipe != nullptr && std::fgets(piece.data(), piece.size(), pipe.get()) != nullptr)
        output += piece.data();
    return output;
}

const std::string kModule = NORAVA_MODULE_PATH;

TEST(ModuleFile, ShowsItsEntryAndNothingElse) {
    EXPECT_EQ(Output("nm -D --defined-only --format=posix " + kModule + " | cut -d' ' -f1,2"),
              "VSTPluginMain T\n");
}

TEST(ModuleFile, NeedsNothingButTheCLibraryAndNoPatches) {
    const std::string needed = "readelf -d " + kModule + " | grep NEEDED";
    EXPECT_NE(Output(needed), "");
#ifndef NORAVA_SANITIZED
    // The loader belongs to the C library: it hands out thread-local memory.
    EXPECT_EQ(Output(needed + " | grep -vE '.(libc.so.6|libm.so.6|ld-linux-.*)]'"), "");
#endif
    EXPECT_EQ(Output("readelf -d " + kModule + " | grep -E 'TEXTREL|RPATH|RUNPATH'"), "");
    EXPECT_NE(Output("readelf -lW " + kModule + " | grep 'GNU_STACK.* RW '"), "");
}

}  // namespace
}  // namespace norava
