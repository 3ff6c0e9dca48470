#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "files/file_list.h"
#include "files/known_folders.h"
#include "files/scratch_folder.h"
#include "files/text_buffer.h"

namespace norava {
namespace {

using file_system::UserContentFolder;
using test::ScratchFolder;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

std::vector<std::string> Names(const CFileList& list) {
    std::vector<std::string> names;
    for (long i = 0; i < list.getNumFilesInList(); ++i) {
        char name[kNameBufferBytes], extension[kNameBufferBytes];
        bool isFolder = false;
        EXPECT_NE(list.getFileInfo(i, name, extension, &isFolder), nullptr);
        names.push_back(std::string(name) + "|" + extension + (isFolder ? "/" : ""));
    }
    return names;
}

TEST(FileList, FiltersByKindAndExtension) {
    const ScratchFolder folder;
    for (const char* name : {"one.norava", "X.NORAVA", "two.fxp", "a.b.norava", "plain", "norava"})
        folder.Write(name, "");
    std::filesystem::create_directory(folder.Path("Bass.old"));
    std::filesystem::create_directory(folder.Path("x.norava"));

    CFileList list;
    ASSERT_TRUE(list.findFiles(folder.Path().c_str()));
    EXPECT_EQ(list.getNumFilesInList(), 8) << "without filters everything";
    CFileList shortList(5);
    ASSERT_TRUE(shortList.findFiles(folder.Path().c_str()));
    EXPECT_EQ(shortList.getNumFilesInList(), 5);

    list.addFilter(nullptr, true);
    ASSERT_TRUE(list.findFiles((folder.Path() + "/").c_str()));
    EXPECT_THAT(Names(list), UnorderedElementsAre("Bass|old/", "x|norava/"));

    list.resetFilters();
    list.addFilter("norava", false);
    list.addFilter("fxp", false);
    ASSERT_TRUE(list.findFiles(folder.Path().c_str()));
    EXPECT_THAT(Names(list), UnorderedElementsAre("one|norava", "two|fxp", "a.b|norava"));

    EXPECT_FALSE(list.findFiles(nullptr));
    EXPECT_FALSE(list.findFiles(""));
    EXPECT_FALSE(list.findFiles(folder.Path("missing").c_str()));
    EXPECT_THAT(Names(list), IsEmpty());
    EXPECT_FALSE(list.addFilter(std::string(32, 'e').c_str(), false));
}

TEST(FileList, AnswersOnlyInsideItsRange) {
    CFileList list;
    for (const char* path : {"", "/a/.", "/a/..", "..", "/a/b.c"})
        list.addItem(path, false);
    list.addItem(std::string("/").append(kPathBufferBytes, 'x').c_str(), false);
    list.addItem(nullptr, false);
    ASSERT_EQ(list.getNumFilesInList(), 1);
    EXPECT_STREQ(list.getFileInfo(0, nullptr, nullptr, nullptr), "/a/b.c");
    EXPECT_EQ(list.getFileInfo(-1, nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(list.getFileInfo(1, nullptr, nullptr, nullptr), nullptr);

    // A name of the longest kind that some file systems allow, cut where it is only shown.
    const std::string path = std::string("/a/").append(700, 'n').append(".").append(300, 'e');
    list.addItem(path.c_str(), false);
    EXPECT_EQ(Names(list)[1], std::string(255, 'n') + "|" + std::string(255, 'e'));
    EXPECT_EQ(list.getFileInfo(1, nullptr, nullptr, nullptr), path);
}

TEST(FileList, LeavesOutWhatNobodyCanOpen) {
    const ScratchFolder folder;
    folder.Write("file", "");
    std::filesystem::create_directory(folder.Path("real"));
    ASSERT_EQ(mkfifo(folder.Path("pipe").c_str(), 0600), 0);
    ASSERT_EQ(symlink("loop", folder.Path("loop").c_str()), 0);
    ASSERT_EQ(symlink("gone", folder.Path("dangling").c_str()), 0);
    ASSERT_EQ(symlink("/dev/zero", folder.Path("device").c_str()), 0);
    ASSERT_EQ(symlink("real", folder.Path("to folder").c_str()), 0);
    ASSERT_EQ(symlink("file", folder.Path("to file").c_str()), 0);
    CFileList list;
    ASSERT_TRUE(list.findFiles(folder.Path().c_str()));
    EXPECT_THAT(Names(list), UnorderedElementsAre("file|", "real|/", "to folder|/", "to file|"));
}

TEST(KnownFolders, BelieveOnlyWholePaths) {
    setenv("HOME", "/home/somebody//", 1);
    setenv("XDG_DATA_HOME", "/data/", 1);
    EXPECT_EQ(UserContentFolder(), "/data");
    setenv("XDG_DATA_HOME", "/", 1);
    EXPECT_EQ(UserContentFolder(), "/");
    for (const char* const none : {"", "data", "./data"}) {
        setenv("XDG_DATA_HOME", none, 1);
        EXPECT_EQ(UserContentFolder(), "/home/somebody/.local/share");
    }
    unsetenv("XDG_DATA_HOME");
    EXPECT_EQ(UserContentFolder(), "/home/somebody/.local/share");
    // Without a home in the environment the system's list of users knows one.
    unsetenv("HOME");
    const std::string folder = UserContentFolder();
    EXPECT_TRUE(folder.empty() || (folder.front() == '/' && folder.ends_with("/.local/share")));
}

}  // namespace
}  // namespace norava
