#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

// What the module's file shows to the loader: it lives in processes with any other libraries.

namespace norava {
namespace {

using testing::AnyOf;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;

std::vector<std::string> Lines(const std::string& command) {
    std::vector<std::string> lines;
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::array<char, 4096> line;
    while (pipe != nullptr && std::fgets(line.data(), line.size(), pipe.get()) != nullptr)
        lines.emplace_back(line.data(), std::string_view(line.data()).find_last_not_of('\n') + 1);
    return lines;
}

const std::string kModule = NORAVA_MODULE_PATH;

TEST(ModuleFile, ShowsItsEntryAndNothingElse) {
    EXPECT_THAT(Lines("nm -D --defined-only --format=posix " + kModule + " | cut -d' ' -f1,2"),
                ElementsAre("VSTPluginMain T"));
}

#ifndef NORAVA_SANITIZED
TEST(ModuleFile, NeedsNothingButTheCLibrary) {
    // The loader belongs to the C library: it hands out thread-local memory.
    const auto needed = Lines("readelf -d " + kModule + " | grep NEEDED");
    EXPECT_FALSE(needed.empty());
    EXPECT_THAT(needed, Each(AnyOf(HasSubstr("[libc.so.6]"), HasSubstr("[libm.so.6]"),
                                   HasSubstr("[ld-linux-"))));
}
#endif

TEST(ModuleFile, IsNotPatchedWhenItIsLoaded) {
    EXPECT_THAT(Lines("readelf -d " + kModule + " | grep -E 'TEXTREL|RPATH|RUNPATH'"),
                ElementsAre());
    EXPECT_THAT(Lines("readelf -d " + kModule + " | grep BIND_NOW"), Each(HasSubstr("BIND_NOW")));
    EXPECT_THAT(Lines("readelf -lW " + kModule + " | grep GNU_STACK"),
                ElementsAre(HasSubstr(" RW ")));
}

}  // namespace
}  // namespace norava
