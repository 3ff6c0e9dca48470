#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "host/vst_host.h"
#include "parameters/parameter_index.h"

// A host that plays, automates, loads, saves and shows at once. Under the thread sanitizer every
// unsynchronised word shows.

namespace norava {
namespace {

using namespace param;

TEST(ModuleThreads, MayAllCallWhileAudioRuns) {
    VstInstance instance;
    instance.Start(44100.0f);
    std::vector<char> one = instance.Chunk();
    instance.Set(kReverbOn, 1.0f);
    instance.Set(kResonatorOn, 1.0f);
    const std::vector<char> other = instance.Chunk();
    std::atomic<bool> done = false;
    std::vector<std::thread> threads;
    const auto run = [&](auto step) {
        threads.emplace_back([&done, step] {
            for (int i = 0; !done; ++i)
                step(i);
        });
    };
    run([&](int i) { instance.Set(i % VstInstance::kParams, static_cast<float>(i % 11) / 10.0f); });
    run([&](int i) {
        const auto& chunk = i % 2 == 0 ? one : other;
        instance.effect->dispatcher(instance.effect, vst::effSetChunk, 0,
                                    static_cast<vst::iptr>(chunk.size()),
                                    const_cast<char*>(chunk.data()), 0.0f);
        instance.automated.clear();  // this thread alone loads, so it alone is told
    });
    run([&](int i) {
        std::array<char, 64> text;
        instance.Dispatch(vst::effGetParamDisplay, i % VstInstance::kParams, 0, text.data());
        instance.Dispatch(vst::effGetProgramName, 0, 0, text.data());
        EXPECT_EQ(instance.Chunk().size(), other.size());
    });
    run([&](int i) {
        std::string name = "name " + std::to_string(i);
        instance.Dispatch(vst::effSetProgramName, 0, 0, name.data());
    });
    for (int block = 0; block < 300; ++block) {
        if (block % 4 == 0) instance.Note(30 + block % 70);
        instance.Send({{block % 64, {0xB0, 32, static_cast<unsigned char>(block % 128)}},
                       {block % 64, {0xC0, static_cast<unsigned char>(block % 128), 0}}});
        ASSERT_TRUE(IsFinite(instance.Render(64, 64)));
    }
    done = true;
    for (auto& thread : threads)
        thread.join();
}

TEST(ModuleThreads, KeepTheirChunksWhileOthersAsk) {
    VstInstance instance;
    const std::vector<char> expected = instance.Chunk();
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int n = 0; n < 2000; ++n) {
                void* data = nullptr;
                ASSERT_EQ(instance.Dispatch(vst::effGetChunk, n % 2, 0, &data),
                          VstInstance::kChunkSize);
                std::this_thread::yield();  // others ask while this one reads
                ASSERT_EQ(std::memcmp(data, expected.data(), expected.size()), 0);
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
}

TEST(ModuleThreads, LoadStatesWholeOrNotAtAll) {
    VstInstance instance;
    std::vector<char> low = instance.Chunk();
    std::vector<char> high = low;
    for (int i = 0; i < VstInstance::kParams; ++i) {
        const float values[] = {0.25f, 0.75f};
        std::memcpy(low.data() + 4 + 4 * i, &values[0], 4);
        std::memcpy(high.data() + 4 + 4 * i, &values[1], 4);
    }
    instance.LoadChunk(low);
    std::atomic<bool> done = false;
    std::atomic<int> numMixed = 0;
    std::thread saver([&] {
        while (!done) {
            const std::vector<char> saved = instance.Chunk();
            if (saved != low && saved != high) ++numMixed;
        }
    });
    for (int i = 0; i < 3000; ++i) {
        instance.LoadChunk(i % 2 == 0 ? high : low);
        instance.automated.clear();
    }
    done = true;
    saver.join();
    EXPECT_EQ(numMixed, 0);
}

}  // namespace
}  // namespace norava
