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

using testing::Each;
using testing::ElementsAre;

// Writes down what it is asked for; its sound is the number of the frame since the start.
class LoggingRenderer : public CPluginRenderer {
  public:
    void ProcessAudioBuffers() override {
        const int frames = outputBuffer.GetNumFrames();
        log.push_back("audio " + std::to_string(frames));
        for (int i = 0; i < frames; ++i) {
            for (int channel = 0; channel < outputBuffer.GetNumChannels(); ++channel) {
                const float input =
                    inputBuffer.GetNumChannels() > channel ? inputBuffer.GetBuf(channel)[i] : 0.0f;
                wasClear &= outputBuffer.GetBuf(channel)[i] == 0.0f;
                outputBuffer.GetBuf(channel)[i] = static_cast<float>(frame) + input;
            }
            ++frame;
        }
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
    bool wasClear = true;
};

class BlockRunnerTest : public testing::Test {
  protected:
    TestDefinition definition;
    LoggingRenderer renderer;
    std::vector<float> left = std::vector<float>(2000, -1.0f);
    std::vector<float> right = std::vector<float>(2000, -1.0f);
    std::array<float*, 2> outputs{left.data(), right.data()};

    void Run(int frames, bool accumulate = false) {
        RunBlock(renderer, {{}, outputs, frames, accumulate}, {});
    }
};

TEST_F(BlockRunnerTest, CutsLongBlocks) {
    Run(1000);
    EXPECT_THAT(renderer.log, ElementsAre("apply", "audio 512", "audio 488"));
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(left[static_cast<std::size_t>(i)], static_cast<float>(i));
        ASSERT_EQ(right[static_cast<std::size_t>(i)], static_cast<float>(i));
    }
    EXPECT_EQ(left[1000], -1.0f);
    EXPECT_TRUE(renderer.wasClear);
}

TEST_F(BlockRunnerTest, CutsAtEvents) {
    renderer.AddNote(0, 60);
    renderer.AddNote(40, 61);
    renderer.AddNote(40, 62);
    Run(100);
    EXPECT_THAT(renderer.log,
                ElementsAre("apply", "note 60", "audio 40", "note 61", "note 62", "audio 60"));
    EXPECT_EQ(left[99], 99.0f);
    EXPECT_EQ(renderer.GetNumEvents(), 0);
}

TEST_F(BlockRunnerTest, TakesEventsAtTheBordersAndDropsLaterOnes) {
    renderer.AddNote(64, 61);
    renderer.AddNote(65, 62);
    renderer.AddNote(-7, 60);
    Run(64);
    EXPECT_THAT(renderer.log, ElementsAre("apply", "note 60", "audio 64", "note 61"));
    renderer.log.clear();
    Run(8);
    EXPECT_THAT(renderer.log, ElementsAre("apply", "audio 8"));
}

TEST_F(BlockRunnerTest, DispatchesAnEmptyBlocksEvents) {
    for (int frames : {0, -5}) {
        renderer.log.clear();
        renderer.AddNote(0, 60);
        renderer.AddNote(1, 61);
        Run(frames);
        EXPECT_THAT(renderer.log, ElementsAre("apply", "note 60"));
        EXPECT_EQ(renderer.GetNumEvents(), 0);
    }
    EXPECT_EQ(left[0], -1.0f);
}

TEST_F(BlockRunnerTest, AddsToTheHostsSound) {
    std::fill(left.begin(), left.end(), 0.5f);
    Run(600, true);
    EXPECT_TRUE(renderer.wasClear);  // the renderer never sees what is there already
    EXPECT_EQ(left[599], 599.5f);
    EXPECT_EQ(left[600], 0.5f);
}

TEST_F(BlockRunnerTest, DiscardsWhatNobodyWants) {
    outputs[0] = nullptr;
    Run(10);
    EXPECT_EQ(right[9], 9.0f);
    RunBlock(renderer, {{}, {}, 10, false}, {});
    EXPECT_EQ(renderer.frame, 20);  // time goes on
    std::array<float*, 1> mono{left.data()};
    RunBlock(renderer, {{}, mono, 10, true}, {});
    EXPECT_EQ(left[9], 28.0f);
}

TEST_F(BlockRunnerTest, ReportsTimeBeforeEverythingElse) {
    renderer.AddNote(0, 60);
    RunBlock(renderer, {{}, outputs, 16, false}, {99.0, 2.5, true});
    EXPECT_THAT(renderer.log, ElementsAre("play", "apply", "note 60", "audio 16"));
    EXPECT_EQ(renderer.GetSongTempo(), 99.0);
    EXPECT_EQ(renderer.GetSongBeatPos(), 2.5);
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
    renderer.AddNote(0, 60);
    renderer.AddNote(5, 61);
    RunBlock(renderer, {{}, {}, 64, false}, {});
    EXPECT_EQ(renderer.GetNumEvents(), 0);
}

#if defined(NORAVA_DENORMALS_X86)
class DenormalRenderer : public CPluginRenderer {
  public:
    void ProcessAudioBuffers() override {
        volatile float tiny = 1e-38f;
        product = tiny * 1e-3f;
    }
    float product = -1.0f;
};

TEST(BlockRunner, FlushesDenormalsAndGivesTheHostsModeBack) {
    TestDefinition definition;
    DenormalRenderer renderer;
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
