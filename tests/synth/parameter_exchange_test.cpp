#include "synth/parameter_exchange.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "synth/player.h"

namespace norava {
namespace {

using Applied = std::vector<std::pair<int, float>>;

class ParameterExchangeTest : public testing::Test {
  protected:
    void Store(int index, float value) {
        values_[static_cast<std::size_t>(index)] = value;
        exchange_.Mark(index);
    }
    float Read(int index) const { return values_[static_cast<std::size_t>(index)]; }
    Applied Take() {
        Applied applied;
        exchange_.TakePending([this](int i) { return Read(i); }, [&] { ++resets_; },
                              [&](int i, float value) { applied.emplace_back(i, value); });
        return applied;
    }

    int resets_ = 0;
    ParameterExchange exchange_;
    std::array<float, kNumParameters> values_{};
};

TEST_F(ParameterExchangeTest, AppliesWhatWasMarkedOnceAndInOrder) {
    Store(113, 0.3f);
    Store(0, 0.1f);
    Store(64, 0.2f);
    Store(63, 0.4f);
    EXPECT_EQ(Take(), (Applied{{0, 0.1f}, {63, 0.4f}, {64, 0.2f}, {113, 0.3f}}));
    EXPECT_EQ(Take(), Applied());
    Store(64, 0.2f);
    EXPECT_EQ(Take(), (Applied{{64, 0.2f}})) << "an equal value is an event too";
}

TEST_F(ParameterExchangeTest, TakesNothingOfAStateThatIsBeingStored) {
    Store(5, 1.0f);
    exchange_.StoreWhole([&] {
        Store(1, 1.0f);
        EXPECT_EQ(Take(), Applied());
        EXPECT_FALSE(exchange_.TryStoreWhole([] {})) << "one at a time";
        Store(2, 1.0f);
    });
    EXPECT_EQ(Take(), (Applied{{1, 1.0f}, {2, 1.0f}, {5, 1.0f}}));
}

TEST_F(ParameterExchangeTest, ResetsWithTheStateThatAskedForIt) {
    exchange_.StoreWhole([&] {
        exchange_.MarkReset();
        Store(1, 1.0f);
        Take();
        EXPECT_EQ(resets_, 0);
    });
    EXPECT_EQ(Take(), (Applied{{1, 1.0f}}));
    EXPECT_EQ(resets_, 1);
    Take();
    EXPECT_EQ(resets_, 1);
}

TEST_F(ParameterExchangeTest, DropsACopyThatAStateFellInto) {
    Store(1, 1.0f);
    Store(2, 1.0f);
    Applied applied;
    exchange_.TakePending(
        [&](int i) {
            if (i == 2)
                exchange_.StoreWhole([&] { Store(1, 9.0f), Store(2, 9.0f), Store(3, 9.0f); });
            return Read(i);
        },
        [] {}, [&](int i, float value) { applied.emplace_back(i, value); });
    EXPECT_EQ(applied, Applied()) << "1 is of the old state and 2 of the new one";
    EXPECT_EQ(Take(), (Applied{{1, 9.0f}, {2, 9.0f}, {3, 9.0f}}));
}

TEST_F(ParameterExchangeTest, ReadsAgainWhatAStateFellInto) {
    int reads = 0;
    exchange_.ReadWhole([&] {
        if (++reads < 3) {
            EXPECT_TRUE(exchange_.TryStoreWhole([] {}));
        }
    });
    EXPECT_EQ(reads, 3);
    // States that never stop coming do not keep the reader out.
    reads = 0;
    exchange_.ReadWhole([&] {
        ++reads;
        (void)exchange_.TryStoreWhole([] {});
    });
    EXPECT_LT(reads, 1000);
}

// Two hosts' threads load states, others save, set and look, while the audio thread plays. Each
// state is all of one value, so that a mix shows. Run under the thread sanitizer as well.
TEST(Threads, MeetWithoutTearingAStateOrAValue) {
    test::Player player;
    CNoravaSynth& synth = player.synth;
    const auto stateOf = [](float value, const char* name) {
        InstrumentState state;
        state.values.fill(value);
        std::ranges::copy(std::string_view(name), state.name.begin());
        std::vector<char> block(kStateSize);
        WriteStateBlock(state, block.data());
        return block;
    };
    const std::vector<char> states[2] = {stateOf(0.25f, "quarter"),
                                         stateOf(0.75f, "three quarters")};
    ASSERT_TRUE(synth.LoadState(states[0].data(), kStateSize));

    std::atomic<bool> stop = false;
    std::atomic<int> mixed = 0, saved = 0;
    const auto until = [&stop](auto work) {
        return std::thread([&stop, work] {
            while (!stop)
                work();
        });
    };
    std::vector<std::thread> threads;
    for (const auto& state : states) {
        threads.push_back(until([&synth, &state] {
            EXPECT_TRUE(synth.LoadState(state.data(), kStateSize));
            std::this_thread::sleep_for(std::chrono::microseconds(50));
        }));
    }
    threads.push_back(until([&] {
        std::vector<char> block(kStateSize);
        synth.SaveState(block.data());
        if (block != states[0] && block != states[1]) ++mixed;
        ++saved;
    }));
    threads.push_back(until([&synth] {
        std::array<char, 64> text;
        synth.GetParamDisplay(20, text);
        synth.GetProgramName(text);
        synth.OutputPeak().Clear();
        (void)synth.GetKeyActivity(60);
    }));
    bool finite = true;
    for (int i = 0; i < 300; ++i) {
        player.NoteOn(48 + i % 24);
        player.NoteOff(36 + i % 24, 100);
        finite = finite && player.Render(256, 64).IsFinite();
    }
    stop = true;
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(finite);
    EXPECT_EQ(mixed, 0);
    EXPECT_GT(saved, 0);

    // Values that are set one by one while the sound goes on arrive as well.
    std::thread setter([&synth] {
        for (int i = 0; i < 2000; ++i)
            synth.SetParamValue(i % kNumParameters, 0.5f);
        for (int i = 0; i < kNumParameters; ++i)
            synth.SetParamValue(i, 0.0f);
    });
    for (int i = 0; i < 20; ++i)
        player.Render(64, 16);
    setter.join();
    player.NoteOn(60);
    player.Render(64);
    EXPECT_FLOAT_EQ(synth.GetChnLevel(false), std::pow(10.0f, -1.8f));
}

}  // namespace
}  // namespace norava
