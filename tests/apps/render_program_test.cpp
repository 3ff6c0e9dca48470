// The built program, run as a person would.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
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
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

struct Answer {
    int status = -1;
    std::string out;
    std::string err;
};

std::string TextOf(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class RenderProgram : public testing::Test {
  protected:
    // Names in `arguments` are names in the scratch folder.
    Answer Run(const std::string& arguments) {
        const std::string out = (logs_ / "out").string();
        const std::string err = (logs_ / "err").string();
        // The home folder is empty and has to stay so.
        const std::string command = "cd '" + folder_.Path() + "' && XDG_DATA_HOME=\"$PWD\" " +
                                    NORAVA_RENDER + " " + arguments + " >'" + out + "' 2>'" + err +
                                    "' </dev/null";
        const int status = std::system(command.c_str());
        return {WEXITSTATUS(status), TextOf(out), TextOf(err)};
    }

    ScratchFolder folder_;
    ScratchFolder logs_;
};

TEST_F(RenderProgram, BadInputGetsOneLineAndStatusTwoAndLeavesNothing) {
    folder_.Write("good.mid", ScaleFile({60}));
    folder_.Write("text.mid", "hello");
    Bytes cut = ScaleFile({60});
    cut.resize(cut.size() - 6);
    folder_.Write("cut.mid", cut);
    folder_.Write("empty.mid", "");
    folder_.Write("short.bin", Bytes(100, 0));
    folder_.Write("wrong.bin", Bytes(588, 0));
    std::filesystem::create_directory(folder_ / "folder");
    const auto before = folder_.Names();

    struct Case {
        const char* arguments;
        const char* complaint;
    };
    for (const Case& c : {
             Case{"", "MIDI file"},
             Case{"none.mid -o a.wav", "none.mid: cannot be read"},
             Case{"folder -o a.wav", "folder: cannot be read"},
             Case{"text.mid -o a.wav", "text.mid: this is not a MIDI file"},
             Case{"empty.mid -o a.wav", "not a MIDI file"},
             Case{"cut.mid -o a.wav", "truncated"},
             Case{"good.mid -o nowhere/a.wav", "nowhere/a.wav: cannot be written"},
             Case{"good.mid -o /dev/null --format wav", "/dev/null: cannot be written"},
             Case{"good.mid -o a.mp3", "a.mp3 does not end in"},
             Case{"good.mid -o a.wav --format flac", "does not fit"},
             Case{"good.mid -o a.flac --rate 768000", "sample rate"},
             Case{"good.mid -o a.flac --bits 32f", "flac"},
             Case{"good.mid -o a.ogg --bits 16", "ogg"},
             Case{"good.mid -o a.wav --bits 12", "12"},
             Case{"good.mid -o a.wav --rate 999", "999"},
             Case{"good.mid -o a.wav --rate 768001", "768001"},
             Case{"good.mid -o a.wav --rate fast", "fast"},
             Case{"good.mid -o a.wav --block 0", "--block"},
             Case{"good.mid -o a.wav --tail never", "--tail"},
             Case{"good.mid -o a.wav --normalize 3", "--normalize"},
             Case{"good.mid -o a.wav -j 0", "--jobs"},
             Case{"good.mid -o a.wav --set Volume=1", "'Volume'"},
             Case{"good.mid -o a.wav --patch none.txt", "none.txt"},
             Case{"good.mid -o a.wav --state none.bin", "none.bin"},
             Case{"good.mid -o a.wav --state short.bin", "short.bin: this is not a state"},
             Case{"good.mid -o a.wav --state wrong.bin", "wrong.bin: this is not a state"},
             Case{"good.mid cut.mid -o a.wav", "a.wav: several songs need a folder"},
             Case{"good.mid folder/../good.mid -o out", "both become good.wav"},
             Case{"good.mid --loud", "--loud"},
             Case{"good.mid -o a.wav --program Bass/None", "no program 'Bass/None'"},
             Case{"good.mid -o a.wav --program wrong.bin", "not a program of the instrument"},
             Case{"good.mid -o a.wav --program short.bin", "not a program of the instrument"},
             Case{"good.mid -o a.wav --program x/y --state z", "takes one of"},
             Case{"--all-programs --library none -o out", "none: this folder cannot be read"},
         }) {
        const Answer answer = Run(std::string("--quiet ") + c.arguments);
        EXPECT_EQ(answer.status, 2) << c.arguments;
        EXPECT_THAT(answer.err, HasSubstr(c.complaint)) << c.arguments;
        EXPECT_EQ(std::ranges::count(answer.err, '\n'), 1) << answer.err;
        EXPECT_THAT(answer.out, IsEmpty()) << c.arguments;
        std::filesystem::remove(folder_ / "out");
        EXPECT_THAT(folder_.Names(), testing::UnorderedElementsAreArray(before)) << c.arguments;
    }
}

TEST_F(RenderProgram, SeveralSongsAtATimeSoundLikeOneAfterTheOther) {
    folder_.Write("one.mid", ScaleFile({60, 64}));
    folder_.Write("two.mid", ScaleFile({48, 55}, 110));
    folder_.Write("three.mid", ScaleFile({72}));
    const std::string songs = "one.mid two.mid three.mid --hash --quiet ";
    const Answer serial = Run(songs);
    const Answer parallel = Run(songs + "-j 3 -o out/");
    EXPECT_EQ(serial.status, 0);
    EXPECT_EQ(std::ranges::count(serial.out, '\n'), 3);
    EXPECT_EQ(parallel.out, serial.out);
    const auto names = [&](const char* name) { return std::filesystem::exists(folder_ / name); };
    EXPECT_TRUE(names("out/one.wav") && names("out/two.wav") && names("out/three.wav"));
    EXPECT_FALSE(names("one.wav"));
}

TEST_F(RenderProgram, OneBadSongDoesNotStopTheOthers) {
    folder_.Write("good.mid", ScaleFile({60}));
    folder_.Write("bad.mid", {1, 2, 3});
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

TEST_F(RenderProgram, ThePedalLetsNotesRing) {
    folder_.Write("song.mid", OneTrackFile({0, 0xB0, 64, 127, 0, 0x90, 60, 100, 12, 0x80, 60, 0,  //
                                            0x81, 0x40, 0xB0, 64, 0}));
    const std::string song = "song.mid --quiet --hash --tail 0.5 ";
    EXPECT_NE(Run(song).out, Run(song + "--pedal").out);
}

TEST_F(RenderProgram, PlaysProgramsOfTheBankOrOfAFolder) {
    const auto bank = nlohmann::json::parse(Run("--list-programs --json").out);
    EXPECT_GE(bank.size(), 96u);
    EXPECT_EQ(bank[0]["category"], "Bass");

    folder_.Write("song.mid", ScaleFile({60}));
    for (const char* name : {"Two 10", "Two 9"}) {
        Program program;
        program.name = name;
        program.values[param::kTune] = name[4] == '9' ? 0.2f : 0.8f;
        std::filesystem::create_directories(folder_ / "lib/A");
        SaveProgram(folder_ / "lib/A" / (std::string(name) + ".norava"), program);
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
