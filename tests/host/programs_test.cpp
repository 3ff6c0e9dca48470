#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <thread>

#include "host/call_watch.h"
#include "host/vst_host.h"
#include "parameters/parameter_index.h"

// The module with a library of programs, through the host's interface only.

namespace norava {
namespace {

using Stereo = VstInstance::Stereo;

std::vector<char> WithTune(std::vector<char> chunk, float tune) {
    std::memcpy(chunk.data() + 4 + 4 * param::kTune, &tune, sizeof tune);
    return chunk;
}

void WriteProgram(const std::string& path, const std::vector<char>& bytes) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

class ModulePrograms : public testing::Test {
  protected:
    ModulePrograms() {
        UseProgramFolder("empty");
        plain = VstInstance().Chunk();
        root = UseProgramFolder("programs");
        for (int i = 0; i < 20; ++i) {
            for (const char* category : {"Keys/", "Pads/"}) {
                const auto program = WithTune(plain, 0.04f * static_cast<float>(i));
                WriteProgram(root + '/' + category + std::to_string(i) + ".norava", program);
            }
        }
    }
    ~ModulePrograms() override { UseProgramFolder("empty"); }

    std::vector<char> plain;
    std::string root;
};

TEST_F(ModulePrograms, StartWithTheFirstAndChangeAtTheirFrame) {
    VstInstance instance;
    instance.Start(48000.0f);
    EXPECT_EQ(instance.Text(vst::effGetProgramName, 0, 24), "0");
    instance.automated.clear();
    instance.Note(60);
    instance.Render(512);
    instance.Send({{1000, {0xC0, 5, 0}}, {1000, {0x90, 62, 100}}});
    const Stereo sound = instance.Render(4096, 4096);
    EXPECT_EQ(instance.Text(vst::effGetProgramName, 0, 24), "5");
    ASSERT_EQ(instance.automated.size(), 1u) << "told at the end of the call";
    EXPECT_EQ(instance.automated.front(), std::pair(int{param::kTune}, 0.04f * 5.0f));

    VstInstance other;
    other.Start(48000.0f);
    other.Note(60);
    other.Render(512);
    const Stereo before = other.Render(1000, 1000);
    EXPECT_TRUE(std::equal(before.left.begin(), before.left.end(), sound.left.begin()));
    EXPECT_GT(Peak(before.left), 0.0f);
}

#ifndef NORAVA_SANITIZED
TEST_F(ModulePrograms, ChangeWithoutWaitingWhileFilesComeAndGo) {
    VstInstance instance;
    instance.Start(48000.0f);
    instance.automated.reserve(1 << 20);
    std::atomic<bool> done = false;
    std::thread files([&] {
        for (int i = 0; !done; ++i) {
            const std::string path = root + "/Pads/new " + std::to_string(i % 7) + ".norava";
            WriteProgram(path, plain);
            std::filesystem::rename(path, root + "/Keys/moved.norava");
            std::filesystem::remove(root + "/Keys/moved.norava");
            WriteProgram(root + "/A new one/first.norava", plain);
            std::filesystem::rename(root + "/A new one", root + "/Renamed");
            std::filesystem::remove_all(root + "/Renamed");
        }
    });
    std::vector<float> left(256);
    std::vector<float> right(256);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    for (int i = 0; std::chrono::steady_clock::now() < end; ++i) {
        const auto number = static_cast<unsigned char>(i % 20);
        const auto category = static_cast<unsigned char>(i % 3);
        instance.Send(
            {{10, {0x90, 60, 100}}, {64, {0xB0, 32, category}}, {128, {0xC0, number, 0}}});
        CallWatch watch;
        instance.Process(left.data(), right.data(), 256);
        const CallReport report = watch.Stop();
        ASSERT_EQ(report.memoryCalls + report.lockCalls + report.systemCalls, 0)
            << report.memoryCalls << ' ' << report.lockCalls << ' ' << report.firstSystemCall;
    }
    done = true;
    files.join();
}
#endif

}  // namespace
}  // namespace norava
