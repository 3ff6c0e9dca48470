#include "files/file_manager.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <thread>
#include <vector>

#include "files/file_system.h"
#include "files/scratch_folder.h"

namespace norava {
namespace {

using test::ScratchFolder;

TEST(FilePath, IsJoinedAndTakenApart) {
    CFileManager file;
    EXPECT_TRUE(file.SetPath("C:\\Users\\me/x"));
    EXPECT_STREQ(file.GetPath(), "C:/Users/me/x");
    file.SetPath("/folder", "name");
    EXPECT_STREQ(file.GetPath(), "/folder/name");
    file.SetPath("/folder/", "name");
    EXPECT_STREQ(file.GetPath(), "/folder/name");
    file.SetPath("C:\\folder\\", "sub\\name");
    EXPECT_STREQ(file.GetPath(), "C:/folder/sub/name");
    EXPECT_FALSE(file.SetPath("", "name"));
    EXPECT_STREQ(file.GetPath(), "");

    file.SetPath("/a.d/b.c/a.b.c");
    EXPECT_STREQ(file.GetFileName(), "a.b");
    EXPECT_STREQ(file.GetFileNameWithExt(), "a.b.c");
    EXPECT_STREQ(file.GetDirName(), "/a.d/b.c");
    file.SetPath("/a/Bass.old/");
    EXPECT_STREQ(file.GetFileName(), "Bass");
    EXPECT_STREQ(file.GetDirName(), "/a");
    file.SetPath("no folder.tga");
    EXPECT_STREQ(file.GetFileNameWithExt(), "");
    EXPECT_STREQ(file.GetDirName(), "");
}

// 1023 bytes fit; one more is refused and leaves no path of another file behind.
TEST(FilePath, IsNeverCutShort) {
    const std::string longest = std::string("/").append(kPathBufferBytes - 2, 'x');
    CFileManager file(longest.c_str());
    EXPECT_EQ(file.GetPath(), longest);
    EXPECT_STREQ(file.GetFileName(), longest.c_str() + 1);
    EXPECT_FALSE(file.SetPath((longest + "x").c_str()));
    EXPECT_STREQ(file.GetPath(), "");
    EXPECT_FALSE(file.SetPath(longest.c_str(), "x"));
    EXPECT_STREQ(file.GetPath(), "");
    EXPECT_FALSE(file.OpenFileForReading((longest + "x").c_str()));
    EXPECT_FALSE(file.CreateDirectory((longest + "x").c_str()));
}

TEST(TextBuffer, CutsBetweenCharacters) {
    char buffer[5];
    EXPECT_TRUE(CopyText(buffer, sizeof buffer, "abcd"));
    EXPECT_FALSE(CopyText(buffer, sizeof buffer, "abc\xC3\xA4"));
    EXPECT_STREQ(buffer, "abc");
    EXPECT_FALSE(CopyText(buffer, sizeof buffer, "\xF0\x9F\x8E\xB8!"));
    EXPECT_STREQ(buffer, "\xF0\x9F\x8E\xB8");
    EXPECT_FALSE(CopyText(buffer, 0, "x"));
    EXPECT_FALSE(CopyText(buffer, sizeof buffer, "\x80\x80\x80\x80\x80\x80"));
    EXPECT_STREQ(buffer, "");
}

TEST(FileManager, ReadsBothByteOrders) {
    const ScratchFolder folder;
    const std::string bytes(
        "\xFE\xFE\x01\x80\x01\x80\x78\x56\x34\x92\x92\x34\x56\x78\0\0\x80\x3F\x3F\x80\0\0", 22);
    CFileManager file;
    ASSERT_TRUE(file.OpenFileForReading(folder.Write("values", bytes).c_str()));
    EXPECT_EQ(file.GetFileSize(), 22);
    EXPECT_EQ(file.ReadChar(), -2);
    EXPECT_EQ(file.ReadUChar(), 254);
    EXPECT_EQ(file.ReadShort(), -32767);
    EXPECT_EQ(file.ReadUShortBE(), 0x0180);
    EXPECT_EQ(file.ReadUInt(), 0x92345678u);
    EXPECT_EQ(file.ReadIntBE(), static_cast<int>(0x92345678u));
    EXPECT_EQ(file.ReadFloat(), 1.0f);
    EXPECT_TRUE(file.SetPosition(20));
    EXPECT_EQ(file.ReadUInt(), 0u) << "four bytes where two are left";
    EXPECT_EQ(file.ReadUShort(), 0) << "the two that are there";
    file.SetPosition(18);
    EXPECT_EQ(file.ReadFloatBE(), 1.0f);
}

TEST(FileManager, ReadsAllOrNothing) {
    const ScratchFolder folder;
    CFileManager file;
    ASSERT_TRUE(file.OpenFileForReading(folder.Write("ten", "0123456789").c_str()));
    char buffer[16] = "untouched";
    EXPECT_FALSE(file.ReadData(buffer, 11));
    EXPECT_FALSE(file.ReadData(buffer, -1));
    EXPECT_FALSE(file.ReadData(buffer, 0x7FFFFFFF));
    EXPECT_STREQ(buffer, "untouched");
    EXPECT_TRUE(file.ReadData(buffer, 10));
    EXPECT_FALSE(file.ReadData(buffer, 1));
    EXPECT_TRUE(file.SetPosition(-5));
    EXPECT_EQ(file.ReadUChar(), '0');
    EXPECT_TRUE(file.SetPosition(99));
    EXPECT_FALSE(file.ReadData(buffer, 1));
    EXPECT_FALSE(file.WriteData("x", 1)) << "open for reading";

    file.CloseFile();
    ASSERT_TRUE(file.OpenFileForReading(folder.Write("big", std::string(50000, 'x')).c_str()));
    ASSERT_EQ(truncate(file.GetPath(), 40005), 0);
    file.SetPosition(40000);
    EXPECT_FALSE(file.ReadData(buffer, 10)) << "the file has shrunk under it";
}

TEST(FileManager, OpensOneFileAtATime) {
    const ScratchFolder folder;
    const std::string first = folder.Write("first", "1");
    CFileManager file;
    EXPECT_FALSE(file.OpenFileForReading()) << "no path";
    EXPECT_FALSE(file.OpenFileForReading(folder.Path("missing").c_str()));
    EXPECT_STREQ(file.GetPath(), "") << "a failure keeps the path";
    ASSERT_TRUE(file.OpenFileForReading(first.c_str()));
    EXPECT_EQ(file.GetPath(), first);
    EXPECT_FALSE(file.OpenFileForWriting(folder.Path("second").c_str()));
    EXPECT_FALSE(file.CheckIfFileExists(folder.Path("second").c_str()));
    EXPECT_TRUE(file.CloseFile());
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.GetFileSize(), 0);
    EXPECT_STREQ(file.GetPath(), "");

    file.SetPath(folder.Path("second").c_str());
    ASSERT_TRUE(file.OpenFileForWriting());
    EXPECT_TRUE(file.WriteData("abc", 3));
    EXPECT_FALSE(file.WriteData("abc", -3));
    EXPECT_EQ(file.ReadUChar(), 0) << "open for writing";
    EXPECT_TRUE(file.CloseFile());
    EXPECT_EQ(folder.Read("second"), "abc");
}

TEST(FileManager, DoesNothingWithoutAFileOrAPath) {
    CFileManager file("/some/where");
    char byte = 0;
    EXPECT_FALSE(file.ReadData(&byte, 1));
    EXPECT_FALSE(file.WriteData(&byte, 1));
    EXPECT_FALSE(file.SetPosition(0));
    EXPECT_TRUE(file.CloseFile());
    EXPECT_FALSE(file.SetPath(nullptr));
    EXPECT_STREQ(file.GetPath(), "") << "no path of another file stays";
    EXPECT_FALSE(file.SetPath("/folder", nullptr));
    EXPECT_FALSE(file.SetPath(nullptr, "name"));
    EXPECT_FALSE(file.OpenFileForReading());
    EXPECT_FALSE(file.OpenFileForWriting());
    EXPECT_FALSE(file.CheckIfFileExists());
    EXPECT_FALSE(file.CreateDirectory());

    const ScratchFolder folder;
    ASSERT_TRUE(file.OpenFileForReading(folder.Write("one", "x").c_str()));
    EXPECT_FALSE(file.ReadData(nullptr, 1));
    EXPECT_EQ(file.ReadUShort(), 0);
    EXPECT_EQ(file.ReadUShortBE(), 0);
    EXPECT_EQ(file.ReadUIntBE(), 0u);
    EXPECT_EQ(file.ReadUChar(), 'x') << "what cannot be read moves nothing";
    file.CloseFile();
    ASSERT_TRUE(file.OpenFileForWriting(folder.Path("two").c_str()));
    EXPECT_FALSE(file.WriteData(nullptr, 1));
    EXPECT_TRUE(file.WriteData(nullptr, 0));
}

// A file dialog and a preset folder meet everything that a disk can hold.
TEST(FileManager, RefusesWhatIsNoFileWithoutWaiting) {
    const ScratchFolder folder;
    ASSERT_EQ(mkfifo(folder.Path("pipe.norava").c_str(), 0600), 0);
    ASSERT_EQ(symlink("loop", folder.Path("loop").c_str()), 0);
    for (const std::string& path :
         {folder.Path("pipe.norava"), folder.Path("loop"), folder.Path(), std::string("/dev/zero"),
          std::string("/dev/full"), folder.Path(std::string(300, 'n'))}) {
        SCOPED_TRACE(path);
        CFileManager file;
        EXPECT_FALSE(file.CheckIfFileExists(path.c_str()));
        EXPECT_FALSE(file.OpenFileForReading(path.c_str()));
        EXPECT_FALSE(file.OpenFileForWriting(path.c_str()));
    }
}

TEST(FileManager, MakesFoldersWithTheirParents) {
    const ScratchFolder folder;
    CFileManager file;
    EXPECT_TRUE(file.CreateDirectory(folder.Path("a/b//c/").c_str()));
    EXPECT_TRUE(std::filesystem::is_directory(folder.Path("a/b/c")));
    EXPECT_TRUE(file.CreateDirectory(folder.Path("a/b").c_str())) << "there already";
    folder.Write("a/file", "");
    EXPECT_FALSE(file.CreateDirectory(folder.Path("a/file").c_str()));
    EXPECT_FALSE(file.CreateDirectory(folder.Path("a/file/c").c_str()));
    file.SetPath(folder.Path().c_str(), "stored");
    EXPECT_TRUE(file.CreateDirectory());
    EXPECT_TRUE(std::filesystem::is_directory(folder.Path("stored")));
}

std::vector<std::string> NamesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    return names;
}

TEST(ReplaceFile, KeepsLinkAndPermissions) {
    const ScratchFolder folder;
    folder.Write("real", "old");
    ASSERT_EQ(chmod(folder.Path("real").c_str(), 0640), 0);
    ASSERT_EQ(symlink("real", folder.Path("link").c_str()), 0);
    const std::size_t openBefore = NamesIn("/proc/self/fd").size();
    EXPECT_TRUE(file_system::ReplaceFile(folder.Path("link").c_str(), "new one", 7));
    EXPECT_EQ(folder.Read("real"), "new one");
    EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("link")));
    struct stat status {};
    ASSERT_EQ(stat(folder.Path("real").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
    const auto workingFolder = std::filesystem::current_path();
    std::filesystem::current_path(folder.Path());
    EXPECT_TRUE(file_system::ReplaceFile("fresh", "", 0)) << "a name alone";
    std::filesystem::current_path(workingFolder);
    EXPECT_EQ(folder.Read("fresh"), "");
    EXPECT_FALSE(file_system::ReplaceFile(folder.Path().c_str(), "x", 1)) << "a folder";
    EXPECT_FALSE(file_system::ReplaceFile(folder.Path("none/x").c_str(), "x", 1));
    ASSERT_EQ(symlink("unmounted/x", folder.Path("dangling").c_str()), 0);
    EXPECT_FALSE(file_system::ReplaceFile(folder.Path("dangling").c_str(), "x", 1));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("dangling")));
    EXPECT_EQ(NamesIn(folder.Path()).size(), 4u);
    EXPECT_EQ(NamesIn("/proc/self/fd").size(), openBefore);
}

TEST(ReplaceFile, FailingLeavesTheOldFileAlone) {
    const ScratchFolder folder;
    folder.Write("kept", "precious");
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto signalBefore = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit tiny{4096, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &tiny);
    const std::vector<char> big(100000, 'x');
    const bool replaced =
        file_system::ReplaceFile(folder.Path("kept").c_str(), big.data(), big.size());
    CFileManager file;
    const bool opened = file.OpenFileForWriting(folder.Path("direct").c_str());
    const bool written = file.WriteData(big.data(), 5000) && file.CloseFile();
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, signalBefore);
    EXPECT_FALSE(replaced);
    EXPECT_EQ(folder.Read("kept"), "precious");
    EXPECT_TRUE(opened);
    EXPECT_FALSE(written) << "the closing flush must report a full disk";
    EXPECT_EQ(NamesIn(folder.Path()).size(), 2u);
}

TEST(PublishFolder, IsNotSweptAwayWhileItIsFilled) {
    const ScratchFolder folder;
    folder.Write(".norava-1-1.tmp", "of a process that was killed");
    folder.Write(".norava-notes", "the user's own");
    EXPECT_TRUE(file_system::PublishFolder(folder.Path("new").c_str(), [&](const char* unfinished) {
        file_system::RemoveLeftovers(folder.Path().c_str());
        return (std::ofstream(std::string(unfinished) + "/x") << "inside").good();
    }));
    EXPECT_THAT(NamesIn(folder.Path()), testing::UnorderedElementsAre("new", ".norava-notes"));
    EXPECT_EQ(folder.Read("new/x"), "inside");
}

// Two instances that save the same program at once: one of the two wins whole.
TEST(ReplaceFile, ServesSeveralThreads) {
    const ScratchFolder folder;
    const std::string path = folder.Path("shared");
    const auto save = [&](char fill) {
        const std::string bytes(20000, fill);
        for (int i = 0; i < 20; ++i)
            EXPECT_TRUE(file_system::ReplaceFile(path.c_str(), bytes.data(), bytes.size()));
    };
    std::thread other(save, 'a');
    save('b');
    other.join();
    const std::string left = folder.Read("shared");
    EXPECT_TRUE(left == std::string(20000, 'a') || left == std::string(20000, 'b'));
    EXPECT_EQ(NamesIn(folder.Path()).size(), 1u);
}

}  // namespace
}  // namespace norava
