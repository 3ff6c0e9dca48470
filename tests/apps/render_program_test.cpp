// The built program, run as a person would.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sndfile.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "apps/midi_bytes.h"
#include "files/scratch_folder.h"
#include "parameters/parameter_index.h"
#include "program_text/program_file.h"
#include "render/bad_input.h"
#include "render/render_song.h"
#include "render/tail.h"

namespace norava {
namespace {

using namespace test;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAre;

constexpr int kChannels = 2;

struct Answer {
    int status;
    std::string out, err;
};

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

class RenderProgram : public testing::Test {
  protected:
    // Names in `arguments` are names in the scratch folder.
    Answer Run(const std::string& arguments) {
        // The home folder is empty and has to stay so.
        const std::string command = "cd '" + folder_.Path() + "' && XDG_DATA_HOME=\"$PWD\" " +
                                    NORAVA_RENDER + " >'" + logs_.Path("out") + "' 2>'" +
                                    logs_.Path("err") + "' </dev/null " + arguments;
        const int status = std::system(command.c_str());
        return {WEXITSTATUS(status), logs_.Read("out"), logs_.Read("err")};
    }
    // What is told of one song.
    nlohmann::json Report(const Bytes& song, const std::string& options) {
        folder_.Write("song.mid", song);
        return nlohmann::json::parse(Run("song.mid --json --hash " + options).out)[0];
    }
    std::string HashOf(const Bytes& song, const std::string& options = "") {
        return Report(song, options)["sha256"];
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
    ScratchFolder logs_;
};

TEST_F(RenderProgram, EveryKindOfFileHoldsTheSongAtItsRateAndLength) {
    const std::tuple<const char*, const char*, int, int> cases[] = {
        {"a.wav", "--rate 48000", 48000, SF_FORMAT_WAV | SF_FORMAT_PCM_24},
        {"b.wav", "--rate 8000 --bits 32f", 8000, SF_FORMAT_WAV | SF_FORMAT_FLOAT},
        {"c.flac", "--rate 44100 --bits 16", 44100, SF_FORMAT_FLAC | SF_FORMAT_PCM_16},
        {"d.ogg", "--rate 44100", 44100, SF_FORMAT_OGG | SF_FORMAT_VORBIS},
    };
    for (const auto& [name, options, rateHz, format] : cases) {
        SCOPED_TRACE(name);
        Report(ScaleFile({60, 64}), std::string("--tail 0.25 -o ") + name + ' ' + options);
        const Audio audio = Load(name);
        EXPECT_EQ(audio.info.format, format);
        EXPECT_EQ(audio.info.samplerate, rateHz);
        ASSERT_EQ(audio.info.frames, sf_count_t(rateHz * 1.75));
        // Half a second of rest comes before the first note.
        const auto rest = std::size_t(rateHz) / 2 * kChannels;
        EXPECT_LT(PeakOf(std::span(audio.samples).first(rest - 1000)), 1e-4f);
        EXPECT_GT(PeakOf(std::span(audio.samples).subspan(rest, rest / 5)), 0.05f);
    }
}

TEST_F(RenderProgram, ReachesTheLoudnessAskedForAsFarAsThePeakAllows) {
    // Every string at once, at full force.
    Bytes chord;
    for (std::uint8_t key = 40; key < 60; ++key)
        chord = chord + Bytes{0, 0x90, key, 127};
    const Bytes song = OneTrackFile(chord + Bytes{96, 0xB0, 1, 0});
    const auto clipping = Report(song, "-o a.wav");
    EXPECT_LT(clipping["gainDb"].get<double>(), -6.0);
    EXPECT_NEAR(clipping["peakDbfs"].get<double>(), 0.0, 1e-5);
    const auto isFull = [](float sample) { return std::fabs(sample) > 0.9999f; };
    EXPECT_LT(std::ranges::count_if(Load("a.wav").samples, isFull), 5);

    const auto quiet = Report(song, "-o b.wav --normalize -30");
    EXPECT_NEAR(quiet["loudnessLufs"].get<double>(), -30.0, 1e-6);
    EXPECT_NEAR(20.0 * std::log10(PeakOf(Load("b.wav").samples)), quiet["peakDbfs"].get<double>(),
                1e-2);

    EXPECT_EQ(Report(song, "-o c.wav --bits 32f")["gainDb"].get<double>(), 0.0);
    EXPECT_GT(PeakOf(Load("c.wav").samples), 2.0f);
}

TEST_F(RenderProgram, TheHashIsOfTheSoundAndOfNothingElse) {
    const Bytes song = ScaleFile({60, 67});
    const std::string hash = HashOf(song);
    EXPECT_EQ(hash.size(), 64u);
    EXPECT_EQ(HashOf(song, "-o a.ogg --normalize -20"), hash);
    // Program numbers and banks of the song are left alone.
    const Bytes choose = {0, 0xB0, 32, 3, 0, 0xC0, 5};
    EXPECT_EQ(HashOf(Header(1, 2) + Track(choose) + Bytes(song.begin() + 14, song.end())), hash);
    EXPECT_NE(HashOf(ScaleFile({60, 68})), hash);
    EXPECT_NE(HashOf(song, "--set 'Str1 Decay=0.5'"), hash);
}

TEST_F(RenderProgram, TheTempoReachesTheEchoes) {
    const std::string echoes = "--set 'Delay ON/OFF=1' --set 'Delay Tempo=1/4'";
    const Bytes notes = {0, 0x90, 60, 100, 24, 0x80, 60, 0, 96, 0xB0, 1, 0};
    // The same notes at the same seconds: half as many ticks at half the tempo.
    const Bytes slow = {0, 0x90, 60, 100, 12, 0x80, 60, 0, 48, 0xB0, 1, 0};
    const Bytes at120 = {0, 0xFF, 0x51, 3, 0x07, 0xA1, 0x20};
    const Bytes at60 = {0, 0xFF, 0x51, 3, 0x0F, 0x42, 0x40};
    const std::string hash = HashOf(OneTrackFile(notes), echoes);
    EXPECT_EQ(HashOf(OneTrackFile(at120 + notes), echoes), hash);
    EXPECT_NE(HashOf(OneTrackFile(at60 + slow), echoes), hash);
    EXPECT_EQ(HashOf(OneTrackFile(at60 + slow)), HashOf(OneTrackFile(notes)));
}

TEST_F(RenderProgram, AFailureLeavesTheOldFileAndNothingElse) {
    const auto song = folder_.Write("song.mid", ScaleFile({60}));
    folder_.Write("a.wav", "old");
    const std::atomic<bool> interrupted = true;
    EXPECT_THROW(RenderSong(
                     song, folder_ / "a.wav", {}, [](double) {}, interrupted),
                 BadInput);
    EXPECT_EQ(folder_.Read("a.wav"), "old");
    const std::string longName = std::string(251, 'x') + ".wav";
    std::filesystem::create_symlink("a.wav", folder_ / longName);
    Run("song.mid -o " + longName);
    EXPECT_GT(folder_.Read("a.wav").size(), 1000u);
    EXPECT_TRUE(std::filesystem::is_symlink(folder_ / longName));
    EXPECT_THAT(folder_.Names(), UnorderedElementsAre("song.mid", "a.wav", longName));
}

TEST_F(RenderProgram, BadInputGetsOneLineAndStatusTwoAndLeavesNothing) {
    folder_.Write("good.mid", ScaleFile({60}));
    folder_.Write("song.wav", ScaleFile({60}));
    folder_.Write("text.mid", "hello");
    folder_.Write("text.txt", "Name = A");
    folder_.Write("x.patch", "Tune = 0.5\nTuna = 0.5\n");
    folder_.Write("wrong.bin", Bytes(588, 0));
    const auto before = folder_.Names();
    const std::pair<std::string, const char*> cases[] = {
        {"", "MIDI file"},
        {"text.mid -o a.wav", "text.mid: this is not a MIDI file"},
        {"good.mid -o nowhere/a.wav", "nowhere/a.wav: cannot be written"},
        {"good.mid -o a.mp3", "a.mp3 does not end in"},
        {"good.mid -o a.flac --bits 32f", "flac"},
        {"good.mid -o a.wav --set 'Reverb Size=1'", "no parameter 'Reverb Size'"},
        {"good.mid -o a.wav --set Tune=nan", "nan"},
        {"good.mid -o a.wav --set 'String Ratio=7'", "0..6"},
        {"good.mid -o a.wav --patch x.patch", "x.patch:2: there is no"},
        {"good.mid -o a.wav --state wrong.bin", "wrong.bin: this is not a state"},
        {"good.mid text.mid -o a.wav", "a.wav: several songs need a folder"},
        {"good.mid ./good.mid -o out", "both become good.wav"},
        {"song.wav good.mid -o .", "./song.wav: the sound would replace the song"},
        {"good.mid --loud", "--loud"},
        {"good.mid -o -", "standard output"},
        {"good.mid -o a.wav --library .", "--library needs"},
        {"good.mid -o a.wav --patch none", "none: cannot be read: No such file"},
        {"good.mid -o a.wav --program text.txt", "norava-program convert"},
        {"good.mid -o a.wav --normalize nan", "--normalize"},
        {"good.mid -o a.wav --normalize -18 --rate 3999", "--rate of 4000"},
        {"good.mid -o a.wav --program Bass/None", "no program 'Bass/None'"},
        {"--all-programs --library none -o out", "none: this folder cannot be read"},
        {"--all-programs --library . -o out", "no programs"},
    };
    for (const auto& [arguments, complaint] : cases) {
        SCOPED_TRACE(arguments);
        const Answer answer = Run("--quiet " + arguments);
        EXPECT_EQ(answer.status, 2);
        EXPECT_THAT(answer.err, HasSubstr(complaint));
        EXPECT_EQ(std::ranges::count(answer.err, '\n'), 1) << answer.err;
        EXPECT_EQ(answer.out, "");
        std::filesystem::remove(folder_ / "out");
        EXPECT_THAT(folder_.Names(), testing::UnorderedElementsAreArray(before));
    }
}

TEST_F(RenderProgram, SeveralSongsAtATimeSoundLikeOneAfterTheOther) {
    folder_.Write("one.mid", ScaleFile({60, 64}));
    folder_.Write("bad.mid", "bad");
    // Under the pedal the note rings on.
    folder_.Write("two.mid", OneTrackFile({0, 0xB0, 64, 127, 0, 0x90, 60, 100, 12, 0x80, 60, 0,  //
                                           0x81, 0x40, 0xB0, 64, 0}));
    const std::string songs = "bad.mid one.mid two.mid --tail 0.5 ";
    const Answer serial = Run(songs + "--hash --quiet");
    EXPECT_EQ(serial.status, 2);
    EXPECT_NE(Run(songs + "--hash --quiet --pedal").out, serial.out);
    EXPECT_EQ(Run(songs + "--hash --quiet -j 3 -o out/").out, serial.out);
    EXPECT_TRUE(std::filesystem::exists(folder_ / "out/two.wav"));
    EXPECT_EQ(folder_.Names().size(), 4u) << "files in the folder alone";

    const auto report = nlohmann::json::parse(Run(songs + "--format flac --json").out);
    EXPECT_THAT(report[0]["error"].get<std::string>(), HasSubstr("not a MIDI file"));
    EXPECT_EQ(report[1]["output"].get<std::string>(), "one.flac");
}

TEST_F(RenderProgram, PlaysProgramsOfTheBankOrOfAFolder) {
    const auto bank = nlohmann::json::parse(Run("--list-programs --json").out);
    EXPECT_GE(bank.size(), 96u);
    EXPECT_EQ(bank[0]["category"].get<std::string>(), "Bass");

    std::filesystem::create_directories(folder_ / "lib/A");
    for (const auto& [name, tune] : {std::pair{"Two 10", 0.8f}, std::pair{"Two 9", 0.2f}}) {
        Program program;
        program.name = name;
        program.values[param::kTune] = tune;
        SaveProgram(folder_ / ("lib/A/" + program.name + ".norava"), program);
    }
    folder_.Write("tune.patch", "\xEF\xBB\xBF# a sound\r\n\r\n  Tune=0.2\r\n");
    const Bytes song = ScaleFile({60});
    const std::string hash = HashOf(song, "--state 'lib/A/Two 9.norava'");
    for (const char* same : {"--library lib --program 'a/two 9'", "--program 'lib/A/Two 9.norava'",
                             "--set ' tune = 0.2'", "--set 1=0.2", "--patch tune.patch"})
        EXPECT_EQ(HashOf(song, same), hash) << same;
    for (const char* other : {"--library lib --program 'A/Two 10'", "--program 'Bass/Finger Bass'",
                              "--state 'lib/A/Two 9.norava' --set Tune=0.5"})
        EXPECT_NE(HashOf(song, other), hash) << other;

    folder_.Write("lib/A/Bad.norava", "no program");
    const Answer all = Run("--library lib --all-programs --hash --quiet --tail 0 -o out");
    EXPECT_EQ(all.status, 2);
    EXPECT_EQ(all.err, "norava-render: A/Bad: this is not a program of the instrument\n");
    EXPECT_EQ(std::ranges::count(all.out, '\n'), 2) << all.err;
    EXPECT_LT(all.out.find("A/Two 9"), all.out.find("A/Two 10")) << "as numbered";
    EXPECT_TRUE(std::filesystem::exists(folder_ / "out/A - Two 10.wav"));
}

TEST_F(RenderProgram, TellsItsParametersAndItsVersion) {
    const auto list = nlohmann::json::parse(Run("--list-parameters --json").out);
    ASSERT_EQ(list.size(), 114u);
    EXPECT_EQ(list[74]["name"].get<std::string>(), "Reverb ON/OFF");
    EXPECT_EQ(list[111]["menu"].size(), 7u);
    EXPECT_EQ(Run("--list-parameters >/dev/full").status, 2);
    EXPECT_THAT(Run("--version").out, HasSubstr("norava-render 1.1.5"));
}

TEST(Tail, EndsWhereTheLastSoundEnded) {
    using Parts = std::vector<std::pair<double, float>>;  // seconds and level
    const std::tuple<std::optional<double>, Parts, double> cases[] = {
        {0.25, {{1.0, 0.0f}}, 0.25},  // to the frame
        // The second part is the gap before an echo.
        {std::nullopt, {{1.0, 0.5f}, {2.0, 1e-6f}, {1.0, -0.01f}, {3.0, 0.0f}}, 4.0},
        {std::nullopt, {{100.0, 0.5f}}, 60.0},  // a minute at most
    };
    for (const auto& [tailSeconds, parts, keptSeconds] : cases) {
        std::vector<float> sound;
        for (const auto& [seconds, level] : parts)
            sound.insert(sound.end(), std::size_t(seconds * 2000.0), level);
        for (const std::size_t blockSamples : {2u, 200u, 20000u}) {
            Tail tail(tailSeconds, 1000.0);
            std::vector<float> kept;
            bool more = true;
            for (std::span<const float> rest = sound; more && !rest.empty();) {
                const auto block = rest.first(std::min(blockSamples, rest.size()));
                more = tail.Take(block, kept);
                rest = rest.subspan(block.size());
            }
            EXPECT_FALSE(more);
            EXPECT_DOUBLE_EQ(double(kept.size()) / 2.0 / 1000.0, keptSeconds) << blockSamples;
            EXPECT_EQ(tail.IsCutShort(), keptSeconds == 60.0);
        }
    }
}

}  // namespace
}  // namespace norava
