#include "files/known_folders.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace norava {
namespace {

using file_system::UserContentFolder;

void Set(const char* name, const char* value) {
    if (value != nullptr) {
        setenv(name, value, 1);
    } else {
        unsetenv(name);
    }
}

TEST(KnownFolders, BelieveOnlyWholePaths) {
    Set("HOME", "/home/somebody//");
    Set("XDG_DATA_HOME", "/data/");
    EXPECT_EQ(UserContentFolder(), "/data");
    for (const char* const value : {static_cast<const char*>(nullptr), "", "data", "./data"}) {
        Set("XDG_DATA_HOME", value);
        EXPECT_EQ(UserContentFolder(), "/home/somebody/.local/share");
    }
    Set("XDG_DATA_HOME", "/");
    EXPECT_EQ(UserContentFolder(), "/");
    // Without a home in the environment the system's list of users knows one.
    Set("XDG_DATA_HOME", nullptr);
    for (const char* const value : {static_cast<const char*>(nullptr), "", "home"}) {
        Set("HOME", value);
        const std::string folder = UserContentFolder();
        EXPECT_TRUE(folder.empty() || (folder.front() == '/' && folder.ends_with("/.local/share")));
    }
}

}  // namespace
}  // namespace norava
