#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "host/vst_host.h"
#include "parameters/parameter_index.h"

namespace norava {
namespace {

constexpr int kNumParams = VstInstance::kParams;
constexpr std::size_t kValuesOffset = 4;
constexpr std::size_t kNameOffset = 460;

std::uint32_t Bits(float value) {
    return std::bit_cast<std::uint32_t>(value);
}

void SetValue(std::vector<char>& chunk, int index, std::uint32_t bits) {
    std::memcpy(chunk.data() + kValuesOffset + 4 * static_cast<std::size_t>(index), &bits, 4);
}

TEST(ModuleChunk, BringsBackAnyBits) {
    VstInstance instance;
    std::vector<char> chunk = instance.Chunk();
    ASSERT_EQ(chunk.size(), static_cast<std::size_t>(VstInstance::kChunkSize));
    EXPECT_EQ(std::string(chunk.data(), 4), "1qzW");
    // Signalling numbers that are none among them: nothing on the way may compute with a value.
    std::mt19937 random(5);
    for (int round = 0; round < 50; ++round) {
        for (int i = 0; i < kNumParams; ++i) {
            const auto bits = static_cast<std::uint32_t>(random());
            SetValue(chunk, i, round == 0 ? 0x7F800001u + static_cast<std::uint32_t>(i) : bits);
        }
        EXPECT_EQ(instance.LoadChunk(chunk), VstInstance::kChunkSize);
        EXPECT_EQ(instance.Chunk(), chunk);
        for (int i = 0; i < kNumParams; ++i) {
            float value;
            std::memcpy(&value, chunk.data() + kValuesOffset + 4 * static_cast<std::size_t>(i), 4);
            ASSERT_EQ(Bits(instance.Get(i)), Bits(value));
        }
        EXPECT_TRUE(IsFinite(instance.Render(256)));
        EXPECT_EQ(instance.Chunk(), chunk) << "playing changed a stored value";
    }
}

TEST(ModuleChunk, HoldsWhatSetParameterStored) {
    VstInstance instance;
    std::mt19937 random(6);
    std::vector<char> expected = instance.Chunk();
    for (int i = 0; i < kNumParams; ++i) {
        const auto bits = static_cast<std::uint32_t>(random());
        SetValue(expected, i, bits);
        instance.Set(i, std::bit_cast<float>(bits));
    }
    EXPECT_EQ(instance.Chunk(), expected);
}

TEST(ModuleChunk, IsTheSameForTheSameState) {
    VstInstance first;
    VstInstance second;
    char longName[300];
    std::memset(longName, 'n', sizeof(longName));
    longName[299] = '\0';
    first.Dispatch(vst::effSetProgramName, 0, 0, longName);
    const std::vector<char> chunk = first.Chunk();
    EXPECT_EQ(std::string(chunk.data() + kNameOffset), std::string(127, 'n'));
    char shortName[] = "x";
    first.Dispatch(vst::effSetProgramName, 0, 0, shortName);
    second.Dispatch(vst::effSetProgramName, 0, 0, shortName);
    EXPECT_EQ(first.Chunk(), second.Chunk());  // nothing is left of the longer name
}

TEST(ModuleChunk, TellsTheHostOfTheNewValues) {
    VstInstance source;
    for (int i = 0; i < kNumParams; ++i)
        source.Set(i, static_cast<float>(i) / 200.0f);
    char name[] = "Harp";
    source.Dispatch(vst::effSetProgramName, 0, 0, name);
    const std::vector<char> chunk = source.Chunk();

    VstInstance instance;
    for (const int isPreset : {0, 1}) {
        instance.automated.clear();
        EXPECT_EQ(instance.Dispatch(vst::effSetChunk, isPreset, VstInstance::kChunkSize,
                                    const_cast<char*>(chunk.data())),
                  VstInstance::kChunkSize);
        ASSERT_EQ(instance.automated.size(), static_cast<std::size_t>(kNumHostParameters));
        for (int i = 0; i < kNumHostParameters; ++i) {
            EXPECT_EQ(instance.automated[static_cast<std::size_t>(i)],
                      std::pair(i, static_cast<float>(i) / 200.0f));
        }
    }
    EXPECT_EQ(instance.Text(vst::effGetProgramName, 0, 24), "Harp");
}

TEST(ModuleChunk, RefusesWhatIsNoState) {
    VstInstance instance;
    instance.Set(3, 0.125f);
    const std::vector<char> before = instance.Chunk();
    std::vector<char> other = before;
    SetValue(other, 3, 0);
    std::vector<char> foreign = other;
    foreign[2] = 'Z';
    EXPECT_EQ(instance.LoadChunk(foreign), 0);
    EXPECT_EQ(instance.LoadChunk({'1', 'q', 'z'}), 0);
    const vst::iptr huge = vst::iptr{1} << 40;
    for (const vst::iptr size : {vst::iptr{-1}, -huge, huge, huge + VstInstance::kChunkSize})
        EXPECT_EQ(instance.Dispatch(vst::effSetChunk, 0, size, other.data()), 0);
    EXPECT_EQ(instance.Dispatch(vst::effSetChunk, 0, 588, nullptr), 0);
    EXPECT_EQ(instance.Dispatch(vst::effGetChunk, 0, 0, nullptr), 0);
    EXPECT_TRUE(instance.automated.empty());
    EXPECT_EQ(instance.Chunk(), before);
}

TEST(ModuleChunk, LoadsWhatAShorterBlockHolds) {
    VstInstance source;
    for (int i = 0; i < kNumParams; ++i)
        source.Set(i, 0.75f);
    char newName[] = "new";
    source.Dispatch(vst::effSetProgramName, 0, 0, newName);
    const std::vector<char> whole = source.Chunk();

    for (std::size_t size = 0; size <= 600; ++size) {
        VstInstance* const instance = [] {
            static VstInstance one;
            return &one;
        }();
        for (int i = 0; i < kNumParams; ++i)
            instance->Set(i, 0.25f);
        char oldName[] = "old";
        instance->Dispatch(vst::effSetProgramName, 0, 0, oldName);
        std::vector<char> part = whole;
        part.resize(size);
        EXPECT_EQ(instance->LoadChunk(part), size >= 4 ? static_cast<vst::iptr>(size) : 0) << size;

        // A rest of three bytes is taken as a value whose last byte is 0.
        const int numLoaded =
            std::min(static_cast<int>((std::max<std::size_t>(size, 4) - 4 + 1) / 4), kNumParams);
        for (int i = 0; i < kNumParams; ++i) {
            const bool fragment = i == numLoaded - 1 && size < kNameOffset && size % 4 == 3;
            const std::uint32_t loaded = fragment ? Bits(0.75f) & 0xFFFFFFu : Bits(0.75f);
            ASSERT_EQ(Bits(instance->Get(i)), i < numLoaded ? loaded : Bits(0.25f))
                << size << " bytes, parameter " << i;
        }
        EXPECT_EQ(instance->Text(vst::effGetProgramName, 0, 24), size >= 588 ? "new" : "old")
            << size;
    }
}

}  // namespace
}  // namespace norava
