#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <memory>
#include <string>

// What the module's file shows to the loader: it lives in processes with any other libraries.

namespace norava {
namespace {

std::string Output(const std::string& command) {
    std::string output;
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::array<char, 4096> piece;
    while (pipe != nullptr && std::fgets(piece.data(), piece.size(), pipe.get()) != nullptr)
        output += piece.data();
    return output;
}

const std::string kModule = NORAVA_MODULE_PATH;

TEST(ModuleFile, ShowsItsEntryAndNothingElse) {
    EXPECT_EQ(Output("nm -D --defined-only --format=posix " + kModule + " | cut -d' ' -f1,2"),
              "VSTPluginMain T\n");
}

TEST(ModuleFile, NeedsNothingButTheCLibraryAndNoPatches) {
    const std::string needed = "readelf -d " + kModule + " | grep NEEDED";
    EXPECT_NE(Output(needed), "");
#ifndef NORAVA_SANITIZED
    // The loader belongs to the C library: it hands out thread-local memory.
    EXPECT_EQ(Output(needed + " | grep -vE '.(libc.so.6|libm.so.6|ld-linux-.*)]'"), "");
#endif
    EXPECT_EQ(Output("readelf -d " + kModule + " | grep -E 'TEXTREL|RPATH|RUNPATH'"), "");
    EXPECT_NE(Output("readelf -lW " + kModule + " | grep 'GNU_STACK.* RW '"), "");
}

}  // namespace
}  // namespace norava
