#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <thread>

#include "gui/x11_server.h"
#include "host/call_watch.h"
#include "host/vst_host.h"

namespace norava {
namespace {

constexpr int kHiCutCutoff = 29;
constexpr CPoint kOnCutoff{107, 126};

// A host with a window on a display of its own.
class PanelTest : public testing::Test {
  protected:
    void SetUp() override {
        if (!server.IsRunning()) GTEST_SKIP() << "Xvfb is not installed";
        desktop = std::make_unique<test::Desktop>();
        instance = std::make_unique<VstInstance>(48000.0f);
        parent = desktop->MakeWindow({0, 0, 1000, 700});
    }
    static bool Open(VstInstance& one, xcb_window_t window) {
        return one.Dispatch(vst::effEditOpen, 0, 0,
                            reinterpret_cast<void*>(std::uintptr_t{window})) == 1;
    }
    bool Open() { return Open(*instance, parent); }
    template <typename Condition>
    bool Idle(const Condition& until) {
        for (int i = 0; i < 400 && !until(); ++i) {
            instance->Dispatch(vst::effEditIdle);
            usleep(5000);
        }
        return until();
    }
    // Whether the panel is in its place on the screen: more colours than a plain surface has.
    bool IsShown() {
        const auto words = desktop->Picture({0, 0, 855, 532});
        return std::set<uint32_t>(words.begin(), words.end()).size() > 1000;
    }
    bool Show() {
        return Open() && Idle([this] { return IsShown(); });
    }

    test::Server server{"-screen 0 1280x768x24"};
    std::unique_ptr<test::Desktop> desktop;
    std::unique_ptr<VstInstance> instance;
    xcb_window_t parent = 0;
};

TEST_F(PanelTest, OpensInTheHostsWindowAndReportsEdits) {
    vst::ERect* rect = nullptr;
    ASSERT_EQ(instance->Dispatch(vst::effEditGetRect, 0, 0, static_cast<void*>(&rect)), 1);
    EXPECT_EQ(rect->right, 855);
    EXPECT_EQ(rect->bottom, 532);
    ASSERT_TRUE(Show());
    VstInstance other;
    ASSERT_TRUE(Open(other, desktop->MakeWindow({0, 540, 855, 220})));
    const auto knob = [&](int top) { return desktop->Picture({84, top + 105, 47, 42}); };
    const auto still = knob(0);
    const auto isAlone = [&](bool moved) {
        other.Dispatch(vst::effEditIdle);
        return knob(540) == still && (knob(0) != still) == moved;
    };
    ASSERT_TRUE(Idle([&] { return isAlone(false); }));

    const float before = instance->Get(kHiCutCutoff);
    desktop->MoveMouse(kOnCutoff);
    desktop->Press();
    Idle([&] { return !instance->edits.empty(); });
    for (int i = 0; i < 8; ++i) {
        desktop->MoveMouseBy({0, before < 0.5f ? -5 : 5});
        for (int n = 0; n < 3; ++n)
            instance->Dispatch(vst::effEditIdle);
    }
    desktop->Release();
    ASSERT_TRUE(Idle([&] { return instance->edits.size() == 2; }));
    EXPECT_EQ(instance->edits[0], std::pair(kHiCutCutoff, true));
    EXPECT_EQ(instance->edits[1], std::pair(kHiCutCutoff, false));
    ASSERT_FALSE(instance->automated.empty());
    EXPECT_EQ(instance->automated.back(), std::pair(kHiCutCutoff, instance->Get(kHiCutCutoff)));
    EXPECT_NE(instance->Get(kHiCutCutoff), before);
    EXPECT_EQ(desktop->WhereIsMouse(), kOnCutoff) << "the pointer comes back";
    EXPECT_TRUE(Idle([&] { return isAlone(true); })) << "another instance's panel is its own";
}

#ifndef NORAVA_SANITIZED
TEST_F(PanelTest, IsNothingThatSoundWaitsFor) {
    ASSERT_TRUE(Show());
    std::vector<float> left(256), right(256);
    for (int block = 0; block < 50; ++block) {
        instance->Note(24 + block);
        const CallReport report = WatchCalls([&] {
            instance->Process(left.data(), right.data(), 256);
            instance->Set(kHiCutCutoff, static_cast<float>(block) / 50.0f);
        });
        EXPECT_EQ(report.memoryCalls + report.lockCalls + report.systemCalls, 0);
        instance->Dispatch(vst::effEditIdle);
    }
    instance->Dispatch(vst::effEditClose);
}
#endif

// Nothing else goes on, because every other word between the two threads would hide from the thread
// checker that one of these is shared without care.
TEST_F(PanelTest, MovesItsStringsWhileSoundIsMade) {
    ASSERT_TRUE(Show());
    const auto still = desktop->Picture({0, 0, 855, 532});
    const auto audio = test::Repeatedly([&](int i) {
        if (i % 20 == 0) instance->Note(60 + i / 20 % 12);
        instance->Render(256, 256);
    });
    int rounds = 0;
    EXPECT_TRUE(Idle([&] { return ++rounds > 60 && desktop->Picture({0, 0, 855, 532}) != still; }));
}

TEST_F(PanelTest, SurvivesWhatHostsDoToItsWindow) {
    auto* const before = std::signal(SIGPIPE, SIG_DFL);
    const auto idle = [&] {
        for (int i = 0; i < 5; ++i)
            instance->Dispatch(vst::effEditIdle);
    };
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(Open()) << i;
        idle();
        if (i % 2) instance->Dispatch(vst::effEditClose);  // else it is moved by the next opening
    }
    ASSERT_TRUE(Open());
    xcb_destroy_window(desktop->raw, parent);
    desktop->Synchronise();
    idle();
    instance->Dispatch(vst::effEditClose);
    parent = desktop->MakeWindow({0, 0, 1000, 700});
    ASSERT_TRUE(Open());
    server.Kill();
    idle();
    EXPECT_FALSE(Open());
    instance->Note(64);
    EXPECT_TRUE(instance->Render(4800).IsFinite());
    instance.reset();  // effClose with whatever is left of the panel
    EXPECT_EQ(std::signal(SIGPIPE, before), SIG_DFL) << "the signal of a lost server is the host's";
}

using Storm = PanelTest;

// Everything that a session does: two instances play on two threads while others automate, load and
// save states, put program files into the library and take them away, and a user who cannot sit
// still works both panels. The thread checker is who looks on. NORAVA_STORM_SECONDS tells for how
// long.
TEST_F(Storm, EverythingAtOnce) {
    namespace fs = std::filesystem;
    const std::string root = UseProgramFolder("storm");
    instance = std::make_unique<VstInstance>(48000.0f);
    constexpr xcb_keysym_t kEscape = 0xff1b;
    VstInstance other(44100.0f);
    const xcb_window_t windows[] = {parent, desktop->MakeWindow({300, 0, 855, 532})};
    VstInstance* const instances[] = {instance.get(), &other};
    const std::vector<char> state = other.Chunk();
    std::vector<std::jthread> threads;
    const auto run = [&](auto step) { threads.push_back(test::Repeatedly(step)); };
    for (VstInstance* const one : instances) {
        one->forgetsReports = true;
        run([one](int i) {
            const auto number = static_cast<unsigned char>(i % 128);
            one->Send({{i % 64, {0xB0, 32, static_cast<unsigned char>(i % 5)}},
                       {i % 64, {0xC0, number, 0}},
                       {0, {0x90, number, 100}},
                       {40, {0xB0, number, number}}});
            ASSERT_TRUE(one->Render(256).IsFinite());
        });
        run([one](int i) {
            one->Set(i % VstInstance::kParams, static_cast<float>(i % 11) / 10.0f);
        });
        run([one](int i) {
            one->LoadChunk(one->Chunk());
            one->Text(vst::effGetParamDisplay, i % VstInstance::kParams, 32);
            one->SetProgramName(one->ProgramName() + std::to_string(i % 10));
        });
    }
    run([&](int i) {
        const std::string category = root + "/Category " + std::to_string(i % 5);
        const std::string file = category + "/" + std::to_string(i % 11) + ".norava";
        std::error_code ignored;
        fs::create_directories(category, ignored);
        std::ofstream(file, std::ios::binary).write(state.data(), VstInstance::kChunkSize);
        if (i % 3 == 0) fs::rename(file, category + "/renamed.norava", ignored);
        if (i % 17 == 0) fs::remove_all(category, ignored);
        usleep(2000);
    });
    std::mt19937 user(1);
    const auto below = [&](int end) { return std::uniform_int_distribution(0, end - 1)(user); };
    const char* const seconds = std::getenv("NORAVA_STORM_SECONDS");
    const auto end = std::chrono::steady_clock::now() +
                     std::chrono::seconds(seconds != nullptr ? std::stoi(seconds) : 2);
    for (int i = 0; std::chrono::steady_clock::now() < end; ++i) {
        for (std::size_t n = 0; n < 2; ++n) {
            if (i % 200 == 0) instances[n]->Dispatch(vst::effEditClose);
            if (i % 50 == 0) Open(*instances[n], windows[n]);
            instances[n]->Dispatch(vst::effEditIdle);
        }
        desktop->MoveMouse({below(1000), below(532)});
        if (i % 3 == 0) desktop->Click(static_cast<uint8_t>(1 + below(5)));
        if (i % 7 == 0) desktop->Type(kEscape);
    }
    threads.clear();
    UseProgramFolder("empty");
}

}  // namespace
}  // namespace norava
