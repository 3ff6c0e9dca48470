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
#include "parameters/parameter_table.h"
#include "synth/hostile_floats.h"

namespace norava {
namespace {

using namespace param;
using namespace vst;

constexpr int kNumParams = VstInstance::kParams;
constexpr std::size_t kValuesOffset = 4;

TEST(ModuleIdentity, FillsTheRecord) {
    VstInstance instance;
    const AEffect& effect = *instance.effect;
    EXPECT_EQ(effect.magic, 0x56737450);
    EXPECT_EQ(effect.numPrograms, 1);
    EXPECT_EQ(effect.numParams, 114);
    EXPECT_EQ(effect.numInputs, 0);
    EXPECT_EQ(effect.numOutputs, 2);
    EXPECT_EQ(effect.flags,
              effFlagsHasEditor | effFlagsCanReplacing | effFlagsProgramChunks | effFlagsIsSynth);
    EXPECT_EQ(effect.uniqueID, 0x4E6F7652);
    EXPECT_EQ(effect.version, 1150);
    EXPECT_EQ(effect.processDoubleReplacing, nullptr);
}

TEST(ModuleIdentity, AnswersWhatHostsAsk) {
    VstInstance instance;
    EXPECT_EQ(instance.Text(effGetEffectName, 0, 32), "Norava");
    EXPECT_EQ(instance.Text(effGetVendorString, 0, 64), "Hollo-Vane");
    EXPECT_EQ(instance.Text(effGetProductString, 0, 64), "Norava 1.1.5");
    EXPECT_EQ(instance.Dispatch(effGetVstVersion), 2400);
    EXPECT_EQ(instance.Dispatch(effGetVendorVersion), 1150);
    EXPECT_EQ(instance.Dispatch(effGetPlugCategory), kPlugCategSynth);
    EXPECT_EQ(instance.Dispatch(effIdentify), 0x4E764566);
    EXPECT_EQ(instance.Dispatch(effSetProcessPrecision, 0, 0), 1);
    EXPECT_EQ(instance.Dispatch(effSetProcessPrecision, 0, 1), 0);
    for (int i = -1; i <= kNumParams; ++i) {
        const bool exists = i >= 0 && i < kNumParams;
        const bool isNamed = exists && i < kNumHostParameters;
        EXPECT_EQ(instance.Dispatch(effCanBeAutomated, i), exists);
        EXPECT_EQ(instance.Text(effGetParamName, i, 32), isNamed  ? GetParameter(i).name
                                                         : exists ? ""
                                                                  : "<out of range>");
        EXPECT_EQ(instance.Get(i), exists ? GetParameter(i).defaultValue : 0.0f) << i;
    }

    const auto canDo = [&](std::string ability) {
        return instance.Dispatch(effCanDo, 0, 0, ability.data());
    };
    for (const char* ability : {"receiveVstEvents", "receiveVstMidiEvent", "receiveVstTimeInfo"})
        EXPECT_EQ(canDo(ability), 1) << ability;
    for (const char* ability : {"sendVstMidiEvent", "bypass", "", "receiveVstEvent"})
        EXPECT_EQ(canDo(ability), -1) << ability;

    for (int pin = -1; pin <= 2; ++pin) {
        VstPinProperties properties;
        std::memset(&properties, 0xAA, sizeof(properties));
        const bool exists = pin == 0 || pin == 1;
        EXPECT_EQ(instance.Dispatch(effGetOutputProperties, pin, 0, &properties), exists);
        if (!exists) continue;
        EXPECT_STREQ(properties.label, "Master");
        EXPECT_EQ(properties.flags, kVstPinIsActive | kVstPinIsStereo);
        EXPECT_EQ(properties.future[47], 0);
    }
}

TEST(ModuleIdentity, AnswersNothingToUnknownQuestionsAndMissingPointers) {
    VstInstance instance(44100.0f);
    const std::vector<char> before = instance.Chunk();
    // Known to the interface, not to us: deprecated, offline and shell calls, speakers, MIDI names.
    auto* const noPointer = reinterpret_cast<void*>(std::uintptr_t{0x10});
    for (int opcode : {-1, 9, 16, 18, 20, 27, 28, 30, 33, 36, 44, 46, 50, 52, 57, 61, 66, 79, 300})
        EXPECT_EQ(instance.Dispatch(opcode, 3, -7, noPointer, 0.5f), 0) << opcode;
    for (int opcode = 2; opcode < 80; ++opcode)
        instance.Dispatch(opcode);
    EXPECT_EQ(instance.Chunk(), before);
}

TEST(ModuleProgram, HasANameThatFitsEveryHost) {
    VstInstance instance;
    instance.SetProgramName(std::string(300, 'n'));
    EXPECT_EQ(instance.ProgramName(), std::string(23, 'n'));
    EXPECT_EQ(instance.Text(effGetProgramNameIndexed, 5, 24), std::string(23, 'n'));
    EXPECT_EQ(std::string(instance.Chunk().data() + 460), std::string(127, 'n'));
}

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
    const iptr huge = iptr{1} << 40;
    for (const iptr size : {iptr{-1}, -huge, huge, huge + VstInstance::kChunkSize})
        EXPECT_EQ(instance.Dispatch(effSetChunk, 0, size, other.data()), 0);
    EXPECT_EQ(instance.Dispatch(effSetChunk, 0, VstInstance::kChunkSize, nullptr), 0);
    EXPECT_EQ(instance.Dispatch(effGetChunk, 0, 0, nullptr), 0);
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
            instance.Dispatch(effGetChunk, 0, 0, &data);
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

// In a patch in which everything works: all effects, all bands, and each matrix slot busy.
TEST(ModuleParameters, ShowAndPlayAnyValue) {
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
        for (int index = -1; index <= kNumParams; ++index) {
            instance.LoadChunk(patch);
            instance.Note(25 + index % 84);
            instance.Set(index, value);
            instance.Text(effGetParamDisplay, index, 32);
            instance.Text(effGetParamLabel, index, 32);
            ASSERT_TRUE(instance.Render(128).IsFinite()) << value << " in parameter " << index;
        }
        instance.LoadChunk(WithValues(patch, value));
        for (int note = 24; note < 108; note += 7)
            instance.Note(note);
        ASSERT_TRUE(instance.Render(2048).IsFinite()) << value << " everywhere";
    }
}

}  // namespace
}  // namespace norava
