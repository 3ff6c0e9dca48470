#include "dsp/string_delay.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "dsp/numbers.h"
#include "dsp/string_group.h"

namespace norava {
namespace {

TEST(StringDelay, KeepsItsDelayWithinFiveFramesAndItsLength) {
    const auto delayFrames = [](long length, double fraction) {
        CStringDelay line(length);
        line.setDelay(fraction);
        return 1.0 / line.rate();
    };
    EXPECT_DOUBLE_EQ(delayFrames(1000, 0.5), 501.0);
    EXPECT_DOUBLE_EQ(delayFrames(1000, 1.0), 0.99 * 998.0 + 2.0);
    EXPECT_DOUBLE_EQ(delayFrames(1000, -1.0), 5.0);
    EXPECT_DOUBLE_EQ(delayFrames(2, 0.5), 4.0);  // the line itself is shorter than five frames
    EXPECT_DOUBLE_EQ(delayFrames(1000, std::nan("")), 501.0);
}

TEST(StringDelay, DelaysAnImpulseByItsPeriod) {
    for (const double fraction : {0.1, 0.3337, 0.9}) {
        CStringDelay line(1000);
        line.setDelay(fraction);
        double sum = 0.0;
        double moment = 0.0;
        for (int i = 0; i < 3000; ++i) {
            const double out = static_cast<double>(line.GetFrame(i == 1100 ? 1.0f : 0.0f));
            sum += out;
            moment += out * (i - 1100);
        }
        // Spread over two frames by the interpolation, but at the right place on average: a frame
        // is read before it is written, which makes the way round one frame longer than the period.
        EXPECT_NEAR(sum, 1.0, 1e-3);
        EXPECT_NEAR(moment / sum, 1.0 / line.rate() + 1.0, 1e-3);
    }
}

class Grouped : public testing::TestWithParam<KernelPath> {};
INSTANTIATE_TEST_SUITE_P(Paths, Grouped, testing::Values(KernelPath::baseline, KernelPath::wide));

// Lines of all kinds, side by side and one by one, retuned and restarted while they sound.
TEST_P(Grouped, GivesTheBitsOfItsLines) {
    if (!kernelPathAvailable(GetParam())) GTEST_SKIP() << "this machine lacks the instructions";
    std::minstd_rand random(3);
    std::uniform_real_distribution<double> any(0.0, 1.0);
    for (const long length : {4L, 30L, 100L, 4800L, 76800L}) {
        for (std::size_t count = 1; count <= StringGroup::kLanes; ++count) {
            StringGroup group(GetParam());
            std::vector<std::unique_ptr<CStringDelay>> alone, grouped;
            std::vector<CStringDelay*> lines;
            for (std::size_t k = 0; k < count; ++k) {
                alone.push_back(std::make_unique<CStringDelay>(length));
                grouped.push_back(std::make_unique<CStringDelay>(length));
                lines.push_back(grouped.back().get());
            }
            for (int block = 0; block < 150; ++block) {
                for (std::size_t k = 0; k < count && any(random) < 0.1; ++k) {
                    const double fraction = any(random) < 0.2 ? 0.0 : std::pow(any(random), 3.0);
                    const double feedback = any(random);
                    for (CStringDelay* line : {alone[k].get(), lines[k]}) {
                        line->setDelay(fraction);
                        line->setFdbk(feedback);
                        line->damping = 0.5f;
                        if (block % 40 == 39) line->reset();
                    }
                }
                const int frames = 1 + static_cast<int>(any(random) * 64.0) % 64;
                v128 input[64], output[64];
                for (int i = 0; i < frames; ++i)
                    input[i] = v128_Set(static_cast<float>(any(random) - 0.5));
                group.process(lines.data(), static_cast<int>(count), input, output, frames);
                for (int i = 0; i < frames; ++i) {
                    for (std::size_t k = 0; k < count; ++k)
                        ASSERT_EQ(output[i][k], alone[k]->GetFrame(input[i][0]))
                            << length << " " << block;
                }
            }
        }
    }
}

}  // namespace
}  // namespace norava
