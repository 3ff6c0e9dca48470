#include "render/render_song.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "apps/midi_bytes.h"
#include "files/scratch_folder.h"
#include "framework/plugin_instance.h"
#include "framework/plugin_renderer.h"
#include "parameters/parameter_index.h"
#include "render/bad_input.h"
#include "render/instrument.h"
#include "render/tail.h"

namespace norava {
namespace {

using namespace test;
using namespace param;

constexpr int kChannels = 2;

struct Audio {
    SF_INFO info{};
    std::vector<float> samples;  // interleaved
};

float PeakOf(std::span<const float> samples) {
    float peak = 0.0f;
    for (const float sample : samples)
        peak = std::max(peak, std::fabs(sample));
    return peak;
}

class RenderSongTest : public testing::Test {
  protected:
    RenderResult Render(const Bytes& song, const std::string& name = "") {
        const auto output = name.empty() ? std::filesystem::path() : folder_ / name;
        if (!name.empty()) settings_.format.container = ContainerOf(output);
        settings_.format.sampleRateHz = settings_.sampleRateHz;
        return RenderSong(
            folder_.Write("song.mid", song), output, settings_, [](double) {}, interrupted_);
    }
    void Set(int index, float value) { settings_.sound.settings.push_back({index, value}); }
    std::string HashOf(const Bytes& song) {
        settings_.hash = true;
        return Render(song).hash;
    }
    Audio Load(const std::string& name) {
        Audio audio;
        const std::unique_ptr<SNDFILE, decltype(&sf_close)> file(
            sf_open(folder_.Path(name).c_str(), SFM_READ, &audio.info), sf_close);
        audio.samples.resize(std::size_t(audio.info.frames) * kChannels);
        if (file) sf_readf_float(file.get(), audio.samples.data(), audio.info.frames);
        return audio;
    }

    ScratchFolder folder_;
    RenderSettings settings_;
    std::atomic<bool> interrupted_ = false;
};

TEST_F(RenderSongTest, EveryKindOfFileHoldsTheSongAtItsRateAndLength) {
    const struct {
        const char* name;
        SampleFormat samples;
        int rateHz;
        int format;
    } cases[] = {
        {"a.wav", SampleFormat::int24, 48000, SF_FORMAT_WAV | SF_FORMAT_PCM_24},
        {"b.wav", SampleFormat::float32, 8000, SF_FORMAT_WAV | SF_FORMAT_FLOAT},
        {"c.flac", SampleFormat::int16, 44100, SF_FORMAT_FLAC | SF_FORMAT_PCM_16},
        {"d.ogg", SampleFormat::compressed, 44100, SF_FORMAT_OGG | SF_FORMAT_VORBIS},
    };
    for (const auto& [name, samples, rateHz, format] : cases) {
        settings_.sampleRateHz = rateHz;
        settings_.format.samples = samples;
        settings_.tailSeconds = 0.25;
        Render(ScaleFile({60, 64}), name);
        const Audio audio = Load(name);
        EXPECT_EQ(audio.info.format, format) << name;
        EXPECT_EQ(audio.info.samplerate, rateHz) << name;
        EXPECT_EQ(audio.info.frames, sf_count_t(rateHz * 1.75)) << name;
        // Half a second of rest comes before the first note.
        const auto rest = std::size_t(rateHz) / 2 * kChannels;
        EXPECT_LT(PeakOf(std::span(audio.samples).first(rest - 1000)), 1e-4f) << name;
        EXPECT_GT(PeakOf(std::span(audio.samples).subspan(rest, rest / 5)), 0.05f) << name;
    }
}

TEST_F(RenderSongTest, ReachesTheLoudnessAskedForAsFarAsThePeakAllows) {
    // Every string at once, at full force.
    Bytes chord;
    for (std::uint8_t key = 40; key < 60; ++key)
        chord = chord + Bytes{0, 0x90, key, 127};
    const Bytes song = OneTrackFile(chord + Bytes{96, 0xB0, 1, 0});
    const RenderResult clipping = Render(song, "a.wav");
    EXPECT_LT(clipping.gainDecibels, -6.0);
    EXPECT_NEAR(clipping.peak, 1.0, 1e-6);
    const auto isFull = [](float sample) { return std::fabs(sample) > 0.9999f; };
    EXPECT_LT(std::ranges::count_if(Load("a.wav").samples, isFull), 5);

    settings_.loudnessTarget = -30.0;
    const RenderResult quiet = Render(song, "a.wav");
    EXPECT_NEAR(quiet.loudness, -30.0, 1e-6);
    EXPECT_NEAR(PeakOf(Load("a.wav").samples), quiet.peak, 1e-4);
    EXPECT_EQ(Render(OneTrackFile({96, 0xB0, 1, 0}), "silence.wav").peak, 0.0);

    settings_.loudnessTarget.reset();
    settings_.format.samples = SampleFormat::float32;
    EXPECT_EQ(Render(song, "b.wav").gainDecibels, 0.0);
    EXPECT_GT(PeakOf(Load("b.wav").samples), 2.0f);
}

TEST_F(RenderSongTest, TheHashIsOfTheSoundAndOfNothingElse) {
    const Bytes song = ScaleFile({60, 67});
    const std::string hash = HashOf(song);
    EXPECT_EQ(hash.size(), 64u);
    settings_.loudnessTarget = -20.0;
    EXPECT_EQ(Render(song, "a.ogg").hash, hash);
    // Program numbers and banks of the song are left alone.
    const Bytes choose = {0, 0xB0, 32, 3, 0, 0xC0, 5};
    EXPECT_EQ(HashOf(Header(1, 2) + Track(choose) + Bytes(song.begin() + 14, song.end())), hash);
    EXPECT_NE(HashOf(ScaleFile({60, 68})), hash);
    Set(kString1Decay, 0.5f);
    EXPECT_NE(HashOf(song), hash);
}

TEST_F(RenderSongTest, AStateAndSettingsGiveTheSameSoundAndSettingsWin) {
    const Bytes song = ScaleFile({60});
    const auto renderer = GetPluginInstance()->CreateRenderer();
    renderer->SetParamValue(kString1Decay, 0.7f);
    std::vector<char> state(std::size_t(renderer->SaveState(nullptr)));
    renderer->SaveState(state.data());
    const auto hashOf = [&](const Sound& sound) {
        settings_.sound = sound;
        return HashOf(song);
    };
    EXPECT_EQ(hashOf({state, {}}), hashOf({{}, {{kString1Decay, 0.7f}}}));
    EXPECT_EQ(hashOf({state, {{kString1Decay, 1.0f}}}), hashOf({}));
    EXPECT_NE(hashOf({state, {}}), hashOf({}));
}

TEST_F(RenderSongTest, TheTempoReachesTheEchoes) {
    Set(kDelayOn, 1.0f);
    Set(kDelayTempo, 4.0f);  // echoes a quarter apart
    const Bytes notes = {0, 0x90, 60, 100, 24, 0x80, 60, 0, 96, 0xB0, 1, 0};
    const std::string at120 = HashOf(OneTrackFile(notes));
    EXPECT_EQ(HashOf(OneTrackFile(Bytes{0, 0xFF, 0x51, 3, 0x07, 0xA1, 0x20} + notes)), at120);
    // The same notes at the same seconds: half as many ticks at half the tempo.
    const Bytes slow = {0,   0xFF, 0x51, 3,  0x0F, 0x42, 0x40, 0, 0x90, 60,
                        100, 12,   0x80, 60, 0,    48,   0xB0, 1, 0};
    EXPECT_NE(HashOf(OneTrackFile(slow)), at120);
}

TEST_F(RenderSongTest, AFailureLeavesTheOldFileAndNothingElse) {
    folder_.Write("a.wav", "old");
    interrupted_ = true;
    EXPECT_THROW(Render(ScaleFile({60}), "a.wav"), BadInput);
    EXPECT_EQ(folder_.Read("a.wav"), "old");
    interrupted_ = false;
    Render(ScaleFile({60}), "a.wav");
    EXPECT_GT(folder_.Read("a.wav").size(), 1000u);
    EXPECT_EQ(folder_.Names().size(), 2u);
}

TEST(Tail, EndsWhereTheLastSoundEnded) {
    struct Part {
        double seconds;
        float level;
    };
    const struct {
        std::optional<double> tailSeconds;
        std::vector<Part> parts;
        double keptSeconds;
        bool cutShort;
    } cases[] = {
        {0.25, {{1.0, 0.0f}}, 0.25, false},  // to the frame
        // The second part is the gap before an echo.
        {std::nullopt, {{1.0, 0.5f}, {2.0, 1e-6f}, {1.0, -0.01f}, {3.0, 0.0f}}, 4.0, false},
        {std::nullopt, {{100.0, 0.5f}}, 60.0, true},  // a minute at most
    };
    for (const auto& [tailSeconds, parts, keptSeconds, cutShort] : cases) {
        Tail tail(tailSeconds, 1000.0);
        std::vector<float> kept;
        bool more = true;
        for (const auto& [seconds, level] : parts) {
            const std::vector<float> block(200, level);  // a tenth of a second
            for (int i = 0; i < int(seconds * 10.0 + 0.5) && more; ++i)
                more = tail.Take(block, kept);
        }
        EXPECT_FALSE(more);
        EXPECT_DOUBLE_EQ(double(kept.size()) / 2.0 / 1000.0, keptSeconds);
        EXPECT_EQ(tail.IsCutShort(), cutShort);
    }
}

}  // namespace
}  // namespace norava
