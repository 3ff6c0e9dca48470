#include "framework/audio_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <vector>

namespace norava {
namespace {

TEST(AudioBuffer, RoundsUpKeepsAnEqualAllocationAndClearsTheCurrentFrames) {
    CAudioBuffer buffer;
    ASSERT_TRUE(buffer.Allocate(2, 510));
    EXPECT_EQ(buffer.GetMaxNumFrames(), 512);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer.GetBuf(1)) % 16, 0u);
    EXPECT_EQ(buffer.SetNumFrames(0), 1);
    EXPECT_EQ(buffer.SetNumFrames(10000), 512);
    EXPECT_EQ(buffer.SetNumFrames(100), 100);
    std::fill_n(buffer.GetBuf(1), 101, 1.0f);
    ASSERT_TRUE(buffer.Allocate(2, 510));
    buffer.Clear();
    EXPECT_EQ(buffer.GetBuf(1)[99], 0.0f);
    EXPECT_EQ(buffer.GetBuf(1)[100], 1.0f);
    ASSERT_TRUE(buffer.Allocate(2, 512));
    EXPECT_EQ(buffer.GetNumFrames(), 512);
    EXPECT_EQ(buffer.GetBuf(1)[100], 0.0f);
    const int most = std::numeric_limits<int>::max();
    for (const auto& [channels, frames] : {std::pair{0, 512}, {2, 0}, {-1, 512}, {2, most}}) {
        EXPECT_FALSE(buffer.Allocate(channels, frames));
        EXPECT_EQ(buffer.SetNumFrames(5), 0);
        EXPECT_EQ(buffer.GetBuf(0), nullptr);
    }
}

TEST(AudioBuffer, ReadsBetweenFramesAndSilenceOutside) {
    CAudioBuffer buffer;
    ASSERT_TRUE(buffer.Allocate(2, 8));
    std::fill_n(buffer.GetBuf(1), 8, 5.0f);
    // A cubic goes through a parabola exactly: x = n^2.
    for (int i = 0; i < 8; ++i)
        buffer.GetBuf(0)[i] = static_cast<float>(i * i);
    EXPECT_EQ(buffer.GetSampleFrame_Tri(0, 2, 0.25f), 5.25f);
    EXPECT_EQ(buffer.GetSampleFrame_Spl(0, 2, 0.5f), 12.25f);
    for (const auto& [channel, frame] : {std::pair{0, -1}, {0, 8}, {-1, 0}, {2, 0}}) {
        EXPECT_EQ(buffer.GetSampleFrame_Tri(channel, frame, 0.5f), 0.0f);
        EXPECT_EQ(buffer.GetSampleFrame_Spl(channel, frame, 0.5f), 0.0f);
    }
    // The last frame looks into the guard samples, not into the next channel.
    EXPECT_EQ(buffer.GetSampleFrame_Tri(0, 7, 0.5f), 24.5f);
    EXPECT_EQ(buffer.GetSampleFrame_Spl(0, 7, 0.0f), 0.0f);
}

TEST(AudioBufferConversion, ReadsEachFormat) {
    using B = CAudioBuffer;
    const struct {
        void (B::*convert)(int, const void*, int, short) noexcept;
        std::vector<unsigned char> bytes;
        float value;
    } cases[] = {
        {&B::ConvertFrom_8bit, {0}, -1.0f},
        {&B::ConvertFrom_8bit, {255}, 1.0f},
        {&B::ConvertFrom_16bit_LSB, {0x00, 0x80}, -1.0f},
        {&B::ConvertFrom_16bit_MSB, {0x40, 0x00}, 0.5f},
        {&B::ConvertFrom_24bit_LSB, {0xFF, 0xFF, 0x7F}, 1.0f},
        {&B::ConvertFrom_24bit_MSB, {0x80, 0x00, 0x00}, -8388608.0f / 8388607.0f},
        {&B::ConvertFrom_32bit_LSB, {0x00, 0x00, 0x00, 0x80}, -1.0f},
        {&B::ConvertFrom_32bit_MSB, {0xC0, 0x00, 0x00, 0x00}, -0.5f},
        {&B::ConvertFrom_Float_MSB, {0x7F, 0xC1, 0x23, 0x45}, std::bit_cast<float>(0x7FC12345u)}};
    for (const auto& [convert, bytes, value] : cases) {
        CAudioBuffer buffer;
        buffer.Allocate(1, 1);
        (buffer.*convert)(0, bytes.data(), 1, 1);
        EXPECT_EQ(std::bit_cast<std::uint32_t>(*buffer.GetBuf(0)),
                  std::bit_cast<std::uint32_t>(value));
    }
}

TEST(AudioBufferConversion, StepsOverTheOtherChannels) {
    CAudioBuffer buffer;
    ASSERT_TRUE(buffer.Allocate(2, 3));
    // Right channel of interleaved stereo; exactly three frames are there.
    const std::vector<unsigned char> bytes = {0, 1, 128, 1, 255};
    buffer.ConvertFrom_8bit(1, bytes.data(), 100, 2);
    EXPECT_EQ(buffer.GetBuf(1)[2], 1.0f);
    buffer.ConvertFrom_8bit(2, bytes.data(), 1, 1);
    buffer.ConvertFrom_8bit(0, nullptr, 1, 1);
    EXPECT_EQ(buffer.GetBuf(0)[0], 0.0f);
}

}  // namespace
}  // namespace norava
