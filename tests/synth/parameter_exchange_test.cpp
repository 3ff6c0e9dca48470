#include "synth/parameter_exchange.h"

#include <gtest/gtest.h>

#include <array>
#include <utility>
#include <vector>

#include "parameters/parameter_table.h"

namespace norava {
namespace {

using Applied = std::vector<std::pair<int, float>>;

class ParameterExchangeTest : public testing::Test {
  protected:
    void Store(int index, float value) {
        values_[static_cast<std::size_t>(index)] = value;
        exchange_.Mark(index);
    }
    Applied Take() {
        return Take([](int) {});
    }
    // `meanwhile` comes before a value is read.
    template <typename Meanwhile>
    Applied Take(Meanwhile meanwhile) {
        Applied applied;
        const auto read = [&](int i) {
            meanwhile(i);
            return values_[static_cast<std::size_t>(i)];
        };
        exchange_.TakePending(
            read, [&] { ++resets_; }, [&](int i, float value) { applied.emplace_back(i, value); });
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
        exchange_.MarkReset();
        Store(1, 1.0f);
        EXPECT_EQ(Take(), Applied());
        EXPECT_FALSE(exchange_.TryStoreWhole([] {})) << "one at a time";
        Store(2, 1.0f);
        EXPECT_EQ(resets_, 0);
    });
    for (const Applied& expected : {Applied{{1, 1.0f}, {2, 1.0f}, {5, 1.0f}}, Applied()}) {
        EXPECT_EQ(Take(), expected);
        EXPECT_EQ(resets_, 1);
    }
}

TEST_F(ParameterExchangeTest, DropsACopyThatAStateFellInto) {
    Store(1, 1.0f);
    Store(2, 1.0f);
    const Applied copy = Take([&](int i) {
        if (i == 2) exchange_.StoreWhole([&] { Store(1, 9.0f), Store(2, 9.0f), Store(3, 9.0f); });
    });
    EXPECT_EQ(copy, Applied()) << "1 is of the old state and 2 of the new one";
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

}  // namespace
}  // namespace norava
