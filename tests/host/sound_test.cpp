#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "host/vst_host.h"

namespace norava {
namespace {

using namespace param;
using test::Stereo;

void Append(Stereo& sound, const Stereo& next) {
    sound.left.insert(sound.left.end(), next.left.begin(), next.left.end());
    sound.right.insert(sound.right.end(), next.right.begin(), next.right.end());
}

TEST(ModuleSound, IsCutAtEventsAsIfTheHostHadCutIt) {
    VstInstance whole(44100.0f);
    VstInstance cut(44100.0f);
    whole.Send(
        {{0, {0x90, 60, 100}}, {40, {0x90, 64, 90}}, {40, {0xB0, 7, 80}}, {1000, {0x80, 60, 0}}});
    cut.Note(60);
    Stereo pieces = cut.Render(40);
    cut.Send({{0, {0x90, 64, 90}}, {0, {0xB0, 7, 80}}});
    Append(pieces, cut.Render(960));
    cut.Send({{0, {0x80, 60, 0}}});
    Append(pieces, cut.Render(1000));
    EXPECT_TRUE(whole.Render(2000, 2000) == pieces);
}

TEST(ModuleSound, TakesEventsAtTheBlocksBorders) {
    VstInstance plain(48000.0f);
    VstInstance borders(48000.0f);
    plain.Render(64);
    borders.Send({{64, {0x90, 72, 100}}, {65, {0x90, 30, 100}}});  // the second one is lost
    borders.Render(64);
    plain.Note(72);
    EXPECT_TRUE(plain.Render(500) == borders.Render(500));

    plain.Note(50, -300);
    borders.Note(50);
    borders.Process(nullptr, nullptr, 0);  // an empty block takes it
    EXPECT_TRUE(plain.Render(500) == borders.Render(500));
}

TEST(ModuleSound, PassesOverEventsOfOtherKinds) {
    VstInstance instance(44100.0f);
    vst::VstMidiEvent foreign{};
    foreign.type = 6;
    std::ranges::copy(std::array{0x90, 60, 100}, foreign.midiData);
    vst::VstEvents events{2, 0, {nullptr, reinterpret_cast<vst::VstEvent*>(&foreign)}};
    EXPECT_EQ(instance.Dispatch(vst::effProcessEvents, 0, 0, &events), 1);
    EXPECT_EQ(instance.Render(512).Peak(), 0.0f);
}

TEST(ModuleSound, WorksInBlocksOfEverySize) {
    VstInstance instance(44100.0f);
    constexpr float kUntouched = 12345.0f;
    std::array<std::vector<float>, 2> channels;
    for (std::size_t frames = 0; frames <= 8192; ++frames) {
        if (frames % 1000 == 0) instance.Note(48 + static_cast<int>(frames / 1000));
        for (std::vector<float>& channel : channels) {
            channel.assign(frames + 2, NAN);  // what is not written is no number
            channel.front() = channel.back() = kUntouched;
        }
        // One float off, because hosts cut their buffers anywhere.
        instance.Process(&channels[0][1], &channels[1][1], static_cast<int>(frames));
        for (const std::vector<float>& channel : channels) {
            ASSERT_EQ(channel[0], kUntouched);
            ASSERT_EQ(channel[frames + 1], kUntouched);
            ASSERT_TRUE(std::all_of(channel.begin() + 1, channel.end() - 1, [](float x) {
                return std::isfinite(x);
            })) << frames;
        }
    }
    instance.effect->processReplacing(instance.effect, nullptr, nullptr, -1);
}

TEST(ModuleSound, IsThatOfTheHostsLastRate) {
    VstInstance changed;
    for (const float rate : {8000.0f, 22050.0f, 44100.0f, 96000.0f, 384000.0f}) {
        for (const float said : {rate, 0.0f, -44100.0f, NAN})
            changed.Start(said);  // without suspending
        VstInstance fresh(rate);
        for (VstInstance* const instance : {&changed, &fresh})
            instance->Note(57);
        // In a block that is larger than was announced.
        EXPECT_TRUE(changed.Render(5000, 5000) == fresh.Render(5000)) << rate;
    }
}

TEST(ModuleSound, EndsAtSuspendAndResume) {
    for (const int state : {0, 1}) {
        VstInstance instance(44100.0f);
        instance.SwitchEverythingOn();
        instance.Note(60);
        EXPECT_GT(instance.Render(8000).Peak(), 0.0f);
        if (state == 0) instance.Note(61);  // for a block that does not come any more
        instance.Dispatch(vst::effMainsChanged, 0, state);
        // The reverb idles on an offset of 1e-20.
        EXPECT_LT(instance.Render(20000).Peak(), 1e-18f);
    }
}

TEST(ModuleSound, IsAddedByTheAccumulatingCall) {
    VstInstance adding(44100.0f);
    VstInstance replacing(44100.0f);
    adding.Note(60);
    replacing.Note(60);
    Stereo sum{std::vector<float>(1000, 0.25f), std::vector<float>(1000, 0.25f)};
    float* outputs[2] = {sum.left.data(), sum.right.data()};
    adding.effect->process(adding.effect, nullptr, outputs, 1000);
    Stereo sound = replacing.Render(1000, 1000);
    for (std::vector<float>* channel : {&sound.left, &sound.right}) {
        for (float& sample : *channel)
            sample = 0.25f + sample;
    }
    EXPECT_TRUE(sum == sound);
}

// Makes every `step`-th of so many instances, each with a sound of its own, and plays them in turn.
void Play(std::size_t first, std::size_t step, std::vector<Stereo>& sounds) {
    std::vector<std::unique_ptr<VstInstance>> instances(sounds.size());
    for (std::size_t i = first; i < instances.size(); i += step) {
        instances[i] = std::make_unique<VstInstance>(i % 3 == 0 ? 48000.0f : 44100.0f);
        instances[i]->SwitchEverythingOn();
        instances[i]->Set(kNoiseLevel, 0.5f);  // the first sound has none, whoever draws it
        instances[i]->Set(kDelayTime, 0.01f * static_cast<float>(i));
    }
    for (int block = 0; block < 16; ++block) {
        for (std::size_t i = first; i < instances.size(); i += step) {
            if (block % 4 == 0) instances[i]->Note(30 + static_cast<int>(i) + block, block);
            Append(sounds[i], instances[i]->Render(256));
        }
    }
}

TEST(ModuleSound, IsTheSameBesideOtherInstances) {
    std::vector<Stereo> alone(32);
    for (std::size_t i = 0; i < alone.size(); ++i)
        Play(i, alone.size(), alone);
    std::vector<Stereo> together(32);
    std::thread other(Play, 1, 2, std::ref(together));
    Play(0, 2, together);
    other.join();
    for (std::size_t i = 0; i < alone.size(); ++i) {
        EXPECT_GT(alone[i].Peak(), 1e-3f) << i;
        EXPECT_TRUE(together[i] == alone[i]) << i;
    }
}

}  // namespace
}  // namespace norava
