#include "presets/preset_list.h"

#include <gtest/gtest.h>

#include "files/natural_order.h"
#include "presets/program_folder.h"

namespace norava {
namespace {

using test::Block;
using test::Fxp;
using test::LibrarySynth;
using test::NameOf;
using test::ProgramFolder;

TEST(NaturalOrder, IsTheOneOfPeopleAndTheSameEverywhere) {
    std::vector<std::string> ordered = {
        "",         "1",       "01a",  "2 b", "10 a",        "Bass",          "bass",     "Bass 2",
        "Bass 010", "Bass 11", "bell", "Z",   "\xC3\x84hre", "\xC3\xA4hre 2", "\xD0\x91", "\xFF"};
    ordered.insert(ordered.end() - 1, {"🎸", "\xC3"});  // the last two are no characters
    for (std::size_t i = 0; i < ordered.size(); ++i) {
        for (std::size_t j = 0; j < ordered.size(); ++j) {
            const int order = CompareNaturally(ordered[i], ordered[j]);
            EXPECT_EQ((order > 0) - (order < 0), (i > j) - (i < j))
                << '"' << ordered[i] << "\" and \"" << ordered[j] << '"';
        }
    }
    // A letter of each way in which small letters follow from capital ones.
    const std::string capitals = "ØĀĹΩЯЁ", small = "øāĺωяё";
    for (std::size_t i = 0; i < capitals.size(); i += 2) {
        EXPECT_LT(CompareNaturally(capitals.substr(i, 2) + '1', small.substr(i, 2) + '2'), 0) << i;
        EXPECT_GT(CompareNaturally(capitals.substr(i, 2) + '2', small.substr(i, 2) + '1'), 0) << i;
    }
}

TEST(PresetList, ListsWhatPeopleSee) {
    const ProgramFolder folder;
    for (const char* name :
         {"Pads/Warm 10.norava", "Pads/warm 2.norava", "Pads/Warm 2.fxp", "Pads/.hidden.norava",
          "Pads/X.NORAVA", "Pads/readme.txt", "Bass.old/One.norava", "bells/a.b.norava",
          ".trash/gone.norava", "loose.norava"})
        folder.Write(name, Block(0.5f));
    std::filesystem::create_directories(folder.Path("Empty"));
    std::filesystem::create_directories(folder.Path("Pads/folder.norava"));

    LibrarySynth instance(folder.Place());
    EXPECT_EQ(test::Listing(*instance.list.GetLibrary()),
              "Bass: One | bells: a.b | Empty: | Pads: Warm 2 warm 2 Warm 10");
    EXPECT_EQ(instance.list.GetCurrentCat(), 0);
    EXPECT_EQ(NameOf(instance.synth), "One") << "an instance starts with the first program";
    EXPECT_EQ(instance.Value(), 0.5f);
}

TEST(PresetList, StepsWithoutWrappingAround) {
    const ProgramFolder folder;
    for (const char* name : {"A/1.norava", "A/2.norava", "B/1.norava"})
        folder.Write(name, Block(0.5f));
    std::filesystem::create_directories(folder.Path("C"));
    LibrarySynth instance(folder.Place());
    CPresetList& list = instance.list;

    EXPECT_FALSE(list.PrevProgram());
    EXPECT_TRUE(list.NextProgram());
    EXPECT_EQ(list.GetProgramPath(), folder.Path("A/2.norava"));
    EXPECT_FALSE(list.NextProgram());
    EXPECT_EQ(list.GetCurrentPrg(), 1);
    EXPECT_FALSE(list.SetCurrentPrg(1)) << "no change";
    EXPECT_FALSE(list.SetCurrentCat(3));
    EXPECT_FALSE(list.SetCurrentCat(-1));
    EXPECT_TRUE(list.SetCurrentCat(1));
    EXPECT_EQ(list.GetCurrentPrg(), 0);
    EXPECT_EQ(list.GetCategoryName(), "B");
    EXPECT_TRUE(list.SetCurrentCat(2));
    EXPECT_EQ(list.GetCurrentPrg(), -1) << "nothing in it";
    EXPECT_FALSE(list.PrevProgram());
    EXPECT_FALSE(list.SetCurrentCat(2));

    EXPECT_TRUE(list.CreateCatList());
    EXPECT_EQ(list.GetCurrentCat(), -1);
    EXPECT_FALSE(list.CreatePrgList());
    EXPECT_FALSE(list.SetCurrentPrg(0));
    EXPECT_EQ(list.GetCatFolder(), folder.Root());
    std::filesystem::remove_all(folder.Root());
    EXPECT_FALSE(list.CreateCatList());
}

TEST(PresetList, FindsAFileByPathBeforeName) {
    const ProgramFolder folder;
    for (const char* name : {"Pads/Warm Pad.fxp", "Pads/Warm Pad.norava", "Pads/First.norava",
                             "Bass/x.norava", "Bass.old/x.norava", "Bass.old/y.norava"})
        folder.Write(name, Block(0.5f));
    LibrarySynth instance(folder.Place());
    const auto at = [&](const std::string& path) {
        instance.list.SetProgramPath(path.c_str());
        return std::pair(instance.list.GetCurrentCat(), instance.list.GetCurrentPrg());
    };
    EXPECT_EQ(at(folder.Path("Pads/Warm Pad.fxp")), std::pair(2, 1));
    EXPECT_EQ(at(folder.Path("Pads/Warm Pad.norava")), std::pair(2, 2));
    EXPECT_EQ(at(folder.Path("Bass.old/y.norava")), std::pair(1, 1));
    EXPECT_EQ(at("/elsewhere/Pads/Warm Pad.x"), std::pair(2, 1)) << "the name as listed";
    EXPECT_EQ(at("/elsewhere/Pads/unknown.norava"), std::pair(2, 0));
    EXPECT_EQ(instance.list.GetProgramName(), "unknown");
    EXPECT_EQ(at("/elsewhere/Keys/Warm Pad.norava"), std::pair(-1, -1));
    EXPECT_EQ(instance.list.GetCategoryName(), "Keys");
    EXPECT_EQ(at("bare.norava"), std::pair(-1, -1));
}

TEST(PresetList, LoadsProgramsAndRefusesTheRest) {
    const ProgramFolder folder;
    folder.Write("A/start.norava", Block(0.25f));
    LibrarySynth instance(folder.Place());
    const auto load = [&](const std::string& bytes) {
        instance.told.clear();
        return instance.list.LoadProgramFromFile(folder.Write("A/file.bin", bytes).c_str());
    };
    EXPECT_TRUE(load(Block(0.5f)));
    EXPECT_EQ(instance.Value(), 0.5f);
    EXPECT_EQ(NameOf(instance.synth), "file") << "not the name inside";
    EXPECT_EQ(instance.told.size(), static_cast<std::size_t>(kNumHostParameters));
    EXPECT_TRUE(load(Block(0.5f)));
    EXPECT_TRUE(instance.told.empty()) << "nothing differs";
    EXPECT_TRUE(load(Fxp(Block(0.75f))));
    EXPECT_EQ(instance.Value(113), 0.75f);
    // The bytes that such a file lacks are zeros.
    EXPECT_TRUE(load(Fxp(Block(0.5f).substr(0, 8))));
    EXPECT_EQ(instance.Value(0), 0.5f);
    EXPECT_EQ(instance.Value(1), 0.0f);
    EXPECT_EQ(instance.Value(113), 0.75f);
    EXPECT_TRUE(load(Block(0.25f).substr(0, 17)));
    EXPECT_EQ(instance.Value(2), 0.25f);
    EXPECT_TRUE(load(Block(0.5f) + std::string(60000, 'x')));

    const float kept = instance.Value();
    for (const std::string& bytes :
         {Block(1.0f).substr(0, 16), std::string(), "1qzX" + Block(1.0f).substr(4),
          Fxp("").substr(0, 59), Fxp(""), Fxp("1qz"), Block(1.0f) + std::string(65536, 'x')}) {
        EXPECT_FALSE(load(bytes)) << bytes.size();
        EXPECT_EQ(instance.Value(), kept);
        EXPECT_TRUE(instance.told.empty());
    }
    for (const std::string& path : {folder.Root(), folder.Path("none"), std::string("/dev/zero"),
                                    folder.Path(std::string(2000, 'x')), std::string()})
        EXPECT_FALSE(instance.list.LoadProgramFromFile(path.c_str())) << path;
    EXPECT_FALSE(instance.list.LoadProgramFromFile(nullptr)) << "nobody to ask";
}

TEST(PresetList, ResetsTheProgramAndTellsTheHost) {
    const ProgramFolder folder;
    folder.Write("A/start.norava", Block(0.5f));
    LibrarySynth instance(folder.Place());
    instance.told.clear();
    instance.list.ResetProgram();
    EXPECT_EQ(NameOf(instance.synth), "<noname>");
    EXPECT_EQ(instance.Value(), instance.synth.GetParamDefaultValue(3));
    EXPECT_EQ(instance.list.GetCurrentPrg(), 0);
    std::size_t changed = 0;
    for (int i = 0; i < kNumHostParameters; ++i)
        changed += instance.synth.GetParamDefaultValue(i) != 0.5f;
    EXPECT_EQ(instance.told.size(), changed);
}

TEST(PresetList, SavesWhereItIs) {
    const ProgramFolder folder;
    folder.Write("A/start.norava", Block(0.25f));
    LibrarySynth instance(folder.Place());
    instance.synth.SetParamValue(3, 0.125f);
    ASSERT_TRUE(instance.list.SaveProgramToFile("Grüße 2.5"));
    EXPECT_EQ(instance.list.GetProgramPath(), folder.Path("A/Grüße 2.5.norava"));
    EXPECT_EQ(NameOf(instance.synth), "Grüße 2.5");
    EXPECT_EQ(instance.list.GetCurrentPrg(), 0);
    EXPECT_EQ(folder.Read("A/Grüße 2.5.norava").size(), std::size_t{kStateSize});

    LibrarySynth other(folder.Place());
    EXPECT_EQ(other.Value(), 0.125f);
    instance.list.CreateCatList();
    ASSERT_TRUE(instance.list.SaveProgramToFile("Mine.norava"));
    EXPECT_EQ(test::Listing(*instance.list.GetLibrary()), "A: Grüße 2.5 start | User: Mine");
    EXPECT_EQ(instance.list.GetCategoryName(), "User");
    EXPECT_FALSE(instance.list.SaveProgramToFile(folder.Root().c_str())) << "a folder";
    EXPECT_FALSE(instance.list.SaveProgramToFile(std::string(2000, 'x').c_str()));
    EXPECT_EQ(instance.list.GetProgramName(), "Mine") << "a failed save moves nothing";
}

}  // namespace
}  // namespace norava
