#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

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
    instance.Send(0xB0, 32, 1);
    instance.Render(16);
    EXPECT_EQ(NameOf(instance.synth), "Ten 9");
    PresetLibrary::Open(place)->Refresh({});  // it looks for the root again and again
    EXPECT_TRUE(instance.list.NextProgram());
    EXPECT_TRUE(instance.list.LoadProgramFromFile(instance.list.GetProgramPath().c_str()));
    EXPECT_EQ(instance.Value(), 0.5f);
    EXPECT_FALSE(instance.list.SaveProgramToFile("Mine"));

    // When there is room again, the bank comes to lie beside what is saved.
    fs::remove(folder.scratch.Path("blocked"));
    EXPECT_TRUE(instance.list.SaveProgramToFile("Mine"));
    EXPECT_EQ(Listing(*instance.list.GetLibrary()), "Bass: Low | Keys: Mine Ten 9 Ten 10");
}

TEST(PresetLibrary, SeesWhatOthersDo) {
    const ProgramFolder folder{"A/one.norava", "A/two.norava", "B/x.norava"};
    LibrarySynth instance(folder.Place());
    LibrarySynth other(folder.Place());
    instance.list.SetCurrentPrg(1);
    const auto shows = [&](const std::string& listing) {
        return Eventually([&] { return Listing(*instance.list.GetLibrary()) == listing; });
    };
    folder.Write("A/a first.norava", Block(0.5f));
    EXPECT_TRUE(shows("A: a first one two | B: x"));
    EXPECT_EQ(instance.list.GetCurrentPrg(), 2) << "the same file at its new number";
    fs::rename(folder.Path("B"), folder.Path("0"));
    EXPECT_TRUE(shows("0: x | A: a first one two"));
    EXPECT_EQ(instance.list.GetCurrentCat(), 1);
    folder.Write("0/deep.norava", Block(0.5f));
    EXPECT_TRUE(shows("0: deep x | A: a first one two")) << "a renamed folder is watched too";
    fs::remove(folder.Path("A/two.norava"));
    EXPECT_TRUE(shows("0: deep x | A: a first one"));
    EXPECT_EQ(instance.list.GetCurrentPrg(), -1) << "it is gone";
    EXPECT_EQ(instance.list.GetProgramName(), "two");
    folder.Write("A/two.norava", Block(0.5f));
    EXPECT_TRUE(shows("0: deep x | A: a first one two"));
    EXPECT_EQ(instance.list.GetCurrentPrg(), 2) << "and back at its place";
    fs::remove(folder.Path("A/two.norava"));

    folder.Write("A/one.norava", Block(0.75f));
    EXPECT_TRUE(Eventually([&] {
        instance.Send(0xB0, 32, 0);
        instance.Send(0xB0, 32, 1);
        instance.Send(0xC0, 1);
        instance.Render(16);
        return instance.Value() == 0.75f;
    })) << "new bytes under an old name";
    ASSERT_TRUE(other.list.SaveProgramToFile(folder.Path("A/saved.norava").c_str()));
    EXPECT_EQ(other.list.GetProgramName(), "saved");
    EXPECT_EQ(Listing(*instance.list.GetLibrary()), "0: deep x | A: a first one saved")
        << "at once in the same process";
}

TEST(PresetLibrary, KeepsWhatAnErrorHides) {
    const ProgramFolder folder{"A/one.norava", "A/two.norava", "B/x.norava"};
    LibrarySynth instance(folder.Place());
    rlimit handles{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &handles), 0);
    const rlimit usedUp{0, handles.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &usedUp), 0);
    fs::rename(folder.Path("A/two.norava"), folder.Path("A/ten.norava"));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    PresetLibrary::Open(folder.Place())->Refresh({});
    CFolderWatch watch;
    watch.Wake();
    (void)watch.Wait(std::chrono::hours(1));  // ends at once: a library waits so when it closes
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &handles), 0);
    EXPECT_EQ(Listing(*instance.list.GetLibrary()), "A: one two | B: x");
    EXPECT_TRUE(instance.list.NextProgram()) << "still at its place";
    EXPECT_TRUE(Eventually([&] {
        return Listing(*instance.list.GetLibrary()) == "A: one ten | B: x";
    })) << "it looks again";
}

TEST(PresetLibrary, IsNotHeldUpByHostileFolders) {
    const ProgramFolder folder{"A/good.norava", "locked/unreadable.norava"};
    ASSERT_EQ(mkfifo(folder.Path("A/pipe.norava").c_str(), 0600), 0);
    fs::create_symlink("/dev/zero", folder.Path("A/device.norava"));
    fs::create_directory_symlink(".", folder.Path("self"));
    fs::create_directory_symlink("turn", folder.Path("turn"));
    folder.Write("A/huge.norava", "");
    fs::resize_file(folder.Path("A/huge.norava"), std::uintmax_t{1} << 32);
    fs::permissions(folder.Path("locked"), fs::perms::none);

    LibrarySynth instance(folder.Place());
    EXPECT_EQ(NameOf(instance.synth), "good");
    const std::string listing = Listing(*instance.list.GetLibrary());
    EXPECT_EQ(listing.substr(0, listing.find(" |")), "A: good huge");
    for (const char* name : {"pipe", "device", "huge"}) {
        const std::string path = folder.Path("A/" + std::string(name) + ".norava");
        EXPECT_FALSE(instance.list.LoadProgramFromFile(path.c_str())) << name;
    }
    EXPECT_FALSE(instance.list.SaveProgramToFile(folder.Path("A/pipe.norava").c_str()));
    fs::permissions(folder.Path("locked"), fs::perms::owner_all);
}

TEST(PresetLibrary, PlaysAtOnceAndReadsOnInTheBackground) {
    constexpr std::size_t kFiles = 100'000;
    const ProgramFolder folder;
    // Links to a few files: making them is quicker, reading them is not.
    for (std::size_t i = 0; i < kFiles; ++i) {
        const auto path = [&](std::size_t n) {
            return folder.Path("A/" + std::to_string(n) + ".norava");
        };
        if (i < 10)
            folder.Write("A/" + std::to_string(i) + ".norava", Block(0.5f));
        else
            fs::create_hard_link(path(i / 10'000), path(i));
    }
    LibrarySynth instance(folder.Place());
    EXPECT_EQ(NameOf(instance.synth), "0");
    instance.Send(0xC0, 127);
    instance.Send(0x90, 60, 100, 1);
    EXPECT_GT(instance.Render(4096).Peak(), 0.0f);
    EXPECT_TRUE(Eventually([&] { return instance.list.GetLibrary()->IsComplete(); }));
    EXPECT_EQ(instance.list.GetLibrary()->Categories().at(0).programs.size(), kFiles);
    instance.Render(64);
    EXPECT_EQ(NameOf(instance.synth), "127") << "selected before it was read";
}

}  // namespace
}  // namespace norava
