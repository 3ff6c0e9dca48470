#include "program_text/program_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <random>

#include "apps/midi_bytes.h"
#include "files/scratch_folder.h"
#include "parameters/parameter_table.h"
#include "program_text/program_file.h"
#include "render/bad_input.h"

namespace norava::test {
namespace {

Program Parse(std::string_view text) {
    return ParseProgram(text, "x.txt");
}

std::string Complaint(std::string_view text) {
    try {
        Parse(text);
    } catch (const BadInput& error) {
        return error.what();
    }
    return "none";
}

TEST(ProgramText, TakesWhatPeopleWrite) {
    const Program program = Parse(
        "# a comment\n Name = Two Words \r\nTags = pitched,  soft\nstr1 decay = 0.25\n"
        "Str1 Decay Inv = on\nString Ratio = 1 : 4\nDescription = a = b\n"
        "Mod 3 = mod whl > str2 damp -0.5\nMod 8 = lfo > hi-cut ctf 1");
    EXPECT_EQ(program.name, "Two Words");
    EXPECT_EQ(program.description, "a = b");
    EXPECT_TRUE(program.HasTag("soft"));
    EXPECT_EQ(program.values[param::kString1Decay], 0.25f);
    EXPECT_EQ(program.values[param::kString1DecayInvert], 1.0f);
    EXPECT_EQ(program.values[param::kStringRatio], 6.0f);
    EXPECT_THAT(std::vector<float>(&program.values[param::kMatrix + 8],
                                   &program.values[param::kMatrix + 12]),
                testing::ElementsAre(3.0f, 0.5f, 1.0f, 12.0f));
    EXPECT_EQ(program.values[param::kMasterLevel], 0.5f) << "what is not named keeps its default";
}

TEST(ProgramText, NamesTheLineThatItCannotTake) {
    EXPECT_THAT(Complaint("Name = A\n\nStr1 Decay = 1.5"), testing::HasSubstr("x.txt:3: "));
    EXPECT_THAT(Complaint("Name = A\nStr9 Decay = 1"), testing::HasSubstr("x.txt:2: "));
    EXPECT_THAT(Complaint("Name = A\nTune = nan"), testing::HasSubstr("not 'nan'"));
    EXPECT_THAT(Complaint("Name = A\nTune = 0.5\ntune = 0.5"), testing::HasSubstr("twice"));
    EXPECT_THAT(Complaint("Mod 1 = lfo > pan 1\nMatrix 1 Amount = 1"), testing::HasSubstr("twice"));
    EXPECT_THAT(Complaint("Mod 9 = lfo > pan 1"), testing::HasSubstr("Mod 8"));
    EXPECT_THAT(Complaint("Mod 1 = lfo > pan"), testing::HasSubstr("SOURCE"));
    EXPECT_THAT(Complaint("Mod 1 = lfo > moon 1"), testing::HasSubstr("hi-cut ctf"));
    EXPECT_THAT(Complaint("Tune = 0.5"), testing::HasSubstr("'Name = ...'"));
    EXPECT_THAT(Complaint("Name = " + std::string(128, 'x')), testing::HasSubstr("127"));
    EXPECT_THAT(Complaint("Name = a\\x0"), testing::HasSubstr("hexadecimal"));
    EXPECT_THAT(Complaint("Master Level 1"), testing::HasSubstr("NAME = VALUE"));
}

// Whatever bits a block holds, its text gives them back: numbers that are none, values beyond
// their range, selectors between two items, a name that would break its line.
TEST(ProgramText, GivesBackEveryBitOfABlock) {
    std::mt19937 random(7);
    constexpr std::uint32_t kOdd[] = {0x00000000, 0x80000000, 0x3f800000, 0x3f000000, 0x7fc00001,
                                      0xff800000, 0x40400000, 0x40200000, 0x00000001, 0x3eaaaaab};
    for (int round = 0; round < 300; ++round) {
        Program program;
        program.name = " odd \\ name\n\x7f \xc3\xa9 ";
        for (float& value : program.values) {
            if (random() % 3 == 0) continue;
            value = std::bit_cast<float>(random() % 2 ? kOdd[random() % std::size(kOdd)]
                                                      : std::uint32_t(random()));
        }
        const Program back = Parse(WriteProgram(program));
        EXPECT_EQ(ToBlock(back), ToBlock(program)) << WriteProgram(program);
    }
}

TEST(ProgramFile, ReadsBlocksAndHostsFiles) {
    const ScratchFolder folder;
    Program program;
    program.name = "Saved";
    program.values[param::kReverbMix] = 0.3f;
    SaveProgram(folder / "a.norava", program);
    SaveProgram(folder / "a.txt", program);
    EXPECT_THAT(folder.Names(), testing::UnorderedElementsAre("a.norava", "a.txt"));
    const StateBlock block = ToBlock(program);
    EXPECT_EQ(ToBlock(LoadProgram(folder / "a.norava")), block);
    EXPECT_EQ(ToBlock(LoadProgram(folder / "a.txt")), block);

    Bytes hostFile(60);
    std::memcpy(hostFile.data(), "CcnK", 4);
    std::memcpy(hostFile.data() + 8, "FPCh", 4);
    EXPECT_THROW(LoadProgram(folder.Write("empty.fxp", hostFile)), BadInput);
    hostFile.insert(hostFile.end(), block.begin(), block.end());
    EXPECT_EQ(ToBlock(LoadProgram(folder.Write("b.fxp", hostFile))), block);
    hostFile[8] = 'x';
    EXPECT_THROW(LoadProgram(folder.Write("c.fxp", hostFile)), BadInput);
    EXPECT_THROW(LoadProgram(folder.Write("c.norava", hostFile)), BadInput);
    EXPECT_THROW(LoadProgram(folder.Path()), BadInput);
}

TEST(ProgramFile, BankRefusesAProgramUnderAnotherName) {
    const ScratchFolder folder;
    std::filesystem::create_directory(folder / "Bass");
    Program program;
    program.name = "Right";
    SaveProgram(folder / "Bass/Right.txt", program);
    ASSERT_EQ(LoadBank(folder.Path()).size(), 1u);
    EXPECT_EQ(LoadBank(folder.Path())[0].category, "Bass");
    SaveProgram(folder / "Bass/Wrong.txt", program);
    EXPECT_THROW(LoadBank(folder.Path()), BadInput);
}

}  // namespace
}  // namespace norava::test
