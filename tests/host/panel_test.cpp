#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <csignal>
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
    bool Open() {
        return instance->Dispatch(vst::effEditOpen, 0, 0,
                                  reinterpret_cast<void*>(std::uintptr_t{parent})) == 1;
    }
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

    test::Server server{{"-screen", "0", "1024x768x24"}};
    std::unique_ptr<test::Desktop> desktop;
    std::unique_ptr<VstInstance> instance;
    xcb_window_t parent = 0;
};

TEST_F(PanelTest, OpensInTheHostsWindowAndReportsEdits) {
    EXPECT_NE(instance->effect->flags & vst::effFlagsHasEditor, 0);
    vst::ERect* rect = nullptr;
    ASSERT_EQ(instance->Dispatch(vst::effEditGetRect, 0, 0, static_cast<void*>(&rect)), 1);
    EXPECT_EQ(rect->right, 855);
    EXPECT_EQ(rect->bottom, 532);
    ASSERT_TRUE(Show());

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
}

#ifndef NORAVA_SANITIZED
TEST_F(PanelTest, IsNothingThatSoundWaitsFor) {
    ASSERT_TRUE(Show());
    std::vector<float> left(256), right(256);
    for (int block = 0; block < 50; ++block) {
        instance->Note(24 + block);
        CallWatch watch;
        instance->Process(left.data(), right.data(), 256);
        instance->Set(kHiCutCutoff, static_cast<float>(block) / 50.0f);
        const CallReport report = watch.Stop();
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
    std::atomic<bool> done = false;
    std::thread audio([&] {
        for (int i = 0; !done; ++i) {
            if (i % 20 == 0) instance->Note(60 + i / 20 % 12);
            instance->Render(256, 256);
        }
    });
    int rounds = 0;
    EXPECT_TRUE(Idle([&] { return ++rounds > 60 && desktop->Picture({0, 0, 855, 532}) != still; }));
    done = true;
    audio.join();
}

TEST_F(PanelTest, PanelsOfSeveralInstancesKeepApart) {
    const auto knob = [this](int top) { return desktop->Picture({84, top + 105, 47, 42}); };
    ASSERT_TRUE(Open());
    VstInstance other;
    const xcb_window_t below = desktop->MakeWindow({0, 540, 855, 220});
    ASSERT_EQ(
        other.Dispatch(vst::effEditOpen, 0, 0, reinterpret_cast<void*>(std::uintptr_t{below})), 1);
    const auto idleUntil = [&](const auto& condition) {
        return Idle([&] {
            other.Dispatch(vst::effEditIdle);
            return condition();
        });
    };
    ASSERT_TRUE(idleUntil([&] { return IsShown() && knob(0) == knob(540); }));
    const auto before = knob(0);
    other.Set(kHiCutCutoff, 0.9f);
    EXPECT_TRUE(idleUntil([&] { return knob(540) != before; }));
    EXPECT_EQ(knob(0), before);
}

TEST_F(PanelTest, SurvivesWhatHostsDoToItsWindow) {
    const auto brokenPipeHandler = [] {
        struct sigaction action;
        sigaction(SIGPIPE, nullptr, &action);
        return action.sa_handler;
    };
    auto* const before = brokenPipeHandler();
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(Open()) << i;
        instance->Dispatch(vst::effEditIdle);
        instance->Note(60);
        instance->Render(512);
        if (i % 2) instance->Dispatch(vst::effEditClose);  // else it is moved by the next opening
    }
    ASSERT_TRUE(Open());
    xcb_destroy_window(desktop->raw, parent);
    desktop->Synchronise();
    for (int i = 0; i < 5; ++i)
        instance->Dispatch(vst::effEditIdle);
    instance->Dispatch(vst::effEditClose);
    parent = desktop->MakeWindow({0, 0, 1000, 700});
    ASSERT_TRUE(Open());
    server.Kill();
    for (int i = 0; i < 5; ++i)
        instance->Dispatch(vst::effEditIdle);
    EXPECT_FALSE(Open());
    instance->Note(64);
    EXPECT_TRUE(IsFinite(instance->Render(4800)));
    instance.reset();  // effClose with whatever is left of the panel
    EXPECT_EQ(brokenPipeHandler(), before) << "the signal of a lost server is the host's";
}

}  // namespace
}  // namespace norava
