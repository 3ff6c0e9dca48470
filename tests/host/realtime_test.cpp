#ifndef NORAVA_SANITIZED

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include "host/call_watch.h"
#include "host/vst_host.h"
#include "parameters/parameter_index.h"

// Nothing inside the host's processing and event calls may wait for anything.

namespace norava {
namespace {

using namespace param;

void ExpectQuiet(const CallReport& report, const char* what) {
    EXPECT_EQ(report.memoryCalls, 0) << what;
    EXPECT_EQ(report.lockCalls, 0) << what;
    EXPECT_EQ(report.systemCalls, 0) << what << ": system call " << report.firstSystemCall;
}

TEST(CallWatch, SeesWhatItIsMadeFor) {
    {
        CallWatch watch;
        // Volatile: a compiler may leave out memory that nobody uses.
        int* volatile memory = new int(1);
        delete memory;
        EXPECT_EQ(watch.Stop().memoryCalls, 2);
    }
    {
        std::mutex mutex;
        CallWatch watch;
        mutex.lock();
        mutex.unlock();
        const CallReport report = watch.Stop();
        EXPECT_EQ(report.lockCalls, 1);
        EXPECT_EQ(report.memoryCalls, 0);
    }
    {
        CallWatch watch;
        const pid_t parent = getppid();
        const CallReport report = watch.Stop();
        if (!report.systemCallsSeen) GTEST_SKIP() << "this kernel does not report system calls";
        EXPECT_EQ(report.systemCalls, 1);
        EXPECT_EQ(report.firstSystemCall, SYS_getppid);
        EXPECT_EQ(parent, getppid());
    }
    {
        // The module's calls too: making an instance takes memory. Loading the module first is the
        // system's business.
        VstModule::GetEntry();
        CallWatch watch;
        { VstInstance instance; }
        EXPECT_GT(watch.Stop().memoryCalls, 10);
    }
}

// One host block: prepared events, parameter changes between blocks as automation makes them,
// sound.
class RealtimeHost {
  public:
    explicit RealtimeHost(float rate) { instance.Start(rate); }

    void Queue(int position, int status, int data1, int data2) {
        vst::VstMidiEvent& event = records[static_cast<std::size_t>(numQueued)];
        event = {};
        event.type = vst::kVstMidiType;
        event.deltaFrames = position;
        event.midiData[0] = static_cast<unsigned char>(status);
        event.midiData[1] = static_cast<unsigned char>(data1);
        event.midiData[2] = static_cast<unsigned char>(data2);
        list.events[numQueued++] = reinterpret_cast<vst::VstEvent*>(&event);
    }
    CallReport Block(int frames) {
        list.numEvents = numQueued;
        numQueued = 0;
        CallWatch watch;
        instance.effect->dispatcher(instance.effect, vst::effProcessEvents, 0, 0, &list, 0.0f);
        instance.Process(left.data(), right.data(), frames);
        float* outputs[2] = {left.data(), right.data()};
        instance.effect->process(instance.effect, nullptr, outputs, frames);
        return watch.Stop();
    }

    VstInstance instance;

  private:
    static constexpr std::size_t kMost = 4096;
    struct {
        vst::i32 numEvents = 0;
        vst::iptr reserved = 0;
        vst::VstEvent* events[kMost];
    } list;
    std::vector<vst::VstMidiEvent> records = std::vector<vst::VstMidiEvent>(kMost);
    int numQueued = 0;
    std::vector<float> left = std::vector<float>(2048);
    std::vector<float> right = std::vector<float>(2048);
};

TEST(ModuleRealtime, WaitsForNothingWhilePlaying) {
    for (const float rate : {44100.0f, 48000.0f, 192000.0f}) {
        RealtimeHost host(rate);
        ExpectQuiet(host.Block(64), "the first block");
        for (const int switched : {kDelayOn, kChorusOn, kReverbOn})
            host.instance.Set(switched, 1.0f);
        ExpectQuiet(host.Block(64), "effects switched on");
        for (int band = 0; band < kResonatorBands; ++band)
            host.instance.Set(kResonatorOn + band, 1.0f);
        ExpectQuiet(host.Block(0), "an empty block");
        for (int note = 0; note < 128; ++note)
            host.Queue(note / 2, 0x90, note, 100);
        ExpectQuiet(host.Block(64), "all keys started");
        for (int note = 0; note < 128; ++note)
            host.Queue(63, 0x90, note, 100);
        ExpectQuiet(host.Block(2048), "all keys started again");
        for (int i = 0; i < 4096; ++i)
            host.Queue(i % 64, 0x80 + 16 * (i % 7), i % 128, (i / 7) % 128);
        ExpectQuiet(host.Block(64), "as many events as the pool holds, of every kind");
        for (int i = 0; i < VstInstance::kParams; ++i)
            host.instance.Set(i, 0.9f);
        ExpectQuiet(host.Block(512), "every parameter changed");
        host.Queue(0, 0xB0, 32, 1);
        host.Queue(10, 0xC0, 5, 0);
        ExpectQuiet(host.Block(512), "program change");
        for (int block = 0; block < 200; ++block)
            ExpectQuiet(host.Block(512), "keys dying away");
    }
}

// A page that the system has yet to hand out is a visit to it at the first touch, however it was
// asked for.
TEST(ModuleRealtime, TakesNoNewPagesWhilePlaying) {
    const auto pagesTaken = [] {
        rusage usage{};
        getrusage(RUSAGE_THREAD, &usage);
        return usage.ru_minflt;
    };
    RealtimeHost host(96000.0f);
    for (const int switched : {kDelayOn, kChorusOn, kReverbOn})
        host.instance.Set(switched, 1.0f);
    for (int band = 0; band < kResonatorBands; ++band)
        host.instance.Set(kResonatorOn + band, 1.0f);
    // The first notes bring in the code that plays them.
    host.Queue(0, 0x90, 60, 100);
    host.Block(2048);
    host.Queue(0, 0x90, 60, 100);
    host.Block(2048);
    const long before = pagesTaken();
    for (int block = 0; block < 120; ++block) {
        host.Queue(0, 0x90, 24 + block % 84, 100);
        host.Block(2048);
    }
    constexpr long kOfTheMachinesOwn = 16;
    EXPECT_LE(pagesTaken() - before, kOfTheMachinesOwn) << "pages first touched while playing";
}

TEST(ModuleRealtime, WaitsForNothingWhenAutomated) {
    VstInstance instance;
    instance.Start(44100.0f);
    CallWatch watch;
    for (int i = 0; i < VstInstance::kParams; ++i)
        instance.Set(i, 0.5f);
    ExpectQuiet(watch.Stop(), "parameters set from the audio thread");
}

TEST(ModuleRealtime, WaitsForNothingAfterALoadedState) {
    RealtimeHost host(44100.0f);
    host.Queue(0, 0x90, 60, 100);
    host.Block(512);
    std::vector<char> chunk = host.instance.Chunk();
    host.instance.LoadChunk(chunk);
    ExpectQuiet(host.Block(512), "a state loaded");
    host.instance.Dispatch(vst::effMainsChanged, 0, 0);
    host.instance.Dispatch(vst::effMainsChanged, 0, 1);
    ExpectQuiet(host.Block(512), "resumed");
    // Numbers that run away and the guard that silences them.
    for (const float value : {1e30f, -1e30f}) {
        for (int i = 0; i < VstInstance::kParams; ++i)
            host.instance.Set(i, value);
        for (int note = 24; note < 108; ++note)
            host.Queue(0, 0x90, note, 127);
        for (int block = 0; block < 20; ++block)
            ExpectQuiet(host.Block(512), "everything at its limits");
    }
}

TEST(ModuleRealtime, WaitsForNothingWhileOthersLoadSaveAndLook) {
    RealtimeHost host(48000.0f);
    const std::vector<char> one = host.instance.Chunk();
    host.instance.Set(kReverbOn, 1.0f);
    std::vector<char> other = host.instance.Chunk();
    std::atomic<bool> done = false;
    std::thread owner([&] {
        for (int i = 0; !done; ++i) {
            std::array<char, 64> text;
            host.instance.LoadChunk(i % 2 == 0 ? one : other);
            host.instance.Dispatch(vst::effGetProgramName, 0, 0, text.data());
            host.instance.Dispatch(vst::effGetParamDisplay, i % VstInstance::kParams, 0,
                                   text.data());
            other = host.instance.Chunk();
            host.instance.automated.clear();
        }
    });
    for (int block = 0; block < 400; ++block) {
        host.Queue(0, 0x90, 24 + block % 84, 100);
        for (int controller = 0; controller < 128; ++controller)
            host.Queue(block % 32, 0xB0, controller, (block + controller) % 128);
        ExpectQuiet(host.Block(128), "another thread loads, saves and shows");
    }
    done = true;
    owner.join();
}

}  // namespace
}  // namespace norava

#endif
