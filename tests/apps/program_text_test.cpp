#include "program_text/program_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>

#include "files/scratch_folder.h"
#include "parameters/parameter_table.h"
#include "presets/factory_bank.h"
#include "program/adjust.h"
#include "program_text/program_file.h"
#include "render/bad_input.h"

namespace norava::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::ThrowsMessage;

TEST(ProgramText, TakesWhatPeopleWrite) {
    const Program program = ParseProgram(
        "\xEF\xBB\xBF# a comment\n Name = Two Words \r\nTags = pitched,  soft\nstr1 decay = 0.25\n"
        "Str1 Decay Inv = On\nString Ratio = 1 : 4\nDescription = a = b\n"
        "Mod 3 = Mod Whl > str2 damp -0.5\nMod 8 = lfo > hi-cut ctf 1\n"
        "Matrix 7 Destination = STR2 damp",
        "x.txt");
    EXPECT_EQ(program.name, "Two Words");
    EXPECT_EQ(program.description, "a = b");
    EXPECT_TRUE(program.HasTag("soft"));
    EXPECT_EQ(program.values[param::kString1Decay], 0.25f);
    EXPECT_EQ(program.values[param::kString1DecayInvert], 1.0f);
    EXPECT_EQ(program.values[param::kStringRatio], 6.0f);
    EXPECT_THAT(std::span(program.values).subspan(param::kMatrix + 8, 4),
                ElementsAre(3.0f, 0.5f, 1.0f, 12.0f));
    EXPECT_EQ(program.values[param::kMatrix + 27], program.values[param::kMatrix + 11]);
    EXPECT_EQ(program.values[param::kMasterLevel], 0.5f) << "what is not named keeps its default";
    EXPECT_EQ(ToBlock(ParseProgram(WriteProgram(program), "x.txt")), ToBlock(program));
}

TEST(ProgramText, NamesTheLineThatItCannotTake) {
    const std::pair<std::string, const char*> cases[] = {
        {"Name = A\n\nStr1 Decay = 1.5", "x.txt:3: "},
        {"Name = A\nTune = 0.5\ntune = 0.5", "twice"},
        {"Mod 1 = lfo > pan 1\nMatrix 1 Amount = 1", "twice"},
        {"Mod 9 = lfo > pan 1", "Mod 8"},
        {"Mod 1 = lfo > moon 1", "hi-cut ctf"},
        {"Tune = 0.5", "'Name = ...'"},
        {"Name = " + std::string(128, 'x'), "127"},
        {"Name = a\\x0", "hexadecimal"},
    };
    for (const auto& [text, complaint] : cases)
        EXPECT_THAT([&given = text] { ParseProgram(given, "x.txt"); },
                    ThrowsMessage<BadInput>(HasSubstr(complaint)));
}

// Which files are taken, and that any bits of a block go through a text, fuzz targets hold.
TEST(ProgramFile, ReadsBlocksTextsAndHostsFiles) {
    const ScratchFolder folder;
    Program program;
    program.name = "Saved";
    program.values[param::kReverbMix] = 0.3f;
    SaveProgram(folder / "a.norava", program);
    SaveProgram(folder / "a.txt", program);
    const StateBlock block = ToBlock(program);
    folder.Write("B.FXP",
                 "CcnK????FPCh" + std::string(48, '\0') + std::string(block.begin(), block.end()));
    for (const char* name : {"a.norava", "a.txt", "B.FXP"})
        EXPECT_EQ(ToBlock(LoadProgram(folder / name)), block) << name;
    EXPECT_EQ(folder.Names().size(), 3u) << "nothing is left of the saving";
    EXPECT_THROW(LoadProgram(folder.Path()), BadInput);
}

TEST(ProgramAdjust, TakesTheLastSlotOnlyWhereItIsFree) {
    const ScratchFolder folder;
    const std::pair<std::string, const char*> cases[] = {
        {"Mod 8 = velocity > pan 0.9", "\nTune = 0.5783\nMod 8 = velocity > pan 0.9"},  // +15 cents
        {"Mod 8 = --- > pan 0.5", "Mod 8 = key num > pitch 0.516"},
        {"Mod 8 = key num > pitch 0.5", "Mod 8 = key num > pitch 0.719"},
    };
    for (const auto& [slot, wanted] : cases) {
        CheckedProgram checked;
        checked.entry.path = folder.Write("Flat.txt", "Name = Flat\ntune = 0.5\n" + slot);
        checked.entry.program = LoadProgram(checked.entry.path);
        checked.figures.centsA3 = -10.0;
        checked.figures.centsC5 = -20.0;
        std::ostringstream notes;
        EXPECT_TRUE(AdjustPitch(checked, notes));
        EXPECT_THAT(folder.Read("Flat.txt"), HasSubstr(wanted));
        EXPECT_EQ(notes.str().empty(), slot != cases[0].first) << notes.str();
    }
}

// What is built in is what the texts say, all of it, and fit for a library on every system.
TEST(FactoryBank, HoldsTheTexts) {
    const std::vector<BankEntry> texts = LoadBank(NORAVA_PROGRAMS);
    const auto bank = GetFactoryBank();
    ASSERT_EQ(bank.size(), texts.size());
    std::set<std::string> categories, names;
    for (std::size_t i = 0; i < bank.size(); ++i) {
        const auto& [category, path, program] = texts[i];
        SCOPED_TRACE(program.name);
        EXPECT_EQ(bank[i].category, category);
        EXPECT_EQ(bank[i].name, program.name);
        const auto toByte = [](char c) { return static_cast<unsigned char>(c); };
        EXPECT_TRUE(std::ranges::equal(bank[i].block, ToBlock(program), {}, {}, toByte));
        categories.insert(category);
        names.insert(program.name);
        EXPECT_FALSE(program.author.empty() || program.tags.empty() || program.description.empty());
        EXPECT_EQ((category + program.name).find_first_of("/\\:*?\"<>|."), std::string::npos);
    }
    EXPECT_GE(categories.size(), 8u);
    EXPECT_EQ(names.size(), bank.size()) << "none twice";
    EXPECT_GE(bank.size(), 96u);
}

}  // namespace
}  // namespace norava::test
