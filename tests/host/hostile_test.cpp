#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "host/vst_host.h"
#include "parameters/parameter_index.h"
#include "synth/hostile_floats.h"

// Whatever comes in, the sound that goes out is finite, and the instrument plays on.

namespace norava {
namespace {

using namespace param;

constexpr int kNumParams = VstInstance::kParams;

// A patch in which everything works: all effects, all bands, and each matrix slot busy.
std::vector<char> BusyPatch() {
    VstInstance instance;
    instance.SwitchEffectsOn();
    for (int band = 0; band < kResonatorBands; ++band)
        instance.Set(kResonatorOn + band, 1.0f);
    for (int slot = 0; slot < kMatrixSlots; ++slot) {
        const int first = kMatrix + slot * kMatrixSlotSize;
        instance.Set(first, static_cast<float>(1 + slot % 8));
        instance.Set(first + 1, 0.5f);
        instance.Set(first + 3, static_cast<float>(2 * slot % 15));
    }
    return instance.Chunk();
}

TEST(ModuleHostile, PlaysOnWithAnyFloatInAnyParameter) {
    const std::vector<char> patch = BusyPatch();
    VstInstance instance(44100.0f);
    for (const float value : test::HostileFloats()) {
        for (int index = 0; index < kNumParams; ++index) {
            instance.LoadChunk(patch);
            instance.Note(24 + index % 84);
            instance.Set(index, value);
            ASSERT_TRUE(IsFinite(instance.Render(128))) << value << " in parameter " << index;
            std::vector<char> chunk = patch;
            std::memcpy(chunk.data() + 4 + 4 * static_cast<std::size_t>(index), &value, 4);
            instance.LoadChunk(chunk);
            ASSERT_TRUE(IsFinite(instance.Render(128))) << value << " in parameter " << index;
        }
        for (int index = 0; index < kNumParams; ++index)
            instance.Set(index, value);
        for (int note = 24; note < 108; note += 7)
            instance.Note(note);
        ASSERT_TRUE(IsFinite(instance.Render(2048))) << value << " everywhere";
    }
    // After everything the default sound is what it always was: loud enough and dying away.
    ASSERT_EQ(instance.LoadChunk(VstInstance().Chunk()), VstInstance::kChunkSize);
    instance.Dispatch(vst::effMainsChanged, 0, 1);
    instance.Note(60);
    const float peak = Peak(instance.Render(4800));
    EXPECT_GT(peak, 1e-3f);
    EXPECT_LT(peak, 10.0f);
}

TEST(ModuleHostile, TakesEventsInAnyShape) {
    VstInstance instance(44100.0f);
    EXPECT_EQ(instance.Dispatch(vst::effProcessEvents, 0, 0, nullptr), 1);
    vst::VstMidiEvent foreign{};
    foreign.type = 6;
    foreign.midiData[0] = 0x90;
    foreign.midiData[2] = 100;
    vst::VstEvents events{2, 0, {nullptr, reinterpret_cast<vst::VstEvent*>(&foreign)}};
    for (const int count : {2, 0, -3}) {
        events.numEvents = count;
        EXPECT_EQ(instance.Dispatch(vst::effProcessEvents, 0, 0, &events), 1);
    }
    EXPECT_EQ(Peak(instance.Render(512)), 0.0f);
    // Unsorted, and more than one call a block.
    for (const int position : {400, 100, 2000000000, -2000000000, 300})
        instance.Note(60, 100, position);
    EXPECT_GT(Peak(instance.Render(512)), 0.0f);
}

}  // namespace
}  // namespace norava
