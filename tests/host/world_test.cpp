#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "host/vst_host.h"

// The world that an instrument meets: hosts with habits of their own, machines that have run out of
// something.

namespace norava {
namespace {

namespace fs = std::filesystem;

struct Held {
    long kilobytes = 0;
    long numFiles = 0;
    long numThreads = 0;
};

long NumEntries(const char* folder) {
    return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
}

Held WhatTheProcessHolds() {
    long size = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    return {resident * sysconf(_SC_PAGESIZE) / 1024, NumEntries("/proc/self/fd"),
            NumEntries("/proc/self/task")};
}

TEST(World, IsLeftAsItWasByAThousandInstances) {
    const auto cycle = [](int number) {
        VstInstance instance(44100.0f);
        if (number % 10 == 0) {
            instance.Note(60);
            instance.LoadChunk(instance.Chunk());
            instance.Render(512);
        }
    };
    // The first ones fill what the process keeps for itself, such as the C library's arenas.
    for (int i = 0; i < 100; ++i)
        cycle(i);
    const Held before = WhatTheProcessHolds();
    for (int i = 0; i < 1000; ++i)
        cycle(i);
    const Held after = WhatTheProcessHolds();
#ifndef NORAVA_SANITIZED  // those checkers keep what was freed for a while
    EXPECT_LT(after.kilobytes - before.kilobytes, 1024);
#endif
    EXPECT_EQ(after.numFiles, before.numFiles);
    EXPECT_EQ(after.numThreads, before.numThreads);
}

// What needs no disk works: programs of the built-in bank, and sound.
void ExpectToPlay(const char* what) {
    VstInstance instance(44100.0f);
    instance.Send({{0, {0xB0, 32, 2}}, {0, {0xC0, 3, 0}}, {1, {0x90, 60, 100}}});
    EXPECT_GT(Peak(instance.Render(8000)), 0.0f) << what;
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
        EXPECT_TRUE(IsFinite(instance.Render(512)));
    }
    ExpectToPlay("a home that has gone");
    UseProgramFolder("empty");
}

#ifndef NORAVA_SANITIZED  // the checkers need file handles themselves
TEST(World, NeedsNoFileHandle) {
    UseProgramFolder("no-handles");
    VstModule::GetEntry();  // loading the module is the system's business
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

}  // namespace
}  // namespace norava
