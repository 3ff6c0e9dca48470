#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
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
    for (const int switched : {kDelayOn, kChorusOn, kReverbOn})
        instance.Set(switched, 1.0f);
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

void ExpectFinite(VstInstance& instance, int frames, const std::string& what) {
    ASSERT_TRUE(IsFinite(instance.Render(frames))) << what;
}

// After everything the default sound is what it always was: loud enough and dying away.
void ExpectPlays(VstInstance& instance) {
    VstInstance fresh;
    ASSERT_EQ(instance.LoadChunk(fresh.Chunk()), VstInstance::kChunkSize);
    instance.Dispatch(vst::effMainsChanged, 0, 0);
    instance.Dispatch(vst::effMainsChanged, 0, 1);
    instance.Send({{0, {0xB0, 7, 127}}, {0, {0xB0, 10, 64}}, {0, {0xE0, 0, 64}}});
    instance.Note(60);
    const float peak = Peak(instance.Render(4800).left);
    EXPECT_GT(peak, 1e-3f);
    EXPECT_LT(peak, 10.0f);
}

TEST(ModuleHostile, PlaysOnWithAnyFloatInAnyParameter) {
    const std::vector<char> patch = BusyPatch();
    VstInstance instance;
    instance.Start(44100.0f);
    for (const float value : test::HostileFloats()) {
        for (int index = 0; index < kNumParams; ++index) {
            instance.LoadChunk(patch);
            instance.Note(24 + index % 84);
            instance.Set(index, value);
            const std::string what =
                std::to_string(value) + " in parameter " + std::to_string(index);
            ASSERT_NO_FATAL_FAILURE(ExpectFinite(instance, 128, what));

            std::vector<char> chunk = patch;
            std::memcpy(chunk.data() + 4 + 4 * static_cast<std::size_t>(index), &value, 4);
            instance.LoadChunk(chunk);
            ASSERT_NO_FATAL_FAILURE(ExpectFinite(instance, 128, what + " of a chunk"));
        }
    }
    ExpectPlays(instance);
}

TEST(ModuleHostile, PlaysOnWithTheSameFloatInAllParameters) {
    VstInstance instance;
    instance.Start(48000.0f);
    for (const float value : test::HostileFloats()) {
        for (int index = 0; index < kNumParams; ++index)
            instance.Set(index, value);
        for (int note = 24; note < 108; note += 7)
            instance.Note(note);
        ASSERT_NO_FATAL_FAILURE(ExpectFinite(instance, 2048, std::to_string(value)));
    }
    ExpectPlays(instance);
}

TEST(ModuleHostile, PlaysOnWithEveryBitOfAChunkFlipped) {
    const std::vector<char> patch = BusyPatch();
    VstInstance instance;
    instance.Start(44100.0f);
    for (std::size_t bit = 0; bit < 8 * patch.size(); ++bit) {
        std::vector<char> chunk = patch;
        chunk[bit / 8] = static_cast<char>(chunk[bit / 8] ^ (1 << bit % 8));
        EXPECT_EQ(instance.LoadChunk(chunk), bit < 32 ? 0 : VstInstance::kChunkSize);
        if (bit % 4 == 0) instance.Note(24 + static_cast<int>(bit / 4) % 84);
        ASSERT_NO_FATAL_FAILURE(ExpectFinite(instance, 96, "bit " + std::to_string(bit)));
    }
    ExpectPlays(instance);
}

TEST(ModuleHostile, TakesAllThreeByteMessages) {
    VstInstance instance;
    instance.Start(44100.0f);
    std::vector<VstInstance::Message> messages(4096);
    std::vector<float> left(64);
    std::vector<float> right(64);
    for (unsigned message = 0; message < 1u << 24; ++message) {
        const std::size_t slot = message % messages.size();
        messages[slot] = {
            static_cast<int>(slot / 64),
            {static_cast<unsigned char>(message >> 16), static_cast<unsigned char>(message >> 8),
             static_cast<unsigned char>(message)}};
        if (slot + 1 < messages.size()) continue;
        instance.Send(messages);
        instance.Process(left.data(), right.data(), 64);
        ASSERT_TRUE(IsFinite(left) && IsFinite(right)) << std::hex << message;
    }
    ExpectPlays(instance);
}

TEST(ModuleHostile, TakesEventsInAnyShape) {
    VstInstance instance;
    instance.Start(44100.0f);
    vst::VstMidiEvent note{};
    note.type = vst::kVstMidiType;
    note.midiData[0] = 0x90;
    note.midiData[1] = 60;
    note.midiData[2] = 100;
    vst::VstMidiEvent foreign = note;
    foreign.type = 6;
    vst::VstEvents events{};
    EXPECT_EQ(instance.Dispatch(vst::effProcessEvents, 0, 0, nullptr), 1);
    for (const int count : {-3, 0}) {
        events.numEvents = count;
        EXPECT_EQ(instance.Dispatch(vst::effProcessEvents, 0, 0, &events), 1);
    }
    events.numEvents = 2;
    events.events[1] = reinterpret_cast<vst::VstEvent*>(&foreign);
    EXPECT_EQ(instance.Dispatch(vst::effProcessEvents, 0, 0, &events), 1);
    EXPECT_EQ(Peak(instance.Render(512).left), 0.0f);
    // Unsorted, and more than one call a block.
    for (const int position : {400, 100, 2000000000, -2000000000, 300}) {
        note.deltaFrames = position;
        events.numEvents = 1;
        events.events[0] = reinterpret_cast<vst::VstEvent*>(&note);
        instance.Dispatch(vst::effProcessEvents, 0, 0, &events);
    }
    EXPECT_GT(Peak(instance.Render(512).left), 0.0f);
}

}  // namespace
}  // namespace norava
