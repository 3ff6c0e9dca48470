#include "files/known_folders.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace norava {
namespace {

using file_system::UserContentFolder;

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
