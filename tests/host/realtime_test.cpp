#ifndef NORAVA_SANITIZED

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "host/call_watch.h"
#include "host/vst_host.h"

// Nothing inside the host's processing and event calls may wait for anything.

namespace norava {
namespace {

using Message = VstInstance::Message;

void ExpectQuiet(const CallReport& report, const char* what) {
    EXPECT_EQ(report.memoryCalls, 0) << what;
    EXPECT_EQ(report.lockCalls, 0) << what;
    EXPECT_EQ(report.systemCalls, 0) << what << ": system call " << report.firstSystemCall;
}

// One host block, as hosts of both kinds ask for it.
CallReport Block(VstInstance& instance, int frames, const std::vector<Message>& messages = {}) {
    std::vector<float> left(static_cast<std::size_t>(frames));
    std::vector<float> right(left.size());
    float* outputs[2] = {left.data(), right.data()};
    instance.Prepare(messages);
    return WatchCalls([&] {
        instance.Deliver();
        instance.Process(left.data(), right.data(), frames);
        instance.effect->process(instance.effect, nullptr, outputs, frames);
    });
}

Message Note(int note, int position = 0) {
    return {position, {0x90, static_cast<unsigned char>(note), 100}};
}

std::vector<Message> AllKeys() {
    std::vector<Message> messages;
    for (int note = 0; note < 128; ++note)
        messages.push_back(Note(note, note / 2));
    return messages;
}

TEST(ModuleRealtime, WaitsForNothingWhilePlaying) {
    for (const float rate : {44100.0f, 48000.0f, 192000.0f}) {
        VstInstance instance(rate);
        ExpectQuiet(Block(instance, 64), "the first block");
        instance.SwitchEverythingOn();
        ExpectQuiet(Block(instance, 0), "effects switched on in an empty block");
        ExpectQuiet(Block(instance, 64, AllKeys()), "all keys started");
        ExpectQuiet(Block(instance, 2048, AllKeys()), "all keys started again");
        std::vector<Message> messages;
        for (int i = 0; i < 4096; ++i) {
            messages.push_back(
                {i % 64,
                 {static_cast<unsigned char>(0x80 + 16 * (i % 7)),
                  static_cast<unsigned char>(i % 128), static_cast<unsigned char>(i / 7 % 128)}});
        }
        ExpectQuiet(Block(instance, 64, messages), "as many events as the pool holds");
        const auto setAll = [&](float value) {
            const auto set = [&] {
                for (int i = 0; i < VstInstance::kParams; ++i)
                    instance.Set(i, value);
            };
            ExpectQuiet(WatchCalls(set), "parameters set from the audio thread");
        };
        setAll(0.9f);
        ExpectQuiet(Block(instance, 512), "every parameter changed");
        ExpectQuiet(Block(instance, 512, {{0, {0xB0, 32, 1}}, {10, {0xC0, 5, 0}}}),
                    "program change");
        for (int block = 0; block < 200; ++block)
            ExpectQuiet(Block(instance, 512), "keys dying away");

        instance.LoadChunk(instance.Chunk());
        ExpectQuiet(Block(instance, 512, AllKeys()), "a state loaded");
        instance.Dispatch(vst::effMainsChanged, 0, 0);
        instance.Dispatch(vst::effMainsChanged, 0, 1);
        ExpectQuiet(Block(instance, 512), "resumed");
        // Numbers that run away and the guard that silences them.
        for (const float value : {1e30f, -1e30f}) {
            setAll(value);
            for (int block = 0; block < 20; ++block)
                ExpectQuiet(Block(instance, 512, AllKeys()), "everything at its limits");
        }
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
    VstInstance instance(96000.0f);
    instance.SwitchEverythingOn();
    // The first notes bring in the code that plays them.
    Block(instance, 2048, {Note(60)});
    Block(instance, 2048, {Note(60)});
    const long before = pagesTaken();
    for (int block = 0; block < 120; ++block)
        Block(instance, 2048, {Note(24 + block % 84)});
    constexpr long kOfTheMachinesOwn = 16;
    EXPECT_LE(pagesTaken() - before, kOfTheMachinesOwn) << "pages first touched while playing";
}

void WriteProgram(const std::string& path, const std::vector<char>& bytes) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

TEST(ModulePrograms, ChangeWithoutWaitingWhileFilesComeAndGo) {
    const std::vector<char> plain = VstInstance().Chunk();
    const std::string root = UseProgramFolder("programs");
    for (int i = 0; i < 20; ++i) {
        for (const char* category : {"/Keys/", "/Pads/"})
            WriteProgram(root + category + std::to_string(i) + ".norava", plain);
    }
    VstInstance instance(48000.0f);
    EXPECT_EQ(instance.ProgramName(), "0") << "it starts with the first";
    instance.forgetsReports = true;
    const auto files = test::Repeatedly([&](int i) {
        const std::string path = root + "/Pads/new " + std::to_string(i % 7) + ".norava";
        WriteProgram(path, plain);
        std::filesystem::rename(path, root + "/Keys/moved.norava");
        std::filesystem::remove(root + "/Keys/moved.norava");
        WriteProgram(root + "/A new one/first.norava", plain);
        std::filesystem::rename(root + "/A new one", root + "/Renamed");
        std::filesystem::remove_all(root + "/Renamed");
    });
    const auto owner = test::Repeatedly([&, other = plain](int i) mutable {
        instance.LoadChunk(i % 2 == 0 ? plain : other);
        instance.ProgramName();
        instance.Text(vst::effGetParamDisplay, i % VstInstance::kParams, 32);
        other = instance.Chunk();
    });
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    for (int i = 0; std::chrono::steady_clock::now() < end; ++i) {
        std::vector<Message> messages = {Note(24 + i % 84, 10)};
        for (unsigned char controller = 0; controller < 128; ++controller)
            messages.push_back({64, {0xB0, controller, static_cast<unsigned char>(i % 3)}});
        messages.push_back({128, {0xC0, static_cast<unsigned char>(i % 20), 0}});
        ExpectQuiet(Block(instance, 256, messages),
                    "while files come and go and states are loaded");
    }
    UseProgramFolder("empty");
}

}  // namespace
}  // namespace norava

#endif
