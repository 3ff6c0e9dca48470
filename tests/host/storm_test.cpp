#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <thread>
#include <vector>

#include "gui/x11_server.h"
#include "host/vst_host.h"

// Everything that a session does, at once: two instances play on two threads while others automate,
// load and save states, put program files into the library and take them away, and a user who
// cannot sit still works both panels. The thread checker is who looks on. NORAVA_STORM_SECONDS
// tells for how long.

namespace norava {
namespace {

namespace fs = std::filesystem;

class Storm : public testing::Test {
  protected:
    void SetUp() override {
        if (!server.IsRunning()) GTEST_SKIP() << "Xvfb is not installed";
        desktop = std::make_unique<test::Desktop>();
        root = UseProgramFolder("storm");
        for (std::size_t i = 0; i < instances.size(); ++i) {
            instances[i] =
                std::make_unique<VstInstance>(44100.0f + 4000.0f * static_cast<float>(i));
            instances[i]->forgetsReports = true;
            parents[i] = desktop->MakeWindow({300 * static_cast<int>(i), 0, 855, 532});
        }
    }
    void TearDown() override {
        for (auto& instance : instances)
            instance.reset();
        UseProgramFolder("empty");
    }

    template <typename Step>
    void Run(Step step) {
        threads.emplace_back([this, step] {
            for (int i = 0; !done; ++i)
                step(i);
        });
    }
    void Play(VstInstance& instance, int i) {
        const auto number = static_cast<unsigned char>(i % 128);
        instance.Send({{i % 64, {0xB0, 32, static_cast<unsigned char>(i % 5)}},
                       {i % 64, {0xC0, number, 0}},
                       {0, {0x90, number, 100}},
                       {40, {0xB0, number, number}}});
        if (!IsFinite(instance.Render(256, 256))) ++numBroken;
    }
    static void SaveAndLoad(VstInstance& instance, int i) {
        instance.LoadChunk(instance.Chunk());
        instance.Text(vst::effGetParamDisplay, i % VstInstance::kParams, 32);
        instance.SetProgramName(instance.ProgramName() + std::to_string(i % 10));
    }
    void MoveFiles(int i) {
        const std::string category = root + "/Category " + std::to_string(i % 5);
        const std::string file = category + "/" + std::to_string(i % 11) + ".norava";
        std::error_code ignored;
        fs::create_directories(category, ignored);
        std::ofstream(file, std::ios::binary).write(state.data(), VstInstance::kChunkSize);
        if (i % 3 == 0) fs::rename(file, category + "/renamed.norava", ignored);
        if (i % 17 == 0) fs::remove_all(category, ignored);
        usleep(2000);
    }
    void WorkPanels(int i) {
        const auto below = [&](int end) { return std::uniform_int_distribution(0, end - 1)(user); };
        if (i % 50 == 0) {
            for (std::size_t n = 0; n < instances.size(); ++n) {
                if (i % 200 == 0) instances[n]->Dispatch(vst::effEditClose);
                instances[n]->Dispatch(vst::effEditOpen, 0, 0,
                                       reinterpret_cast<void*>(std::uintptr_t{parents[n]}));
            }
        }
        desktop->MoveMouse({below(1000), below(532)});
        if (i % 3 == 0) desktop->Click(static_cast<uint8_t>(1 + below(5)));
        if (i % 7 == 0) desktop->Type(kEscape);
        for (auto& instance : instances)
            instance->Dispatch(vst::effEditIdle);
    }

    static constexpr xcb_keysym_t kEscape = 0xff1b;

    test::Server server{{"-screen", "0", "1280x768x24"}};
    std::unique_ptr<test::Desktop> desktop;
    std::array<std::unique_ptr<VstInstance>, 2> instances;
    std::array<xcb_window_t, 2> parents{};
    std::string root;
    std::vector<char> state;
    std::vector<std::thread> threads;
    std::atomic<bool> done = false;
    std::atomic<int> numBroken = 0;
    std::mt19937 user{1};
};

TEST_F(Storm, EverythingAtOnce) {
    const char* const seconds = std::getenv("NORAVA_STORM_SECONDS");
    const auto end = std::chrono::steady_clock::now() +
                     std::chrono::seconds(seconds != nullptr ? std::stoi(seconds) : 2);
    state = instances[0]->Chunk();
    for (auto& instance : instances) {
        VstInstance& one = *instance;
        Run([this, &one](int i) { Play(one, i); });
        Run([&one](int i) {
            one.Set(i % VstInstance::kParams, static_cast<float>(i % 11) / 10.0f);
        });
        Run([&one](int i) { SaveAndLoad(one, i); });
    }
    Run([this](int i) { MoveFiles(i); });
    for (int i = 0; std::chrono::steady_clock::now() < end; ++i)
        WorkPanels(i);
    done = true;
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(numBroken, 0);
}

}  // namespace
}  // namespace norava
