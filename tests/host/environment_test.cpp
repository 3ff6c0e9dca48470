#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#if defined(__SSE__)
#include <xmmintrin.h>
#endif

#include <clocale>
#include <filesystem>
#include <vector>

#include "host/vst_host.h"

// What belongs to the process is the host's: the instrument leaves it as it finds it, whatever it
// is.

namespace norava {
namespace {

std::vector<void (*)(int)> SignalHandlers() {
    std::vector<void (*)(int)> handlers;
    for (int number = 1; number < 32; ++number) {
        struct sigaction action {};
        sigaction(number, nullptr, &action);
        handlers.push_back(action.sa_handler);
    }
    return handlers;
}

TEST(ModuleEnvironment, KeepsSignalsLocaleAndFolder) {
    ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);  // "C" would hide a change to it
    const auto folder = std::filesystem::current_path();
    const auto handlers = SignalHandlers();
    {
        VstInstance instance(44100.0f);
        instance.SwitchEffectsOn();
        instance.Note(60);
        instance.Render(5000);
        instance.LoadChunk(instance.Chunk());
        for (int i = 0; i < VstInstance::kParams; ++i)
            instance.Text(vst::effGetParamDisplay, i, 32);
    }
    EXPECT_EQ(SignalHandlers(), handlers);
    EXPECT_EQ(std::filesystem::current_path(), folder);
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
    sigpending(&waiting);
    EXPECT_EQ(sigismember(&waiting, SIGUSR1), 1) << "a signal went to a thread of ours";
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    std::signal(SIGUSR1, handler);
}

#if defined(__SSE__)
TEST(ModuleEnvironment, KeepsTheFloatingPointMode) {
    const unsigned before = _mm_getcsr();
    std::vector<VstInstance::Stereo> sounds;
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

}  // namespace
}  // namespace norava
