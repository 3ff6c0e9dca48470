// The built program, run as a person would.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>

#include "apps/midi_bytes.h"
#include "files/scratch_folder.h"
#include "parameters/parameter_index.h"
#include "program_text/program_file.h"

namespace norava {
namespace {

using namespace test;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAre;

struct Answer {
    int status = -1;
    std::string out;
    std::string err;
};

class RenderProgram : public testing::Test {
  protected:
    // Names in `arguments` are names in the scratch folder.
    Answer Run(const std::string& arguments) {
        // The home folder is empty and has to stay so.
        const std::string command = "cd '" + folder_.Path() + "' && XDG_DATA_HOME=\"$PWD\" " +
                                    NORAVA_RENDER + " " + arguments + " >'" + logs_.Path("out") +
                                    "' 2>'" + logs_.Path("err") + "' </dev/null";
        const int status = std::system(command.c_str());
        return {WEXITSTATUS(status), logs_.Read("out"), logs_.Read("err")};
    }

    ScratchFolder folder_;
    ScratchFolder logs_;
};

TEST_F(RenderProgram, BadInputGetsOneLineAndStatusTwoAndLeavesNothing) {
    Bytes cut = ScaleFile({60});
    cut.resize(cut.size() - 6);
    folder_.Write("good.mid", ScaleFile({60}));
    folder_.Write("text.mid", "hello");
    folder_.Write("cut.mid", cut);
    folder_.Write("wrong.bin", Bytes(588, 0));
    std::filesystem::create_directory(folder_ / "folder");
    const auto before = folder_.Names();
    const struct {
        std::string arguments;
        const char* complaint;
    } cases[] = {
        {"", "MIDI file"},
        {"none.mid -o a.wav", "none.mid: cannot be read"},
        {"folder -o a.wav", "folder: cannot be read"},
        {"text.mid -o a.wav", "text.mid: this is not a MIDI file"},
        {"cut.mid -o a.wav", "truncated"},
        {"good.mid -o nowhere/a.wav", "nowhere/a.wav: cannot be written"},
        {"good.mid -o /dev/null --format wav", "/dev/null: cannot be written"},
        {"good.mid -o a.mp3", "a.mp3 does not end in"},
        {"good.mid -o a.flac --rate 768000", "sample rate"},
        {"good.mid -o a.flac --bits 32f", "flac"},
        {"good.mid -o a.wav --bits 12", "12"},
        {"good.mid -o a.wav --rate 999", "999"},
        {"good.mid -o a.wav --block 0", "--block"},
        {"good.mid -o a.wav --state wrong.bin", "wrong.bin: this is not a state"},
        {"good.mid cut.mid -o a.wav", "a.wav: several songs need a folder"},
        {"good.mid folder/../good.mid -o out", "both become good.wav"},
        {"good.mid --loud", "--loud"},
        {"good.mid -o a.wav --program Bass/None", "no program 'Bass/None'"},
        {"good.mid -o a.wav --program wrong.bin", "not a program of the instrument"},
        {"--all-programs --library none -o out", "none: this folder cannot be read"},
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
    folder_.Write("two.mid", ScaleFile({48, 55}, 110));
    // Under the pedal the note rings on.
    folder_.Write("three.mid",
                  OneTrackFile({0, 0xB0, 64, 127, 0, 0x90, 60, 100, 12, 0x80, 60, 0,  //
                                0x81, 0x40, 0xB0, 64, 0}));
    const std::string songs = "one.mid two.mid three.mid --hash --quiet --tail 0.5 ";
    const Answer serial = Run(songs);
    EXPECT_EQ(serial.status, 0);
    EXPECT_EQ(std::ranges::count(serial.out, '\n'), 3);
    EXPECT_NE(Run(songs + "--pedal").out, serial.out);
    EXPECT_EQ(Run(songs + "-j 3 -o out/").out, serial.out);
    for (const char* name : {"out/one.wav", "out/two.wav", "out/three.wav"})
        EXPECT_TRUE(std::filesystem::exists(folder_ / name)) << name;
    EXPECT_FALSE(std::filesystem::exists(folder_ / "one.wav"));
}

TEST_F(RenderProgram, OneBadSongDoesNotStopTheOthers) {
    folder_.Write("good.mid", ScaleFile({60}));
    folder_.Write("bad.mid", "bad");
    const Answer answer = Run("bad.mid good.mid --format flac --json");
    EXPECT_EQ(answer.status, 2);
    EXPECT_THAT(folder_.Names(), UnorderedElementsAre("good.mid", "bad.mid", "good.flac"));
    const auto report = nlohmann::json::parse(answer.out);
    EXPECT_THAT(report[0]["error"].get<std::string>(), HasSubstr("not a MIDI file"));
    EXPECT_EQ(report[1]["output"], "good.flac");
    EXPECT_GT(report[1]["timesRealTime"].get<double>(), 0.0);
    EXPECT_LE(report[1]["peakDbfs"].get<double>(), 0.0);
    EXPECT_GT(report[1]["seconds"].get<double>(), 1.0);
}

TEST_F(RenderProgram, PlaysProgramsOfTheBankOrOfAFolder) {
    const auto bank = nlohmann::json::parse(Run("--list-programs --json").out);
    EXPECT_GE(bank.size(), 96u);
    EXPECT_EQ(bank[0]["category"], "Bass");

    folder_.Write("song.mid", ScaleFile({60}));
    std::filesystem::create_directories(folder_ / "lib/A");
    for (const auto& [name, tune] : {std::pair{"Two 10", 0.8f}, std::pair{"Two 9", 0.2f}}) {
        Program program;
        program.name = name;
        program.values[param::kTune] = tune;
        SaveProgram(folder_ / ("lib/A/" + program.name + ".norava"), program);
    }
    std::filesystem::copy(folder_ / "lib/A/Two 9.norava", folder_ / "state.bin");
    const std::string song = "song.mid --hash --quiet --tail 0 ";
    const std::string hash = Run(song + "--state state.bin").out;
    EXPECT_EQ(Run(song + "--library lib --program 'a/two 9'").out, hash);
    EXPECT_EQ(Run(song + "--program 'lib/A/Two 9.norava'").out, hash);
    EXPECT_NE(Run(song + "--library lib --program 'A/Two 10'").out, hash);
    EXPECT_NE(Run(song + "--program 'Bass/Finger Bass'").out, hash);

    const Answer all = Run("--library lib --all-programs --hash --quiet --tail 0 -o out");
    EXPECT_EQ(std::ranges::count(all.out, '\n'), 2) << all.err;
    EXPECT_LT(all.out.find("A/Two 9"), all.out.find("A/Two 10")) << "as numbered";
    EXPECT_TRUE(std::filesystem::exists(folder_ / "out/A - Two 10.wav"));
    EXPECT_THAT(folder_.Names(), UnorderedElementsAre("song.mid", "lib", "state.bin", "out"));
}

TEST_F(RenderProgram, TellsItsParametersItsVersionAndItsOptions) {
    const auto list = nlohmann::json::parse(Run("--list-parameters --json").out);
    ASSERT_EQ(list.size(), 114u);
    EXPECT_EQ(list[74]["name"], "Reverb ON/OFF");
    EXPECT_EQ(list[111]["menu"].size(), 7u);
    EXPECT_EQ(std::ranges::count(Run("--list-parameters").out, '\n'), 114);
    EXPECT_THAT(Run("--version").out, HasSubstr("norava-render 1.1.5"));
    const Answer help = Run("--help");
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.out, HasSubstr("--list-parameters"));
}

}  // namespace
}  // namespace norava
