#include "synth/rate_converter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>
#include <vector>

namespace norava {
namespace {

// One channel, the steps one by one, as plainly as they can be put: everything cleared, everything
// read.
struct PlainConverter {
    explicit PlainConverter(double hostRate) : step(48000.0 / hostRate) {}

    template <typename Render>
    void Process(float* out, int frames, Render render) {
        for (int done = 0; done < frames;) {
            const int end = done + std::min(48, frames - done);
            for (; position < 0.0 && done < end; ++done) {
                out[done] = Read(position + count);
                position += step;
            }
            if (done == end) continue;
            count = static_cast<int>(std::ceil(position + (end - done) * step));
            std::fill(chunk.begin() + 1, chunk.end(), 0.0f);
            render(chunk.data() + 1, count);
            for (; done < end; ++done) {
                out[done] = Read(position);
                position += step;
            }
            position -= count;
            chunk[0] = chunk[static_cast<std::size_t>(count)];
        }
    }
    float Read(double at) const {
        const auto i = static_cast<std::size_t>(at);
        const auto f = static_cast<float>(at - static_cast<double>(i));
        return chunk[i] + f * (chunk[i + 1] - chunk[i]);
    }

    double step;
    double position = 0.0;
    int count = 0;
    std::vector<float> chunk = std::vector<float>(4096);
};

// Noise that comes and goes.
struct Bursts {
    bool operator()(float* out, int count) {
        if (++calls / 7 % 3 == 1) return false;
        for (int i = 0; i < count; ++i)
            out[i] = std::uniform_real_distribution(-1.0f, 1.0f)(random);
        return true;
    }

    std::mt19937 random{1};
    int calls = 0;
};

TEST(RateConverter, IsThePlainOneBitForBit) {
    for (const double rate : {1000.0, 8000.0, 22050.0, 44100.0, 47999.9, 48000.0, 48000.1, 88200.0,
                              96000.0, 192000.0, 384000.0, 768000.0}) {
        for (const int block : {1, 2, 47, 48, 49, 64, 511, 512}) {
            SCOPED_TRACE(testing::Message() << rate << " Hz, blocks of " << block);
            RateConverter fast;
            fast.SetHostRate(rate);
            PlainConverter plain(rate);
            Bursts bursts, plainBursts;
            // The right channel is the left one turned over.
            const auto render = [&bursts](float* left, float* right, int count) {
                const bool sounds = bursts(left, count);
                for (int i = 0; i < count && sounds; ++i)
                    right[i] = -left[i];
                return sounds;
            };
            std::vector<float> left(512), right(512), expected(512);
            for (int done = 0; done < 6000; done += block) {
                fast.Process(left.data(), right.data(), block, render);
                plain.Process(expected.data(), block, std::ref(plainBursts));
                ASSERT_EQ(left, expected) << "frame " << done;
                for (float& x : expected)
                    x = -x;
                ASSERT_EQ(right, expected) << "frame " << done;
                ASSERT_EQ(fast.GetInternalCount(), plain.count);
            }
        }
    }
}

}  // namespace
}  // namespace norava
