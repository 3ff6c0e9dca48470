#include <gtest/gtest.h>

#include <atomic>

#include "parameters/parameter_index.h"
#include "presets/program_folder.h"

// Programs that MIDI selects while audio runs.

namespace norava {
namespace {

using test::Block;
using test::LibrarySynth;
using test::NameOf;
using test::ProgramFolder;

constexpr int kNoteOn = 0x90;
constexpr int kController = 0xB0;
constexpr int kProgram = 0xC0;

// A state that sounds, different for each `tune`.
std::string Sounding(float tune) {
    test::NeedDefinition();
    CNoravaSynth synth;
    synth.SetParamValue(param::kTune, tune);
    synth.SetParamValue(param::kReverbOn, 1.0f);
    std::string block(kStateSize, '\0');
    synth.SaveState(block.data());
    return block;
}

TEST(ProgramChange, SoundsAsAFileLoadedThere) {
    const ProgramFolder folder;
    for (int i = 0; i < 8; ++i)
        folder.Write("A/" + std::to_string(i) + ".norava", Sounding(0.1f * static_cast<float>(i)));
    LibrarySynth byMidi(folder.Place());
    byMidi.Send(0, kNoteOn, 60, 100);
    byMidi.Send(1000, kProgram, 5);
    byMidi.Send(1000, kNoteOn, 67, 100);
    std::vector<float> played = byMidi.Render(4000);

    LibrarySynth byHand(folder.Place());
    byHand.Send(0, kNoteOn, 60, 100);
    std::vector<float> expected = byHand.Render(1000);
    ASSERT_TRUE(byHand.list.LoadProgramFromFile(folder.Path("A/5.norava").c_str()));
    byHand.Send(0, kNoteOn, 67, 100);
    const std::vector<float> rest = byHand.Render(3000);
    expected.insert(expected.end(), rest.begin(), rest.end());

    EXPECT_EQ(played, expected);
    EXPECT_EQ(NameOf(byMidi.synth), "5");
    EXPECT_EQ(byMidi.list.GetProgramPath(), folder.Path("A/5.norava"));
    EXPECT_EQ(byMidi.told, byHand.told) << "the host hears of the same parameters";
    EXPECT_EQ(byMidi.told.size(), 1u);

    byMidi.told.clear();
    byMidi.synth.SetParamValue(param::kTune, 0.9f);
    byMidi.Send(0, kProgram, 5);
    byMidi.Send(0, kProgram, 8);
    byMidi.Render(64);
    EXPECT_EQ(byMidi.Value(param::kTune), 0.9f) << "the current program and one that is not there";
    EXPECT_TRUE(byMidi.told.empty());
}

TEST(ProgramChange, FindsEveryCategoryByController32) {
    const ProgramFolder folder;
    for (int i = 0; i < 100; ++i) {
        const std::string category = std::to_string(i);
        folder.Write(category + "/first.norava", Block(static_cast<float>(i) / 128.0f));
        folder.Write(category + "/second.norava", Block(1.0f));
    }
    std::filesystem::create_directories(folder.Path("100"));
    LibrarySynth instance(folder.Place());
    for (int i = 127; i >= 0; --i) {
        instance.synth.SetParamValue(3, 0.9f);
        instance.Send(0, kController, 32, i);
        instance.Render(16);
        EXPECT_EQ(instance.list.GetCurrentCat(), std::min(i, 100) == i ? i : 0) << i;
        EXPECT_EQ(instance.Value(), i < 100 ? static_cast<float>(i) / 128.0f : 0.9f) << i;
    }
    instance.synth.SetParamValue(3, 0.9f);
    instance.Send(0, kController, 32, 0);
    instance.Render(16);
    EXPECT_EQ(instance.Value(), 0.0f) << "the current category loads its first program again";
}

TEST(ProgramChange, MovesOverFilesThatAreNoPrograms) {
    const ProgramFolder folder;
    folder.Write("A/0.norava", Block(0.5f));
    folder.Write("A/1.norava", "no program at all, whatever its name");
    folder.Write("A/2.norava", "short");
    LibrarySynth instance(folder.Place());
    for (int i = 1; i <= 2; ++i) {
        instance.Send(0, kProgram, i);
        instance.Render(64);
        EXPECT_EQ(instance.list.GetCurrentPrg(), i);
        EXPECT_EQ(instance.Value(), 0.5f);
        EXPECT_EQ(NameOf(instance.synth), "0");
    }
}

TEST(ProgramChange, MeetsEditsLoadsAndRefreshesOfOtherThreads) {
    const ProgramFolder folder;
    for (int i = 0; i < 10; ++i) {
        folder.Write("A/" + std::to_string(i) + ".norava", Block(0.1f));
        folder.Write("B/" + std::to_string(i) + ".norava", Block(0.2f));
    }
    LibrarySynth instance(folder.Place());
    instance.synth.SetWrapper(nullptr);
    std::atomic<bool> done = false;
    std::vector<std::thread> threads;
    const auto run = [&](auto step) {
        threads.emplace_back([&done, step] {
            for (int i = 0; !done; ++i)
                step(i);
        });
    };
    run([&](int i) { instance.synth.SetParamValue(3 + i % 50, 0.3f); });
    run([&](int i) {
        const std::string path = folder.Path("A/" + std::to_string(i % 10) + ".norava");
        EXPECT_TRUE(instance.list.LoadProgramFromFile(path.c_str()));
        instance.list.GetProgramName();
    });
    run([&](int i) {
        folder.Write("B/new" + std::to_string(i % 3) + ".norava", Block(0.2f));
        instance.list.SetCurrentCat(i % 2);
        instance.list.CreatePrgList();
        std::filesystem::remove(folder.Path("B/new" + std::to_string((i + 1) % 3) + ".norava"));
    });
    run([&](int) { LibrarySynth passing(folder.Place()); });
    for (int block = 0; block < 400; ++block) {
        instance.Send(0, kNoteOn, 40 + block % 40, 100);
        instance.Send(block % 32, kController, 32, block / 7 % 2);
        instance.Send(block % 64, kProgram, block % 11);
        for (const float sample : instance.Render(64))
            ASSERT_TRUE(std::isfinite(sample));
    }
    done = true;
    for (std::thread& thread : threads)
        thread.join();
}

}  // namespace
}  // namespace norava
