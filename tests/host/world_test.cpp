#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "host/vst_host.h"
#include "parameters/parameter_index.h"

// The world that an instrument meets: hosts with habits of their own, machines that have run out of
// something.

namespace norava {
namespace {

namespace fs = std::filesystem;
using namespace param;

void Brighten(VstInstance& instance, int number) {
    for (const int switched : {kDelayOn, kChorusOn, kReverbOn})
        instance.Set(switched, 1.0f);
    instance.Set(kStringMix, static_cast<float>(number) / 31.0f);
    instance.Set(kDelayTime, 0.05f + static_cast<float>(number) / 100.0f);
}

TEST(World, HasThirtyTwoInstancesThatDoNotHearEachOther) {
    constexpr int kInstances = 32;
    constexpr int kBlocks = 40;
    constexpr int kFrames = 256;
    const auto play = [](VstInstance& instance, int number, int block) {
        if (block % 8 == 0) instance.Note(30 + number + block, 100, block);
        return instance.Render(kFrames, kFrames);
    };
    std::vector<std::unique_ptr<VstInstance>> instances;
    std::vector<std::vector<float>> together(kInstances);
    for (int i = 0; i < kInstances; ++i) {
        instances.push_back(std::make_unique<VstInstance>());
        instances.back()->Start(i % 2 == 0 ? 48000.0f : 44100.0f);
        Brighten(*instances.back(), i);
    }
    for (int block = 0; block < kBlocks; ++block) {
        for (int i = 0; i < kInstances; ++i) {
            const auto n = static_cast<std::size_t>(i);
            const auto sound = play(*instances[n], i, block);
            together[n].insert(together[n].end(), sound.left.begin(), sound.left.end());
        }
    }
    instances.clear();
    for (int i = 0; i < kInstances; ++i) {
        VstInstance alone;
        alone.Start(i % 2 == 0 ? 48000.0f : 44100.0f);
        Brighten(alone, i);
        std::vector<float> sound;
        for (int block = 0; block < kBlocks; ++block) {
            const auto part = play(alone, i, block);
            sound.insert(sound.end(), part.left.begin(), part.left.end());
        }
        EXPECT_TRUE(SameBits(sound, together[static_cast<std::size_t>(i)])) << i;
        EXPECT_GT(Peak(sound), 0.0f);
    }
}

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
        VstInstance instance;
        instance.Start(44100.0f);
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

// Sets a variable of the environment for a while; null takes it away.
class Environment {
  public:
    Environment(const char* variable, const char* value) : name(variable) {
        const char* const before = std::getenv(variable);
        if (before != nullptr) old = std::make_unique<std::string>(before);
        Put(value);
    }
    ~Environment() { Put(old != nullptr ? old->c_str() : nullptr); }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

  private:
    void Put(const char* value) {
        if (value != nullptr)
            setenv(name, value, 1);
        else
            unsetenv(name);
    }
    const char* name;
    std::unique_ptr<std::string> old;
};

// Everything that needs no disk works: programs of the built-in bank, sound, the project's state.
void ExpectToPlay(const char* what) {
    VstInstance instance;
    instance.Start(44100.0f);
    instance.Send({{0, {0xB0, 32, 2}}, {0, {0xC0, 3, 0}}, {1, {0x90, 60, 100}}});
    EXPECT_GT(Peak(instance.Render(8000).left), 0.0f) << what;
    EXPECT_STRNE(instance.Text(vst::effGetProgramName, 0, 24).c_str(), "") << what;
    const auto chunk = instance.Chunk();
    VstInstance other;
    EXPECT_EQ(other.LoadChunk(chunk), VstInstance::kChunkSize) << what;
    EXPECT_EQ(other.Chunk(), chunk) << what;
}

TEST(World, NeedsNoHome) {
    {
        const Environment home("HOME", nullptr);
        const Environment data("XDG_DATA_HOME", "/dev/null/nowhere");
        ExpectToPlay("a home that cannot be");
    }
    {
        const std::string root = UseProgramFolder("vanishing");
        VstInstance instance;
        instance.Start(44100.0f);
        fs::remove_all(fs::path(root).parent_path());
        for (int i = 0; i < 20; ++i) {
            instance.Send({{0, {0xB0, 32, static_cast<unsigned char>(i)}},
                           {5, {0xC0, static_cast<unsigned char>(i), 0}},
                           {9, {0x90, 60, 100}}});
            EXPECT_TRUE(IsFinite(instance.Render(512)));
        }
        ExpectToPlay("a home that has gone");
        fs::remove_all(fs::path(root).parent_path());
    }
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
    {
        VstInstance instance;
        EXPECT_EQ(instance.Dispatch(vst::effEditOpen), 0) << "no panel without a display";
        instance.Dispatch(vst::effEditIdle);
        instance.Dispatch(vst::effEditClose);
    }
    setrlimit(RLIMIT_NOFILE, &usual);
    ExpectToPlay("handles again");
    UseProgramFolder("empty");
}
#endif

TEST(World, HasHostsThatChangeTheirMind) {
    VstInstance instance;
    instance.Start(44100.0f);
    Brighten(instance, 7);
    instance.Dispatch(vst::effSetBlockSize, 0, 64);
    float peak = 0.0f;
    const int sizes[] = {0, 64, 1, 5000, 0, 20000, 63};
    for (const float rate : {44100.0f, 96000.0f, 22050.0f, 192000.0f, 48000.0f}) {
        // Without suspending, while notes sound, and with blocks that were not announced.
        instance.Dispatch(vst::effSetSampleRate, 0, 0, nullptr, rate);
        for (const int frames : sizes) {
            instance.Note(40 + frames % 40, 100, frames / 2);
            const auto sound = instance.Render(frames, std::max(frames, 1));
            ASSERT_TRUE(IsFinite(sound));
            peak = std::max(peak, Peak(sound.left));
        }
        EXPECT_GT(peak, 0.0f) << rate;
        peak = 0.0f;
    }
}

}  // namespace
}  // namespace norava
