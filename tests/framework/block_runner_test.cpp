#include "framework/block_runner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "framework/denormal_guard.h"
#include "framework/plugin_renderer.h"
#include "framework/test_definition.h"

namespace norava {
namespace {

using testing::ElementsAre;

// Writes down what it is asked for; its sound is the number of the frame since the start.
class LoggingRenderer : public CPluginRenderer {
  public:
    void ProcessAudioBuffers() override {
        const int frames = outputBuffer.GetNumFrames();
        log.push_back("audio " + std::to_string(frames));
        for (int i = 0; i < frames; ++i) {
            for (int channel = 0; channel < outputBuffer.GetNumChannels(); ++channel) {
                const float* const input = inputBuffer.GetBuf(channel);
                outputBuffer.GetBuf(channel)[i] +=
                    static_cast<float>(frame) + (input != nullptr ? input[i] : 0.0f);
            }
            ++frame;
        }
        volatile float tiny = 1e-38f;
        product = tiny * 1e-3f;
    }
    void ApplyPendingValues() override { log.emplace_back("apply"); }
    void MIDINoteOn(int note) override { log.push_back("note " + std::to_string(note)); }
    bool TransportChanged(bool playing) override {
        log.emplace_back(playing ? "play" : "stop");
        return playing;
    }
    void AddNote(int position, int note) {
        const std::array<unsigned char, 3> bytes = {0x90, static_cast<unsigned char>(note), 100};
        CreateMIDIEvent(position, bytes.data(), bytes.size());
    }

    std::vector<std::string> log;
    int frame = 0;
    float product = -1.0f;  // of two numbers that make a denormal one
};

TEST(BlockRunner, TellsTheTimeAndCutsBlocksAtEventsAndSlices) {
    TestDefinition definition;
    LoggingRenderer renderer;
    std::vector<float> left(1000, 0.5f);
    std::vector<float> right(1000, 0.5f);
    const std::array<float*, 2> outputs{left.data(), right.data()};
    for (const auto& [position, note] :
         {std::pair{0, 60}, {40, 61}, {40, 62}, {1000, 63}, {1001, 64}})
        renderer.AddNote(position, note);
    RunBlock(renderer, {{}, outputs, 1000, true}, {99.0, 2.5, true});
    EXPECT_THAT(renderer.log, ElementsAre("play", "apply", "note 60", "audio 40", "note 61",
                                          "note 62", "audio 512", "audio 448", "note 63"));
    EXPECT_EQ(renderer.GetNumEvents(), 0);
    EXPECT_EQ(renderer.GetSongTempo(), 99.0);
    EXPECT_EQ(renderer.GetSongBeatPos(), 2.5);
    EXPECT_EQ(left[999], 999.5f);
    EXPECT_EQ(right[999], 999.5f);

    renderer.log.clear();
    renderer.AddNote(0, 60);
    renderer.AddNote(1, 61);
    RunBlock(renderer, {{}, outputs, -5, false}, {});
    EXPECT_THAT(renderer.log, ElementsAre("apply", "note 60"));
}

TEST(BlockRunner, DiscardsWhatNobodyWants) {
    TestDefinition definition;
    LoggingRenderer renderer;
    std::vector<float> sound(10);
    RunBlock(renderer, {{}, {}, 10, false}, {});
    RunBlock(renderer, {{}, std::array<float*, 2>{nullptr, sound.data()}, 10, false}, {});
    EXPECT_EQ(sound[9], 19.0f);  // time goes on
    RunBlock(renderer, {{}, std::array<float*, 1>{sound.data()}, 10, false}, {});
    EXPECT_EQ(sound[9], 29.0f);
}

TEST(BlockRunner, FeedsInputsOfAnEffectInPlace) {
    TestDefinition definition(1, 1);
    LoggingRenderer renderer;
    std::vector<float> left(700, 1000.0f);
    std::vector<float> right(700, 2000.0f);
    const std::array<const float*, 2> inputs{left.data(), nullptr};
    const std::array<float*, 2> outputs{left.data(), right.data()};
    RunBlock(renderer, {inputs, outputs, 700, false}, {});
    EXPECT_EQ(left[699], 1699.0f);
    EXPECT_EQ(right[699], 699.0f);  // a channel that is not connected is silent
}

TEST(BlockRunner, DropsEventsOfARendererWithoutOutputs) {
    TestDefinition definition(0, 0);
    LoggingRenderer renderer;
    renderer.AddNote(5, 61);
    RunBlock(renderer, {{}, {}, 64, false}, {});
    EXPECT_EQ(renderer.GetNumEvents(), 0);
}

#if defined(NORAVA_DENORMALS_X86)
TEST(BlockRunner, FlushesDenormalsAndGivesTheHostsModeBack) {
    TestDefinition definition;
    LoggingRenderer renderer;
    const unsigned roundDown = 0x2000;
    const unsigned before = _mm_getcsr();
    _mm_setcsr(before | roundDown);
    RunBlock(renderer, {{}, {}, 4, false}, {});
    const unsigned after = _mm_getcsr();
    _mm_setcsr(before);
    EXPECT_EQ(renderer.product, 0.0f);
    EXPECT_EQ(after, before | roundDown);
}
#endif

}  // namespace
}  // namespace norava
