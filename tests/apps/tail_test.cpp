#include "render/tail.h"

#include <gtest/gtest.h>

namespace norava {
namespace {

constexpr double kRateHz = 1000.0;
constexpr std::size_t kBlockFrames = 100;

// Feeds blocks of a tenth of a second at the given level until the tail is over or `seconds` have
// gone in; returns the seconds kept.
class Feeder {
  public:
    explicit Feeder(Tail& tail) : tail_(tail) {}

    bool Feed(double seconds, float level) {
        const std::vector<float> block(2 * kBlockFrames, level);
        bool more = true;
        for (int i = 0; i < int(seconds * kRateHz / kBlockFrames + 0.5) && more; ++i) {
            more = tail_.Take(block, kept_);
        }
        return more;
    }
    double KeptSeconds() const { return double(kept_.size()) / 2.0 / kRateHz; }

  private:
    Tail& tail_;
    std::vector<float> kept_;
};

TEST(Tail, AFixedOneIsKeptToTheFrame) {
    Tail tail(0.25, kRateHz);
    Feeder feeder(tail);
    EXPECT_FALSE(feeder.Feed(1.0, 0.0f));
    EXPECT_DOUBLE_EQ(feeder.KeptSeconds(), 0.25);
    EXPECT_FALSE(tail.IsCutShort());
}

TEST(Tail, EndsWhereTheLastSoundEnded) {
    Tail tail(std::nullopt, kRateHz);
    Feeder feeder(tail);
    EXPECT_TRUE(feeder.Feed(1.0, 0.5f));
    EXPECT_TRUE(feeder.Feed(2.0, 1e-6f));  // the gap before an echo
    EXPECT_TRUE(feeder.Feed(1.0, -0.01f));
    EXPECT_FALSE(feeder.Feed(3.0, 0.0f));
    EXPECT_DOUBLE_EQ(feeder.KeptSeconds(), 4.0);
    EXPECT_FALSE(tail.IsCutShort());
}

TEST(Tail, AnEndlessSoundIsCutAfterAMinute) {
    Tail tail(std::nullopt, kRateHz);
    Feeder feeder(tail);
    EXPECT_FALSE(feeder.Feed(100.0, 0.5f));
    EXPECT_DOUBLE_EQ(feeder.KeptSeconds(), 60.0);
    EXPECT_TRUE(tail.IsCutShort());
}

}  // namespace
}  // namespace norava
