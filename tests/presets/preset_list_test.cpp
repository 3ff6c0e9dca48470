#include "presets/preset_list.h"

#include <gtest/gtest.h>

#include "files/natural_order.h"
#include "parameters/parameter_index.h"
#include "presets/program_folder.h"

namespace norava {
namespace {

using test::Block;
using test::Fxp;
using test::LibrarySynth;
using test::Listing;
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
    const ProgramFolder folder{"Pads/Warm 10.norava", "Pads/warm 2.norava", "Pads/Warm 2.fxp",
                               "Pads/.hidden.norava", "Pads/X.NORAVA",      "Pads/readme.txt",
                               "Bass.old/One.norava", "bells/a.b.norava",   ".trash/gone.norava",
                               "loose.norava"};
    std::filesystem::create_directories(folder.Path("Empty"));
    std::filesystem::create_directories(folder.Path("Pads/folder.norava"));

    LibrarySynth instance(folder.Place());
    EXPECT_EQ(Listing(*instance.list.GetLibrary()),
              "Bass: One | bells: a.b | Empty: | Pads: Warm 2 warm 2 Warm 10");
    EXPECT_EQ(instance.list.GetCurrentCat(), 0);
    EXPECT_EQ(NameOf(instance.synth), "One") << "an instance starts with the first program";
    EXPECT_EQ(instance.Value(), 0.5f);
}

TEST(PresetList, StepsWithoutWrappingAround) {
    const ProgramFolder folder{"A/1.norava", "A/2.norava", "B/1.norava"};
    std::filesystem::create_directories(folder.Path("C"));
    LibrarySynth instance(folder.Place());
    CPresetList& list = instance.list;

    EXPECT_FALSE(list.PrevProgram());
    EXPECT_TRUE(list.NextProgram());
    EXPECT_FALSE(list.NextProgram());
    EXPECT_EQ(list.GetProgramPath(), folder.Path("A/2.norava"));
    for (const int refused : {3, -1, 0})
        EXPECT_FALSE(list.SetCurrentCat(refused));
    EXPECT_TRUE(list.SetCurrentCat(1));
    EXPECT_EQ(list.GetCurrentPrg(), 0);
    EXPECT_TRUE(list.SetCurrentCat(2));
    EXPECT_EQ(list.GetCurrentPrg(), -1) << "nothing in it";
    EXPECT_FALSE(list.PrevProgram());

    EXPECT_TRUE(list.CreateCatList());
    EXPECT_EQ(list.GetCurrentCat(), -1);
    EXPECT_FALSE(list.CreatePrgList());
    EXPECT_FALSE(list.SetCurrentPrg(0));
    EXPECT_EQ(list.GetCatFolder(), folder.Root());
    std::filesystem::remove_all(folder.Root());
    EXPECT_FALSE(list.CreateCatList());
}

TEST(PresetList, FindsAFileByPathBeforeName) {
    const ProgramFolder folder{"Pads/Warm Pad.fxp", "Pads/Warm Pad.norava", "Pads/First.norava",
                               "Bass/x.norava",     "Bass.old/x.norava",    "Bass.old/y.norava"};
    LibrarySynth instance(folder.Place());
    const auto at = [&](const std::string& path) {
        instance.list.SetProgramPath(path.c_str());
        return std::pair(instance.list.GetCurrentCat(), instance.list.GetCurrentPrg());
    };
    EXPECT_EQ(at(folder.Path("Pads/Warm Pad.fxp")), std::pair(2, 1));
    EXPECT_EQ(at(folder.Path("Bass.old/y.norava")), std::pair(1, 1));
    EXPECT_EQ(at("/elsewhere/Pads/Warm Pad.x"), std::pair(2, 1)) << "the name as listed";
    EXPECT_EQ(at("/elsewhere/Keys/Warm Pad.norava"), std::pair(-1, -1));
    EXPECT_EQ(instance.list.GetCategoryName(), "Keys");
}

TEST(PresetList, LoadsProgramsAndRefusesTheRest) {
    const ProgramFolder folder({"A/start.norava"}, 0.25f);
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
    EXPECT_TRUE(load(Fxp(Block(0.5f).substr(0, 8))));
    EXPECT_EQ(instance.Value(0), 0.5f);
    EXPECT_EQ(instance.Value(1), 0.0f) << "the bytes that such a file lacks are zeros";

    for (const std::string& bytes :
         {Block(1.0f).substr(0, 16), std::string(), "1qzX" + Block(1.0f).substr(4),
          Fxp("").substr(0, 59), Fxp(""), Fxp("1qz"), Block(1.0f) + std::string(65536, 'x')}) {
        EXPECT_FALSE(load(bytes)) << bytes.size();
        EXPECT_EQ(instance.Value(0), 0.5f);
        EXPECT_TRUE(instance.told.empty());
    }
    for (const std::string& path : {folder.Root(), folder.Path("none"), std::string("/dev/zero"),
                                    folder.Path(std::string(2000, 'x')), std::string()})
        EXPECT_FALSE(instance.list.LoadProgramFromFile(path.c_str())) << path;
    EXPECT_FALSE(instance.list.LoadProgramFromFile(nullptr)) << "nobody to ask";

    instance.list.ResetProgram();
    EXPECT_EQ(NameOf(instance.synth), "<noname>");
    EXPECT_EQ(instance.Value(), instance.synth.GetParamDefaultValue(3));
    EXPECT_FALSE(instance.told.empty());
}

TEST(PresetList, SavesWhereItIs) {
    const ProgramFolder folder{"A/start.norava"};
    LibrarySynth instance(folder.Place());
    instance.synth.SetParamValue(3, 0.125f);
    ASSERT_TRUE(instance.list.SaveProgramToFile("Grüße 2.5"));
    EXPECT_EQ(instance.list.GetProgramPath(), folder.Path("A/Grüße 2.5.norava"));
    EXPECT_EQ(NameOf(instance.synth), "Grüße 2.5");
    EXPECT_EQ(instance.list.GetCurrentPrg(), 0);
    EXPECT_EQ(folder.Read("A/Grüße 2.5.norava").size(), std::size_t{kStateSize});

    EXPECT_EQ(LibrarySynth(folder.Place()).Value(), 0.125f);
    instance.list.CreateCatList();
    ASSERT_TRUE(instance.list.SaveProgramToFile("Mine.norava"));
    EXPECT_EQ(Listing(*instance.list.GetLibrary()), "A: Grüße 2.5 start | User: Mine");
    EXPECT_EQ(instance.list.GetCategoryName(), "User");
    EXPECT_FALSE(instance.list.SaveProgramToFile(folder.Root().c_str())) << "a folder";
    EXPECT_FALSE(instance.list.SaveProgramToFile(std::string(2000, 'x').c_str()));
    for (const char* const noName : {"", ".", ".."})
        EXPECT_FALSE(instance.list.SaveProgramToFile(noName)) << noName;
    EXPECT_FALSE(instance.list.WouldReplace("../A/start")) << "in another folder";
    EXPECT_EQ(instance.list.GetProgramName(), "Mine") << "a failed save moves nothing";
}

// Programs that MIDI selects while audio runs.

constexpr int kNoteOn = 0x90;
constexpr int kController = 0xB0;
constexpr int kProgram = 0xC0;

TEST(ProgramChange, SoundsAsAFileLoadedThere) {
    const ProgramFolder folder;
    for (const int i : {0, 1, 2}) {
        LibrarySynth sounding(folder.Place());
        sounding.synth.SetParamValue(param::kTune, 0.1f * static_cast<float>(i));
        sounding.synth.SetParamValue(param::kReverbOn, 1.0f);
        sounding.list.SaveProgramToFile(std::to_string(i).c_str());
    }
    LibrarySynth byMidi(folder.Place());
    byMidi.Send(kNoteOn, 60, 100);
    byMidi.Send(kProgram, 2, 0, 1000);
    byMidi.Send(kNoteOn, 67, 100, 1000);
    const std::vector<float> played = byMidi.Render(4000, 4000).left;

    LibrarySynth byHand(folder.Place());
    byHand.Send(kNoteOn, 60, 100);
    std::vector<float> expected = byHand.Render(1000).left;
    ASSERT_TRUE(byHand.list.LoadProgramFromFile(folder.Path("User/2.norava").c_str()));
    byHand.Send(kNoteOn, 67, 100);
    std::ranges::copy(byHand.Render(3000).left, std::back_inserter(expected));
    EXPECT_EQ(played, expected);
    EXPECT_EQ(NameOf(byMidi.synth), "2");
    EXPECT_EQ(byMidi.told, byHand.told) << "the host hears of the same parameters";
    EXPECT_EQ(byMidi.told.size(), 1u);

    byMidi.synth.SetParamValue(param::kTune, 0.9f);
    byMidi.Send(kProgram, 2);
    byMidi.Send(kProgram, 3);
    byMidi.Render(64);
    EXPECT_EQ(byMidi.Value(param::kTune), 0.9f) << "the current program and one that is not there";
}

TEST(ProgramChange, FindsEveryCategoryByController32AndMovesOverWhatIsNoProgram) {
    const ProgramFolder folder;
    for (const int i : {0, 1, 2}) {
        folder.Write(std::to_string(i) + "/first.norava", Block(0.25f * static_cast<float>(i)));
        folder.Write(std::to_string(i) + "/second.norava", "no program at all, whatever its name");
    }
    std::filesystem::create_directories(folder.Path("3"));
    LibrarySynth instance(folder.Place());
    for (const int i : {127, 4, 3, 2, 1, 0, 0}) {  // the current one loads its first program again
        instance.synth.SetParamValue(3, 0.9f);
        instance.Send(kController, 32, i);
        instance.Render(16);
        EXPECT_EQ(instance.list.GetCurrentCat(), i > 3 ? 0 : i);
        EXPECT_EQ(instance.Value(), i < 3 ? 0.25f * static_cast<float>(i) : 0.9f) << i;
    }
    instance.Send(kProgram, 1);
    instance.Render(64);
    EXPECT_EQ(instance.list.GetCurrentPrg(), 1);
    EXPECT_EQ(instance.Value(), 0.0f);
    EXPECT_EQ(NameOf(instance.synth), "first");
}

}  // namespace
}  // namespace norava
