#include "files/file_manager.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "files/file_system.h"
#include "files/scratch_folder.h"

namespace norava {
namespace {

using test::ScratchFolder;

TEST(FilePath, IsJoinedAndTakenApart) {
    CFileManager file;
    EXPECT_TRUE(file.SetPath("C:\\Users\\me/x"));
    EXPECT_STREQ(file.GetPath(), "C:/Users/me/x");
    const char* const joined[][3] = {{"/folder", "name", "/folder/name"},
                                     {"/folder/", "name", "/folder/name"},
                                     {"C:\\folder\\", "sub\\name", "C:/folder/sub/name"},
                                     {"", "name", ""},
                                     {nullptr, "name", ""},
                                     {"/folder", nullptr, ""}};
    for (const auto& [folder, name, whole] : joined) {
        EXPECT_EQ(file.SetPath(folder, name), *whole != '\0');
        EXPECT_STREQ(file.GetPath(), whole);
    }
    const char* const parts[][4] = {{"/a.d/b.c/a.b.c", "/a.d/b.c", "a.b.c", "a.b"},
                                    {"/a/Bass.old/", "/a", "Bass.old", "Bass"},
                                    {"no folder.tga", "", "", ""}};
    for (const auto& [path, folder, whole, name] : parts) {
        EXPECT_TRUE(file.SetPath(path));
        EXPECT_STREQ(file.GetDirName(), folder);
        EXPECT_STREQ(file.GetFileNameWithExt(), whole);
        EXPECT_STREQ(file.GetFileName(), name);
    }
    EXPECT_FALSE(file.SetPath(nullptr));
    EXPECT_STREQ(file.GetPath(), "") << "no path of another file stays";
}

// 1023 bytes fit; one more is refused and leaves no path of another file behind.
TEST(FilePath, IsNeverCutShort) {
    const std::string longest = std::string("/").append(kPathBufferBytes - 2, 'x');
    CFileManager file(longest.c_str());
    EXPECT_EQ(file.GetPath(), longest);
    EXPECT_STREQ(file.GetFileName(), longest.c_str() + 1);
    EXPECT_FALSE(file.SetPath(longest.c_str(), "x"));
    EXPECT_STREQ(file.GetPath(), "");
    const std::string longer = longest + "x";
    EXPECT_FALSE(file.OpenFileForReading(longer.c_str()));
    EXPECT_FALSE(file.OpenFileForWriting(longer.c_str()));
    EXPECT_FALSE(file.CheckIfFileExists(longer.c_str()));
    EXPECT_FALSE(file.CreateDirectory(longer.c_str()));
}

TEST(TextBuffer, CutsBetweenCharacters) {
    char buffer[5];
    EXPECT_TRUE(CopyText(buffer, sizeof buffer, "abcd"));
    EXPECT_FALSE(CopyText(buffer, sizeof buffer, "abc\xC3\xA4"));
    EXPECT_STREQ(buffer, "abc");
    EXPECT_FALSE(CopyText(buffer, 0, "x"));
    EXPECT_FALSE(CopyText(buffer, sizeof buffer, "\x80\x80\x80\x80\x80\x80"));
    EXPECT_STREQ(buffer, "");
}

TEST(FileManager, ReadsBothByteOrders) {
    const ScratchFolder folder;
    const std::string bytes(
        "\xFE\xFE\x01\x80\x01\x80\x78\x56\x34\x92\x92\x34\x56\x78\0\0\x80\x3F\x3F\x80\0\0x", 23);
    CFileManager file;
    ASSERT_TRUE(file.OpenFileForReading(folder.Write("values", bytes).c_str()));
    EXPECT_EQ(file.GetFileSize(), 23);
    EXPECT_EQ(file.ReadChar(), -2);
    EXPECT_EQ(file.ReadUChar(), 254);
    EXPECT_EQ(file.ReadShort(), -32767);
    EXPECT_EQ(file.ReadUShortBE(), 0x0180);
    EXPECT_EQ(file.ReadUInt(), 0x92345678u);
    EXPECT_EQ(file.ReadIntBE(), static_cast<int>(0x92345678u));
    EXPECT_EQ(file.ReadFloat(), 1.0f);
    EXPECT_EQ(file.ReadFloatBE(), 1.0f);
    EXPECT_EQ(file.ReadUShort() + file.ReadUShortBE(), 0);
    EXPECT_EQ(file.ReadUInt() + file.ReadUIntBE(), 0u);
    EXPECT_EQ(file.ReadUChar(), 'x') << "what cannot be read moves nothing";
    EXPECT_EQ(file.ReadUChar(), 0);
}

TEST(FileManager, ReadsAllOrNothing) {
    const ScratchFolder folder;
    CFileManager file;
    char buffer[16] = "untouched";
    EXPECT_FALSE(file.ReadData(buffer, 1)) << "nothing is open";
    EXPECT_FALSE(file.SetPosition(0));
    ASSERT_TRUE(file.OpenFileForReading(folder.Write("big", std::string(50000, 'x')).c_str()));
    for (const int count : {50001, -1, 0x7FFFFFFF})
        EXPECT_FALSE(file.ReadData(buffer, count));
    EXPECT_FALSE(file.ReadData(nullptr, 1));
    EXPECT_FALSE(file.WriteData("x", 1)) << "open for reading";
    EXPECT_TRUE(file.SetPosition(99999));
    EXPECT_FALSE(file.ReadData(buffer, 1));
    EXPECT_TRUE(file.SetPosition(-5));
    ASSERT_EQ(truncate(file.GetPath(), 40005), 0);
    file.SetPosition(40000);
    EXPECT_FALSE(file.ReadData(buffer, 10)) << "the file has shrunk under it";
}

TEST(FileManager, OpensOneFileAtATime) {
    const ScratchFolder folder;
    const std::string first = folder.Write("first", "1");
    CFileManager file;
    EXPECT_FALSE(file.OpenFileForReading()) << "no path";
    EXPECT_FALSE(file.OpenFileForWriting());
    EXPECT_FALSE(file.CheckIfFileExists());
    EXPECT_FALSE(file.CreateDirectory());
    EXPECT_FALSE(file.WriteData("x", 1));
    EXPECT_TRUE(file.CloseFile());
    EXPECT_FALSE(file.OpenFileForReading(folder.Path("missing").c_str()));
    EXPECT_STREQ(file.GetPath(), "") << "a failure keeps the path";
    ASSERT_TRUE(file.OpenFileForReading(first.c_str()));
    EXPECT_EQ(file.GetPath(), first);
    EXPECT_FALSE(file.OpenFileForReading(first.c_str()));
    EXPECT_FALSE(file.OpenFileForWriting(folder.Path("second").c_str()));
    EXPECT_FALSE(file.CheckIfFileExists(folder.Path("second").c_str()));
    EXPECT_TRUE(file.CloseFile());
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.GetFileSize(), 0);

    EXPECT_TRUE(file.SetPath(folder.Path("second").c_str()));
    ASSERT_TRUE(file.OpenFileForWriting());
    EXPECT_TRUE(file.WriteData("abc", 3));
    EXPECT_FALSE(file.WriteData("abc", -3));
    EXPECT_FALSE(file.WriteData(nullptr, 1));
    EXPECT_TRUE(file.WriteData(nullptr, 0));
    EXPECT_EQ(file.ReadUChar(), 0) << "open for writing";
    EXPECT_TRUE(file.CloseFile());
    EXPECT_EQ(folder.Read("second"), "abc");
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

long NumOpenFiles() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

TEST(ReplaceFile, KeepsLinkAndPermissions) {
    const ScratchFolder folder;
    folder.Write("real", "old");
    ASSERT_EQ(chmod(folder.Path("real").c_str(), 0640), 0);
    ASSERT_EQ(symlink("real", folder.Path("link").c_str()), 0);
    const long openBefore = NumOpenFiles();
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
    EXPECT_EQ(folder.Names().size(), 4u);
    EXPECT_EQ(NumOpenFiles(), openBefore);
}

TEST(PublishFolder, IsNotSweptAwayWhileItIsFilled) {
    const ScratchFolder folder;
    folder.Write(".norava-1-1.tmp", "of a process that was killed");
    folder.Write(".norava-notes", "the user's own");
    EXPECT_TRUE(file_system::PublishFolder(folder.Path("new").c_str(), [&](const char* unfinished) {
        file_system::RemoveLeftovers(folder.Path().c_str());
        return (std::ofstream(std::string(unfinished) + "/x") << "inside").good();
    }));
    EXPECT_THAT(folder.Names(), testing::UnorderedElementsAre("new", ".norava-notes"));
    EXPECT_EQ(folder.Read("new/x"), "inside");
}

}  // namespace
}  // namespace norava
