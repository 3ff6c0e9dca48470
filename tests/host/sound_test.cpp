#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <thread>
#include <vector>

#include "host/vst_host.h"
#include "parameters/parameter_index.h"

namespace norava {
namespace {

using namespace param;

using Stereo = VstInstance::Stereo;

Stereo Joined(Stereo a, const Stereo& b) {
    a.left.insert(a.left.end(), b.left.begin(), b.left.end());
    a.right.insert(a.right.end(), b.right.begin(), b.right.end());
    return a;
}

void ExpectSame(const Stereo& a, const Stereo& b) {
    EXPECT_TRUE(SameBits(a.left, b.left));
    EXPECT_TRUE(SameBits(a.right, b.right));
}

TEST(ModuleSound, IsSilentUntilANoteAndSoundsAfterIt) {
    VstInstance instance;
    instance.Start(44100.0f);
    EXPECT_EQ(Peak(instance.Render(4096).left), 0.0f);
    instance.Note(60, 100, 200);
    const Stereo sound = instance.Render(512);
    for (std::size_t i = 0; i < 200; ++i)
        ASSERT_EQ(sound.left[i], 0.0f) << i;
    EXPECT_GT(Peak(sound.left), 1e-4f);
    EXPECT_GT(Peak(instance.Render(4096).right), 1e-3f);
}

TEST(ModuleSound, IsCutAtEventsAsIfTheHostHadCutIt) {
    VstInstance whole;
    VstInstance cut;
    whole.Start(44100.0f);
    cut.Start(44100.0f);
    whole.Send(
        {{0, {0x90, 60, 100}}, {40, {0x90, 64, 90}}, {40, {0xB0, 7, 80}}, {1000, {0x80, 60, 0}}});
    cut.Note(60, 100);
    Stereo pieces = cut.Render(40);
    cut.Send({{0, {0x90, 64, 90}}, {0, {0xB0, 7, 80}}});
    pieces = Joined(pieces, cut.Render(960));
    cut.Send({{0, {0x80, 60, 0}}});
    pieces = Joined(pieces, cut.Render(1000));
    ExpectSame(whole.Render(2000, 2000), pieces);
}

TEST(ModuleSound, TakesEventsAtTheBlocksBorders) {
    VstInstance plain;
    VstInstance borders;
    plain.Start(48000.0f);
    borders.Start(48000.0f);
    plain.Render(64, 64);
    borders.Send({{64, {0x90, 72, 100}}, {65, {0x90, 30, 100}}});  // the second one is lost
    borders.Render(64, 64);
    plain.Note(72, 100, 0);
    ExpectSame(plain.Render(500, 100), borders.Render(500, 100));

    VstInstance early;
    VstInstance late;
    early.Start(48000.0f);
    late.Start(48000.0f);
    early.Note(50, 100, -300);
    late.Note(50, 100, 0);
    late.Process(nullptr, nullptr, 0);  // an empty block takes it
    ExpectSame(early.Render(500), late.Render(500));
}

TEST(ModuleSound, WorksInBlocksOfEverySize) {
    VstInstance instance;
    instance.Start(44100.0f);
    constexpr std::size_t kLargest = 8192;
    constexpr float kUntouched = 12345.0f;
    // One float off, because hosts cut their buffers anywhere.
    std::vector<float> left(kLargest + 2);
    std::vector<float> right(kLargest + 2);
    for (std::size_t frames = 0; frames <= kLargest; ++frames) {
        if (frames % 1000 == 0) instance.Note(48 + static_cast<int>(frames / 1000));
        std::fill_n(left.begin(), frames + 1, NAN);  // what is not written is no number
        std::fill_n(right.begin(), frames + 1, NAN);
        left[0] = left[frames + 1] = right[0] = right[frames + 1] = kUntouched;
        instance.Process(left.data() + 1, right.data() + 1, static_cast<int>(frames));
        ASSERT_EQ(left[0], kUntouched);
        ASSERT_EQ(right[0], kUntouched);
        ASSERT_EQ(left[frames + 1], kUntouched) << frames;
        ASSERT_EQ(right[frames + 1], kUntouched) << frames;
        for (std::size_t i = 1; i <= frames; ++i)
            ASSERT_TRUE(std::isfinite(left[i]) && std::isfinite(right[i])) << frames;
    }
    EXPECT_GT(Peak(left), 0.0f);
    instance.effect->processReplacing(instance.effect, nullptr, nullptr, -1);
}

// Frequency of the shortest repetition that is nearly as good as the best one, between 60 and
// 1000 Hz; the peak of the correlation is found between the lags by a parabola.
double PitchHz(const std::vector<float>& sound, double rate) {
    const auto shortest = static_cast<std::size_t>(rate / 1000.0);
    const auto longest = static_cast<std::size_t>(rate / 60.0);
    std::vector<double> match(longest + 2);
    for (std::size_t lag = shortest; lag < match.size(); ++lag) {
        for (std::size_t i = 0; i + match.size() < sound.size(); ++i)
            match[lag] += static_cast<double>(sound[i]) * sound[i + lag];
    }
    const double best = *std::max_element(match.begin(), match.end());
    for (std::size_t lag = shortest + 1; lag <= longest; ++lag) {
        const double before = match[lag - 1];
        const double here = match[lag];
        const double after = match[lag + 1];
        if (here < 0.8 * best || here < before || here < after) continue;
        const double offset = 0.5 * (before - after) / (before - 2.0 * here + after);
        return rate / (static_cast<double>(lag) + offset);
    }
    return 0.0;
}

TEST(ModuleSound, KeepsItsPitchAtEveryRate) {
    for (const float rate : {8000.0f, 11025.0f, 22050.0f, 44100.0f, 48000.0f, 88200.0f, 96000.0f,
                             176400.0f, 192000.0f, 384000.0f}) {
        VstInstance instance;
        instance.Start(rate);
        instance.Note(57);  // 220 Hz
        instance.Render(static_cast<int>(rate * 0.2f));
        const Stereo sound = instance.Render(static_cast<int>(rate * 0.1f), 256);
        EXPECT_TRUE(IsFinite(sound));
        EXPECT_NEAR(PitchHz(sound.left, rate), 220.0, 2.0) << rate;
    }
}

TEST(ModuleSound, SurvivesRatesThatAreNone) {
    VstInstance instance;
    for (const float rate : {0.0f, -44100.0f, std::nanf(""), INFINITY, 1.0f, 1e30f, 44100.0f}) {
        instance.Start(rate);
        instance.Set(kReverbOn, 1.0f);
        instance.Note(60);
        const Stereo sound = instance.Render(2000);
        EXPECT_TRUE(IsFinite(sound)) << rate;
        EXPECT_GT(Peak(sound.left), 0.0f) << rate;
    }
}

TEST(ModuleSound, EndsAtSuspendAndResume) {
    for (const int state : {0, 1}) {
        VstInstance instance;
        instance.Start(44100.0f);
        for (const int switched : {kDelayOn, kChorusOn, kReverbOn})
            instance.Set(switched, 1.0f);
        instance.Note(60);
        EXPECT_GT(Peak(instance.Render(8000).left), 0.0f);
        if (state == 0) instance.Note(61);  // for a block that does not come any more
        instance.Dispatch(vst::effMainsChanged, 0, state);
        // The reverb idles on an offset of 1e-20.
        EXPECT_LT(Peak(instance.Render(20000).left), 1e-18f);
    }
}

TEST(ModuleSound, IsAddedByTheAccumulatingCall) {
    VstInstance adding;
    VstInstance replacing;
    adding.Start(44100.0f);
    replacing.Start(44100.0f);
    adding.Note(60);
    replacing.Note(60);
    Stereo sum{std::vector<float>(1000, 0.25f), std::vector<float>(1000, -0.5f)};
    float* outputs[2] = {sum.left.data(), sum.right.data()};
    adding.effect->process(adding.effect, nullptr, outputs, 1000);
    const Stereo sound = replacing.Render(1000, 1000);
    for (std::size_t i = 0; i < 1000; ++i) {
        ASSERT_EQ(sum.left[i], 0.25f + sound.left[i]);
        ASSERT_EQ(sum.right[i], -0.5f + sound.right[i]);
    }
}

TEST(ModuleSound, GoesOnWhenNobodyTakesAChannel) {
    VstInstance deaf;
    VstInstance hearing;
    for (VstInstance* instance : {&deaf, &hearing}) {
        instance->Start(44100.0f);
        instance->Note(60);
    }
    std::vector<float> right(512);
    deaf.Process(nullptr, right.data(), 512);
    EXPECT_TRUE(SameBits(right, hearing.Render(512).right));
    deaf.effect->processReplacing(deaf.effect, nullptr, nullptr, 512);
    float* none[2] = {nullptr, nullptr};
    float* inputs[1] = {nullptr};
    deaf.effect->process(deaf.effect, inputs, none, 512);
    hearing.Render(1024);
    ExpectSame(deaf.Render(512), hearing.Render(512));
}

Stereo PlayATune(float rate) {
    VstInstance instance;
    instance.Start(rate);
    for (const int switched : {kDelayOn, kChorusOn, kReverbOn})
        instance.Set(switched, 1.0f);
    instance.Set(kNoiseLevel, 0.5f);  // the first sound has none, whoever draws it
    Stereo sound;
    for (int i = 0; i < 60; ++i) {
        instance.Send({{i, {0x90, static_cast<unsigned char>(40 + i % 37), 100}},
                       {100 + i, {0x80, static_cast<unsigned char>(40 + i % 29), 0}}});
        sound = Joined(sound, instance.Render(1000, 250));
    }
    return sound;
}

TEST(ModuleSound, IsTheSameBesideAnotherInstance) {
    const Stereo aloneLow = PlayATune(44100.0f);
    const Stereo aloneHigh = PlayATune(96000.0f);
    EXPECT_GT(Peak(aloneLow.left), 1e-3f);
    Stereo low;
    Stereo high;
    std::thread other([&] { high = PlayATune(96000.0f); });
    low = PlayATune(44100.0f);
    other.join();
    ExpectSame(low, aloneLow);
    ExpectSame(high, aloneHigh);
}

TEST(ModuleSound, IgnoresTemposThatAreNone) {
    VstInstance instance;
    instance.Start(44100.0f);
    instance.Set(kDelayOn, 1.0f);
    instance.Set(kDelayTempo, 3.0f);
    instance.time.flags = vst::kVstTempoValid | vst::kVstPpqPosValid | vst::kVstTransportChanged;
    for (const double value : {120.0, 0.0, -0.0, -90.0, static_cast<double>(NAN),
                               static_cast<double>(INFINITY), 1e-300, 1e300}) {
        instance.time.tempo = value;
        instance.time.ppqPos = value;
        instance.Note(60);
        EXPECT_TRUE(IsFinite(instance.Render(4000))) << value;
    }
}

}  // namespace
}  // namespace norava
