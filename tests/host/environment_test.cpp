#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#if defined(__SSE__)
#include <xmmintrin.h>
#endif

#include <array>
#include <clocale>
#include <cstring>
#include <string>
#include <vector>

#include "host/vst_host.h"
#include "parameters/parameter_index.h"

// What belongs to the process is the host's: the instrument leaves it as it finds it, whatever it
// is.

namespace norava {
namespace {

using namespace param;

void PlayEverything() {
    VstInstance instance;
    instance.Start(44100.0f);
    for (const int switched : {kDelayOn, kChorusOn, kReverbOn})
        instance.Set(switched, 1.0f);
    for (int note = 24; note < 108; note += 5)
        instance.Note(note);
    instance.Render(5000);
    instance.LoadChunk(instance.Chunk());
    for (int i = 0; i < VstInstance::kParams; ++i)
        instance.Text(vst::effGetParamDisplay, i, 32);
    instance.Dispatch(vst::effMainsChanged, 0, 0);
}

std::vector<struct sigaction> SignalHandlers() {
    std::vector<struct sigaction> handlers;
    for (int number = 1; number < 32; ++number) {
        struct sigaction action;
        std::memset(&action, 0, sizeof(action));
        sigaction(number, nullptr, &action);
        handlers.push_back(action);
    }
    return handlers;
}

TEST(ModuleEnvironment, KeepsSignalsLocaleAndFolder) {
    ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);  // "C" would hide a change to it
    std::array<char, 4096> folder;
    ASSERT_NE(getcwd(folder.data(), folder.size()), nullptr);
    const auto handlers = SignalHandlers();
    PlayEverything();
    const auto handlersAfter = SignalHandlers();
    for (std::size_t i = 0; i < handlers.size(); ++i)
        EXPECT_EQ(std::memcmp(&handlers[i].sa_handler, &handlersAfter[i].sa_handler,
                              sizeof(handlers[i].sa_handler)),
                  0)
            << "signal " << i + 1;
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C.UTF-8");
    std::setlocale(LC_ALL, "C");
    std::array<char, 4096> folderAfter;
    ASSERT_NE(getcwd(folderAfter.data(), folderAfter.size()), nullptr);
    EXPECT_STREQ(folder.data(), folderAfter.data());
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
    sigpending(&waiting);
    EXPECT_EQ(sigismember(&waiting, SIGUSR1), 1) << "a signal went to a thread of ours";
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    std::signal(SIGUSR1, handler);
}

#if defined(__SSE__)
TEST(ModuleEnvironment, KeepsTheFloatingPointMode) {
    const unsigned before = _mm_getcsr();
    for (const unsigned flushed : {0u, 0x8000u, 0x8040u}) {
        VstInstance instance;
        instance.Start(44100.0f);
        instance.Note(60);
        std::array<float, 512> sound;
        _mm_setcsr((before & ~0x8040u) | flushed);
        const unsigned host = _mm_getcsr();
        instance.Process(sound.data(), sound.data(), 512);
        EXPECT_EQ(_mm_getcsr(), host);
    }
    _mm_setcsr(before);
}

TEST(ModuleEnvironment, SoundsTheSameInAnyFloatingPointMode) {
    const auto play = [] {
        VstInstance instance;
        instance.Start(44100.0f);
        instance.Note(60);
        return instance.Render(44100).left;
    };
    const std::vector<float> plain = play();
    const unsigned before = _mm_getcsr();
    _mm_setcsr(before | 0x8040);
    const std::vector<float> flushed = play();
    _mm_setcsr(before);
    EXPECT_TRUE(SameBits(plain, flushed));
}
#endif

TEST(ModuleEnvironment, WritesPointsInEveryLocale) {
    VstInstance instance;
    std::vector<std::string> texts;
    for (int i = 0; i < VstInstance::kParams; ++i)
        texts.push_back(instance.Text(vst::effGetParamDisplay, i, 32));
    for (const char* locale : {"de_DE.UTF-8", "fr_FR.UTF-8", "C.UTF-8"}) {
        if (std::setlocale(LC_ALL, locale) == nullptr) continue;  // not installed here
        VstInstance other;
        for (int i = 0; i < VstInstance::kParams; ++i) {
            EXPECT_EQ(other.Text(vst::effGetParamDisplay, i, 32),
                      texts[static_cast<std::size_t>(i)]);
        }
    }
    std::setlocale(LC_ALL, "C");
}

}  // namespace
}  // namespace norava
