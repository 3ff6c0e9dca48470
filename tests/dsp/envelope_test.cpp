#include "dsp/envelope.h"

#include <gtest/gtest.h>

#include <cmath>

namespace norava {
namespace {

// 1 s up, 2 s down to a half, 4 s to silence.
void start(CEgADSR& envelope, double sustain = 0.5) {
    envelope.start(0.0, 1.0, 2.0, sustain, 4.0, 0.0, 0.0, 0.0, 48000.0, 1.0);
}

TEST(Envelope, TakesItsTimes) {
    CEgADSR envelope;
    start(envelope);
    EXPECT_FLOAT_EQ(envelope.GetFrame(24000), 0.5f);
    EXPECT_EQ(envelope.GetFrame(24100), 1.0f);  // what is left of the attack is dropped
    EXPECT_FLOAT_EQ(envelope.GetFrame(48000), 0.75f);
    EXPECT_EQ(envelope.GetFrame(48001), 0.5f);
    EXPECT_EQ(envelope.GetFrame(1000000), 0.5f);
    envelope.release();
    EXPECT_FLOAT_EQ(envelope.GetFrame(96000), 0.25f);
    envelope.release();  // changes nothing
    EXPECT_FALSE(envelope.isFinished());
    EXPECT_EQ(envelope.GetFrame(96001), 0.0f);
    EXPECT_TRUE(envelope.isFinished());

    start(envelope, 0.0);  // without a sustain it ends by itself
    envelope.GetFrame(48000);
    EXPECT_EQ(envelope.GetFrame(96001), 0.0f);
    EXPECT_TRUE(envelope.isFinished());
    // Short times and what is none become a millisecond.
    envelope.start(0.0, 0.0, -1.0, 0.5, std::nan(""), 0.0, 0.0, 0.0, 48000.0, 1.0);
    EXPECT_FLOAT_EQ(envelope.GetFrame(24), 0.5f);
}

TEST(Envelope, ReleasesAndRetriggersFromWhereItStands) {
    CEgADSR envelope;
    start(envelope);
    envelope.GetFrame(12000);
    envelope.release();
    EXPECT_FLOAT_EQ(envelope.GetFrame(96000), 0.125f);
    start(envelope);
    EXPECT_FLOAT_EQ(envelope.GetFrame(24000), 0.5f * (0.125f + 1.0f));
    envelope.setFinished();
    // Twice in one block: nothing of the former note is left.
    start(envelope);
    start(envelope);
    EXPECT_FLOAT_EQ(envelope.GetFrame(24000), 0.5f);
}

TEST(Envelope, BendsItsCurves) {
    CEgADSR early, undershoot;
    early.start(0.0, 1.0, 1.0, 0.5, 1.0, -2.0, 0.0, 0.0, 48000.0, 1.0);
    EXPECT_NEAR(early.GetFrame(24000), 1.0 - 0.5 * std::pow(10.0, -1.0), 1e-6);
    undershoot.start(0.2, 1.0, 1.0, 0.5, 1.0, 2.0, 0.0, 0.0, 48000.0, 1.0);
    EXPECT_EQ(undershoot.GetFrame(24000), 0.0f);  // never below 0
}

}  // namespace
}  // namespace norava
