#include <gtest/gtest.h>

#include <atomic>
#include <bit>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "fuzz/states.h"
#include "host/vst_host.h"
#include "synth/hostile_floats.h"

namespace norava {
namespace {

using namespace param;

constexpr int kNumParams = VstInstance::kParams;
constexpr std::size_t kValuesOffset = 4;

void SetValue(std::vector<char>& chunk, int index, std::uint32_t bits) {
    std::memcpy(chunk.data() + kValuesOffset + 4 * static_cast<std::size_t>(index), &bits, 4);
}

std::vector<char> WithValues(std::vector<char> chunk, float value) {
    for (int i = 0; i < kNumParams; ++i)
        SetValue(chunk, i, std::bit_cast<std::uint32_t>(value));
    return chunk;
}

TEST(ModuleChunk, BringsBackAnyBits) {
    VstInstance instance(44100.0f);
    VstInstance other;
    std::vector<char> chunk = instance.Chunk();
    ASSERT_EQ(chunk.size(), static_cast<std::size_t>(VstInstance::kChunkSize));
    EXPECT_EQ(std::string(chunk.data(), 4), "1qzW");
    // Signalling numbers that are none among them: nothing on the way may compute with a value.
    std::mt19937 random(5);
    for (int round = 0; round < 50; ++round) {
        for (int i = 0; i < kNumParams; ++i) {
            const auto number = static_cast<std::uint32_t>(i);
            const auto bits =
                round == 0 ? 0x7F800001u + number : static_cast<std::uint32_t>(random());
            SetValue(chunk, i, bits);
            other.Set(i, std::bit_cast<float>(bits));
            ASSERT_EQ(std::bit_cast<std::uint32_t>(other.Get(i)), bits);
        }
        EXPECT_EQ(other.Chunk(), chunk);
        EXPECT_EQ(instance.LoadChunk(chunk), VstInstance::kChunkSize);
        instance.Note(60);
        EXPECT_TRUE(instance.Render(256).IsFinite());
        EXPECT_EQ(instance.Chunk(), chunk) << "playing changed a stored value";
    }
}

TEST(ModuleChunk, RefusesWhatIsNoState) {
    VstInstance instance;
    instance.Set(3, 0.125f);
    const std::vector<char> before = instance.Chunk();
    std::vector<char> other = WithValues(before, 0.5f);
    std::vector<char> foreign = other;
    foreign[2] = 'Z';
    EXPECT_EQ(instance.LoadChunk(foreign), 0);
    const vst::iptr huge = vst::iptr{1} << 40;
    for (const vst::iptr size : {vst::iptr{-1}, -huge, huge, huge + VstInstance::kChunkSize})
        EXPECT_EQ(instance.Dispatch(vst::effSetChunk, 0, size, other.data()), 0);
    EXPECT_EQ(instance.Dispatch(vst::effSetChunk, 0, VstInstance::kChunkSize, nullptr), 0);
    EXPECT_EQ(instance.Dispatch(vst::effGetChunk, 0, 0, nullptr), 0);
    EXPECT_TRUE(instance.automated.empty());
    EXPECT_EQ(instance.Chunk(), before);
}

TEST(ModuleChunk, LoadsWhatAShorterBlockHolds) {
    VstInstance instance;
    instance.SetProgramName("new");
    const std::vector<char> whole = WithValues(instance.Chunk(), 0.75f);
    instance.SetProgramName("old");
    const std::vector<char> base = WithValues(instance.Chunk(), 0.25f);
    fuzz::StateBytes before;
    std::ranges::copy(base, before.begin());
    for (std::size_t size = 0; size <= whole.size() + 12; ++size) {
        instance.LoadChunk(base);
        std::vector<char> part = whole;
        part.resize(size);
        EXPECT_EQ(instance.LoadChunk(part), size >= 4 ? std::ssize(part) : 0) << size;
        EXPECT_TRUE(std::ranges::equal(instance.Chunk(), fuzz::StateAfter(before, part))) << size;
    }
}

TEST(ModuleThreads, ReadStatesWholeWhileOthersLoadAndAsk) {
    VstInstance instance;
    instance.forgetsReports = true;
    const std::vector<char> low = WithValues(instance.Chunk(), 0.25f);
    const std::vector<char> high = WithValues(low, 0.75f);
    instance.LoadChunk(low);
    std::atomic<int> numMixed = 0;
    std::vector<std::jthread> savers;
    for (int i = 0; i < 3; ++i) {
        savers.push_back(test::Repeatedly([&](int) {
            void* data = nullptr;
            instance.Dispatch(vst::effGetChunk, 0, 0, &data);
            std::this_thread::yield();  // others ask while this one reads
            numMixed += std::memcmp(data, low.data(), low.size()) != 0 &&
                        std::memcmp(data, high.data(), high.size()) != 0;
        }));
    }
    for (int i = 0; i < 3000; ++i)
        instance.LoadChunk(i % 2 == 0 ? high : low);
    savers.clear();
    EXPECT_EQ(numMixed, 0);
}

TEST(ModuleHostile, PlaysOnWithAnyFloatInAnyParameter) {
    VstInstance instance(44100.0f);
    instance.SwitchEverythingOn();
    for (int slot = 0; slot < kMatrixSlots; ++slot) {
        const int first = kMatrix + slot * kMatrixSlotSize;
        instance.Set(first, static_cast<float>(1 + slot % 8));
        instance.Set(first + 1, 0.5f);
        instance.Set(first + 3, static_cast<float>(2 * slot % 15));
    }
    const std::vector<char> patch = instance.Chunk();
    for (const float value : test::HostileFloats()) {
        for (int index = 0; index < kNumParams; ++index) {
            instance.LoadChunk(patch);
            instance.Note(24 + index % 84);
            instance.Set(index, value);
            ASSERT_TRUE(instance.Render(128).IsFinite()) << value << " in parameter " << index;
        }
        instance.LoadChunk(WithValues(patch, value));
        for (int note = 24; note < 108; note += 7)
            instance.Note(note);
        ASSERT_TRUE(instance.Render(2048).IsFinite()) << value << " everywhere";
    }
    // After everything the default sound is what it always was: loud enough and dying away.
    instance.LoadChunk(VstInstance().Chunk());
    instance.Dispatch(vst::effMainsChanged, 0, 1);
    instance.Note(60);
    const float peak = instance.Render(4800).Peak();
    EXPECT_GT(peak, 1e-3f);
    EXPECT_LT(peak, 10.0f);
}

}  // namespace
}  // namespace norava
