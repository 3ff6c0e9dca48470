#include "synth/rate_converter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <random>
#include <vector>

namespace norava {
namespace {

// The steps one by one, as plainly as they can be put: everything cleared, everything read.
class PlainConverter {
  public:
    explicit PlainConverter(double hostRate)
        : step_(48000.0 / hostRate), left_(4096, 0.0f), right_(4096, 0.0f) {}

    template <typename Render>
    void Process(float* left, float* right, int frames, Render render) {
        for (int done = 0; done < frames;) {
            const int end = done + std::min(48, frames - done);
            for (; position_ < 0.0 && done < end; ++done) {
                Read(position_ + count, left[done], right[done]);
                position_ += step_;
            }
            if (done == end) continue;
            const double reach = position_ + (end - done) * step_;
            count = static_cast<int>(reach);
            if (count < reach) ++count;
            std::fill(left_.begin() + 1, left_.end(), 0.0f);
            std::fill(right_.begin() + 1, right_.end(), 0.0f);
            render(left_.data() + 1, right_.data() + 1, count);
            for (; done < end; ++done) {
                Read(position_, left[done], right[done]);
                position_ += step_;
            }
            position_ -= count;
            left_[0] = left_[static_cast<std::size_t>(count)];
            right_[0] = right_[static_cast<std::size_t>(count)];
        }
    }

    int count = 0;

  private:
    void Read(double position, float& left, float& right) const {
        const auto i = static_cast<std::size_t>(position);
        const auto f = static_cast<float>(position - static_cast<double>(i));
        left = left_[i] + f * (left_[i + 1] - left_[i]);
        right = right_[i] + f * (right_[i + 1] - right_[i]);
    }

    double step_;
    double position_ = 0.0;
    std::vector<float> left_, right_;
};

// Noise that comes and goes.
auto Bursts() {
    return [random = std::mt19937(1), calls = 0](float* left, float* right, int count) mutable {
        std::uniform_real_distribution<float> value(-1.0f, 1.0f);
        if (++calls / 7 % 3 == 1) return false;
        for (int i = 0; i < count; ++i) {
            left[i] = value(random);
            right[i] = value(random);
        }
        return true;
    };
}

TEST(RateConverter, IsThePlainOneBitForBit) {
    for (const double rate : {1000.0, 8000.0, 22050.0, 44100.0, 47999.9, 48000.0, 48000.1, 88200.0,
                              96000.0, 192000.0, 384000.0, 768000.0}) {
        for (const int block : {1, 2, 47, 48, 49, 64, 511, 512}) {
            RateConverter fast;
            fast.SetHostRate(rate);
            PlainConverter plain(rate);
            auto fastBursts = Bursts(), plainBursts = Bursts();
            std::vector<float> left(512), right(512), plainLeft(512), plainRight(512);
            for (int done = 0; done < 6000; done += block) {
                fast.Process(left.data(), right.data(), block, std::ref(fastBursts));
                plain.Process(plainLeft.data(), plainRight.data(), block, std::ref(plainBursts));
                const auto bytes = static_cast<std::size_t>(block) * sizeof(float);
                ASSERT_EQ(std::memcmp(left.data(), plainLeft.data(), bytes), 0)
                    << rate << " Hz, blocks of " << block << ", frame " << done;
                ASSERT_EQ(std::memcmp(right.data(), plainRight.data(), bytes), 0);
                ASSERT_EQ(fast.GetInternalCount(), plain.count);
            }
        }
    }
}

}  // namespace
}  // namespace norava
