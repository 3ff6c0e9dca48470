#include "render/render_song.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <memory>

#include "apps/midi_bytes.h"
#include "files/scratch_folder.h"
#include "framework/plugin_instance.h"
#include "framework/plugin_renderer.h"
#include "parameters/parameter_index.h"
#include "render/bad_input.h"
#include "render/instrument.h"

namespace norava {
namespace {

using namespace test;
using namespace param;

constexpr int kChannels = 2;
const std::atomic<bool> kNotInterrupted = false;

struct Audio {
    SF_INFO info{};
    std::vector<float> samples;  // interleaved
};

Audio Load(const std::filesystem::path& path) {
    Audio audio;
    const std::unique_ptr<SNDFILE, decltype(&sf_close)> file(
        sf_open(path.c_str(), SFM_READ, &audio.info), sf_close);
    if (!file) return audio;
    audio.samples.resize(std::size_t(audio.info.frames) * kChannels);
    sf_readf_float(file.get(), audio.samples.data(), audio.info.frames);
    return audio;
}

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
            folder_.Write("song.mid", song), output, settings_, [](double) {}, kNotInterrupted);
    }
    void Set(int index, float value) { settings_.sound.settings.push_back({index, value}); }
    std::string HashOf(const Bytes& song) {
        settings_.hash = true;
        return Render(song).hash;
    }

    ScratchFolder folder_;
    RenderSettings settings_;
};

TEST_F(RenderSongTest, EveryKindOfFileHoldsTheSongAtItsRateAndLength) {
    struct Case {
        const char* name;
        SampleFormat samples;
        int rateHz;
        int format;
    };
    for (const Case& c :
         {Case{"a.wav", SampleFormat::int24, 48000, SF_FORMAT_WAV | SF_FORMAT_PCM_24},
          Case{"b.wav", SampleFormat::float32, 8000, SF_FORMAT_WAV | SF_FORMAT_FLOAT},
          Case{"c.flac", SampleFormat::int16, 44100, SF_FORMAT_FLAC | SF_FORMAT_PCM_16},
          Case{"d.ogg", SampleFormat::compressed, 44100, SF_FORMAT_OGG | SF_FORMAT_VORBIS}}) {
        settings_.sampleRateHz = c.rateHz;
        settings_.format.samples = c.samples;
        settings_.tailSeconds = 0.25;
        Render(ScaleFile({60, 64}), c.name);
        const Audio audio = Load(folder_ / c.name);
        EXPECT_EQ(audio.info.format, c.format) << c.name;
        EXPECT_EQ(audio.info.samplerate, c.rateHz) << c.name;
        EXPECT_EQ(audio.info.frames, sf_count_t(c.rateHz * 1.75)) << c.name;
        EXPECT_GT(PeakOf(audio.samples), 0.05f) << c.name;
    }
}

TEST_F(RenderSongTest, IsSilentBeforeTheFirstNoteAndAfterTheLastHasDied) {
    settings_.format.samples = SampleFormat::float32;
    Set(kReverbOn, 1.0f);
    const RenderResult result = Render(ScaleFile({48}), "a.wav");
    const Audio audio = Load(folder_ / "a.wav");
    const std::size_t firstNote = 24000 * kChannels;
    EXPECT_LT(PeakOf(std::span(audio.samples).first(firstNote)), 1e-9f);
    EXPECT_GT(PeakOf(std::span(audio.samples).subspan(firstNote, 4800 * kChannels)), 0.05f);
    EXPECT_LT(PeakOf(std::span(audio.samples).last(2)), 3.3e-5f);
    EXPECT_GT(result.seconds, 1.1);
    EXPECT_FALSE(result.tailCutShort);
}

TEST_F(RenderSongTest, TurnsDownWhatWouldClipAndSaysSo) {
    // Every string at once, at full force.
    Bytes chord;
    for (std::uint8_t key = 40; key < 60; ++key)
        chord = chord + Bytes{0, 0x90, key, 127};
    const Bytes song = OneTrackFile(chord + Bytes{96, 0xB0, 1, 0});

    const RenderResult result = Render(song, "a.wav");
    EXPECT_LT(result.gainDecibels, -6.0);
    EXPECT_NEAR(result.peak, 1.0, 1e-6);
    const Audio audio = Load(folder_ / "a.wav");
    const auto isFull = [](float sample) { return std::fabs(sample) > 0.9999f; };
    EXPECT_LT(std::ranges::count_if(audio.samples, isFull), 5);

    settings_.format.samples = SampleFormat::float32;
    EXPECT_EQ(Render(song, "b.wav").gainDecibels, 0.0);
    EXPECT_GT(PeakOf(Load(folder_ / "b.wav").samples), 2.0f);
}

TEST_F(RenderSongTest, ReachesTheLoudnessAskedForAsFarAsThePeakAllows) {
    settings_.loudnessTarget = -30.0;
    const RenderResult quiet = Render(ScaleFile({60, 62, 64, 65}), "a.wav");
    EXPECT_NEAR(quiet.loudness, -30.0, 1e-6);
    EXPECT_NEAR(PeakOf(Load(folder_ / "a.wav").samples), quiet.peak, 1e-4);
    settings_.loudnessTarget = 0.0;
    const RenderResult loud = Render(ScaleFile({60, 62, 64, 65}), "b.wav");
    EXPECT_LT(loud.loudness, 0.0);
    EXPECT_NEAR(loud.peak, 1.0, 1e-6);
    settings_.loudnessTarget = -20.0;
    EXPECT_EQ(Render(OneTrackFile({96, 0xB0, 1, 0}), "silence.wav").peak, 0.0);
}

TEST_F(RenderSongTest, TheHashIsOfTheSoundAndOfNothingElse) {
    const Bytes song = ScaleFile({60, 67});
    const std::string hash = HashOf(song);
    EXPECT_EQ(hash.size(), 64u);
    EXPECT_EQ(Render(song, "a.flac").hash, hash);
    settings_.loudnessTarget = -20.0;
    EXPECT_EQ(Render(song, "a.ogg").hash, hash);
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
    ASSERT_TRUE(IsState(state));

    Set(kString1Decay, 0.7f);
    const std::string bySetting = HashOf(song);
    settings_.sound = {state, {}};
    EXPECT_EQ(HashOf(song), bySetting);
    settings_.sound = {};
    const std::string byDefault = HashOf(song);
    settings_.sound = {state, {{kString1Decay, 1.0f}}};
    EXPECT_EQ(HashOf(song), byDefault);

    EXPECT_FALSE(IsState(std::span(state).first(587)));
    state[0] = 'x';
    EXPECT_FALSE(IsState(state));
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

TEST_F(RenderSongTest, ProgramNumbersAndBanksOfTheSongAreLeftAlone) {
    const Bytes song = ScaleFile({60});
    const std::string hash = HashOf(song);
    const Bytes choose = {0, 0xB0, 32, 3, 0, 0xC0, 5};
    EXPECT_EQ(HashOf(Header(1, 2) + Track(choose) + Bytes(song.begin() + 14, song.end())), hash);
}

TEST_F(RenderSongTest, AFailureLeavesTheOldFileAndNothingElse) {
    folder_.Write("a.wav", "old");
    const std::atomic<bool> interrupted = true;
    const auto song = folder_.Write("song.mid", ScaleFile({60}));
    EXPECT_THROW(RenderSong(
                     song, folder_ / "a.wav", settings_, [](double) {}, interrupted),
                 BadInput);
    EXPECT_EQ(folder_.Names().size(), 2u);
    EXPECT_EQ(std::filesystem::file_size(folder_ / "a.wav"), 3u);
    Render(ScaleFile({60}), "a.wav");
    EXPECT_GT(std::filesystem::file_size(folder_ / "a.wav"), 1000u);
    EXPECT_EQ(folder_.Names().size(), 2u);
}

}  // namespace
}  // namespace norava
