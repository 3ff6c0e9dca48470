#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "presets/first_start.h"
#include "presets/program_folder.h"

// The library on disk: its first start, what changes in it while instances run, and folders that
// nobody would wish for.

namespace norava {
namespace {

namespace fs = std::filesystem;
using test::Block;
using test::Eventually;
using test::LibrarySynth;
using test::Listing;
using test::NameOf;
using test::ProgramFolder;

class WithBank : public testing::Test {
  protected:
    std::span<const unsigned char> Bytes(const std::string& block) {
        return {reinterpret_cast<const unsigned char*>(block.data()), block.size()};
    }
    LibraryPlace Place() { return {.root = folder.Root(), .bank = bank}; }
    // Everything beside the root and above it.
    long NumEntries() {
        return std::distance(fs::recursive_directory_iterator(folder.scratch.Path()), {});
    }

    ProgramFolder folder;
    std::string first = Block(0.25f);
    std::string second = Block(0.5f);
    std::vector<FactoryProgram> bank = {{"Keys", "Ten 10", Bytes(second)},
                                        {"Keys", "Ten 9", Bytes(first)},
                                        {"Bass", "Low", Bytes(second)}};
};

TEST_F(WithBank, IsWrittenOnceAndNeverAgain) {
    {
        LibrarySynth instance(Place());
        EXPECT_EQ(NameOf(instance.synth), "Low");
        EXPECT_EQ(Listing(*instance.list.GetLibrary()), "Bass: Low | Keys: Ten 9 Ten 10");
        EXPECT_TRUE(Eventually([&] { return fs::exists(folder.Path("Keys/Ten 9.norava")); }));
        EXPECT_EQ(folder.Read("Keys/Ten 9.norava"), first);
    }
    EXPECT_EQ(NumEntries(), 1 + 2 + 3) << "nothing beside it";
    fs::remove_all(folder.Path("Keys"));
    LibrarySynth instance(Place());
    EXPECT_EQ(Listing(*instance.list.GetLibrary()), "Bass: Low") << "the user's wish";
}

TEST_F(WithBank, StaysInMemoryWhereItCannotBeWritten) {
    // A file where the parent folder should be, which the superuser cannot pass either.
    folder.scratch.Write("blocked", "");
    LibraryPlace place = Place();
    place.root = folder.scratch.Path("blocked/root");
    LibrarySynth instance(place);
    EXPECT_EQ(NameOf(instance.synth), "Low");
    instance.Send(0, 0xB0, 32, 1);
    instance.Render(16);
    EXPECT_EQ(NameOf(instance.synth), "Ten 9");
    EXPECT_TRUE(instance.list.NextProgram());
    EXPECT_TRUE(instance.list.LoadProgramFromFile(instance.list.GetProgramPath().c_str()));
    EXPECT_EQ(instance.Value(), 0.5f);
    EXPECT_FALSE(instance.list.SaveProgramToFile("Mine"));

    // When there is room again, the bank comes to lie beside what is saved.
    fs::remove(folder.scratch.Path("blocked"));
    EXPECT_TRUE(instance.list.SaveProgramToFile("Mine"));
    EXPECT_EQ(Listing(*instance.list.GetLibrary()), "Bass: Low | Keys: Mine Ten 9 Ten 10");
}

TEST_F(WithBank, NeverTakesAnotherThingsPlace) {
    fs::create_symlink("nowhere", folder.Root());
    EXPECT_FALSE(WriteFactoryBank(folder.Root(), "norava", bank));
    EXPECT_TRUE(fs::is_symlink(folder.Root()));
    fs::remove(folder.Root());
    fs::create_directories(folder.Root());
    EXPECT_FALSE(WriteFactoryBank(folder.Root(), "norava", bank));
    EXPECT_TRUE(fs::is_empty(folder.Root()));
    EXPECT_EQ(NumEntries(), 1);
}

TEST(PresetLibrary, SeesWhatOthersDo) {
    const ProgramFolder folder;
    for (const char* name : {"A/one.norava", "A/two.norava", "B/x.norava"})
        folder.Write(name, Block(0.5f));
    LibrarySynth instance(folder.Place());
    LibrarySynth other(folder.Place());
    instance.list.SetCurrentCat(0);
    instance.list.SetCurrentPrg(1);
    const auto shows = [&](const std::string& listing) {
        return Eventually([&] { return Listing(*instance.list.GetLibrary()) == listing; });
    };
    folder.Write("A/a first.norava", Block(0.5f));
    EXPECT_TRUE(shows("A: a first one two | B: x"));
    EXPECT_EQ(instance.list.GetCurrentPrg(), 2) << "the same file at its new number";
    fs::rename(folder.Path("B"), folder.Path("0 zero"));
    EXPECT_TRUE(shows("0 zero: x | A: a first one two"));
    EXPECT_EQ(instance.list.GetCurrentCat(), 1);
    fs::rename(folder.Path("0 zero/x.norava"), folder.Path("0 zero/y.norava"));
    EXPECT_TRUE(shows("0 zero: y | A: a first one two")) << "a renamed folder is watched too";
    folder.Write("new/deep.norava", Block(0.5f));
    EXPECT_TRUE(shows("0 zero: y | A: a first one two | new: deep"));
    fs::remove(folder.Path("A/two.norava"));
    EXPECT_TRUE(shows("0 zero: y | A: a first one | new: deep"));
    EXPECT_EQ(instance.list.GetCurrentPrg(), -1) << "it is gone";
    EXPECT_EQ(instance.list.GetProgramName(), "two");

    folder.Write("A/one.norava", Block(0.75f));
    EXPECT_TRUE(Eventually([&] {
        instance.Send(0, 0xB0, 32, 0);
        instance.Send(0, 0xB0, 32, 1);
        instance.Send(0, 0xC0, 1);
        instance.Render(16);
        return instance.Value() == 0.75f;
    })) << "new bytes under an old name";
    ASSERT_TRUE(other.list.SaveProgramToFile(folder.Path("A/saved.norava").c_str()));
    EXPECT_EQ(other.list.GetProgramName(), "saved");
    EXPECT_EQ(Listing(*instance.list.GetLibrary()), "0 zero: y | A: a first one saved | new: deep")
        << "at once in the same process";
}

TEST(PresetLibrary, IsNotHeldUpByHostileFolders) {
    const ProgramFolder folder;
    folder.Write("A/good.norava", Block(0.5f));
    folder.Write("locked/unreadable.norava", Block(0.5f));
    ASSERT_EQ(mkfifo(folder.Path("A/pipe.norava").c_str(), 0600), 0);
    fs::create_symlink("/dev/zero", folder.Path("A/device.norava"));
    fs::create_symlink("nowhere", folder.Path("A/dangling.norava"));
    fs::create_symlink("loop.norava", folder.Path("A/loop.norava"));
    fs::create_directory_symlink("..", folder.Path("A/folder.norava"));
    fs::create_directory_symlink(".", folder.Path("self"));
    fs::create_directory_symlink("turn", folder.Path("turn"));
    ASSERT_EQ(mkfifo(folder.Path("pipe").c_str(), 0600), 0);
    folder.Write("A/huge.norava", "");
    fs::resize_file(folder.Path("A/huge.norava"), std::uintmax_t{1} << 32);
    fs::permissions(folder.Path("locked"), fs::perms::none);

    LibrarySynth instance(folder.Place());
    EXPECT_EQ(NameOf(instance.synth), "good");
    const std::string listing = Listing(*instance.list.GetLibrary());
    EXPECT_EQ(listing.substr(0, listing.find(" |")), "A: good huge");
    for (const char* name : {"pipe", "device", "dangling", "loop", "folder", "huge"}) {
        const std::string path = folder.Path("A/" + std::string(name) + ".norava");
        EXPECT_FALSE(instance.list.LoadProgramFromFile(path.c_str())) << name;
    }
    EXPECT_FALSE(instance.list.SaveProgramToFile(folder.Path("A/pipe.norava").c_str()));
    fs::permissions(folder.Path("locked"), fs::perms::owner_all);
}

TEST(PresetLibrary, PlaysAtOnceAndReadsOnInTheBackground) {
    constexpr int kFiles = 100'000;
    const ProgramFolder folder;
    const std::string block = Block(0.5f);
    folder.Write("A/0.norava", block);
    // Links to one file: making them is quicker, reading them is not.
    for (int i = 1; i < kFiles; ++i) {
        const std::string path = folder.Path("A/" + std::to_string(i) + ".norava");
        const std::string source = folder.Path("A/" + std::to_string(i / 10'000) + ".norava");
        if (i < 10)
            folder.Write("A/" + std::to_string(i) + ".norava", block);
        else
            ASSERT_EQ(link(source.c_str(), path.c_str()), 0);
    }
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    const auto seconds = [&] {
        return std::chrono::duration<double>(Clock::now() - start).count();
    };
    LibrarySynth instance(folder.Place());
    RecordProperty("SecondsUntilPlaying", std::to_string(seconds()));
    EXPECT_EQ(NameOf(instance.synth), "0");
    const bool completeBefore = instance.list.GetLibrary()->IsComplete();
    instance.Send(0, 0xC0, 127);
    instance.Send(1, 0x90, 60, 100);
    const std::vector<float> sound = instance.Render(4096);
    EXPECT_TRUE(std::ranges::any_of(sound, [](float x) { return x != 0.0f; }));
    EXPECT_TRUE(Eventually([&] { return instance.list.GetLibrary()->IsComplete(); }));
    RecordProperty("SecondsUntilComplete", std::to_string(seconds()));
    RecordProperty("CompleteAtStart", completeBefore);
    ASSERT_FALSE(instance.list.GetLibrary()->Categories().empty());
    EXPECT_EQ(instance.list.GetLibrary()->Categories().front().programs.size(),
              std::size_t{kFiles});
    instance.Render(64);
    EXPECT_EQ(NameOf(instance.synth), "127") << "selected before it was read";
}

}  // namespace
}  // namespace norava
