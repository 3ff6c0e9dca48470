#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "framework/audio_buffer.h"

// Sample conversions of CAudioBuffer. Bytes are put together by hand, so that neither the machine's
// byte order nor the source's alignment matters.

namespace norava {

namespace {

std::uint32_t LittleEndian(const unsigned char* bytes, int numBytes) {
    std::uint32_t word = 0;
    for (int i = numBytes - 1; i >= 0; --i)
        word = word << 8 | bytes[i];
    return word;
}

std::uint32_t BigEndian(const unsigned char* bytes, int numBytes) {
    std::uint32_t word = 0;
    for (int i = 0; i < numBytes; ++i)
        word = word << 8 | bytes[i];
    return word;
}

// Two's complement of `bits` bits.
std::int32_t SignExtended(std::uint32_t word, int bits) {
    return static_cast<std::int32_t>(word << (32 - bits)) >> (32 - bits);
}

float From16bit(std::uint32_t word) {
    return static_cast<float>(SignExtended(word, 16) / 32768.0);
}

// The largest positive value is exactly 1, so the most negative one lies a little below -1.
float From24bit(std::uint32_t word) {
    return static_cast<float>(SignExtended(word, 24) / 8388607.0);
}

float From32bit(std::uint32_t word) {
    return static_cast<float>(SignExtended(word, 32) / 2147483648.0);
}

}  // namespace

template <int kSampleBytes, typename Decode>
void CAudioBuffer::Convert(int channel, const void* source, int frames, short step,
                           Decode decode) noexcept {
    float* const to = GetBuf(channel);
    if (step < 1 || to == nullptr || source == nullptr) return;
    const auto* from = static_cast<const unsigned char*>(source);
    const int count = std::min(frames, numFrames);
    for (int i = 0; i < count; ++i) {
        to[i] = decode(from);
        if (i + 1 < count) from += static_cast<std::ptrdiff_t>(kSampleBytes) * step;
    }
}

void CAudioBuffer::ConvertFrom_8bit(int channel, const void* source, int frames,
                                    short step) noexcept {
    Convert<1>(channel, source, frames, step, [](const unsigned char* bytes) {
        return static_cast<float>((bytes[0] / 255.0 - 0.5) * 2.0);
    });
}

void CAudioBuffer::ConvertFrom_16bit_LSB(int channel, const void* source, int frames,
                                         short step) noexcept {
    Convert<2>(channel, source, frames, step,
               [](const unsigned char* bytes) { return From16bit(LittleEndian(bytes, 2)); });
}

void CAudioBuffer::ConvertFrom_24bit_LSB(int channel, const void* source, int frames,
                                         short step) noexcept {
    Convert<3>(channel, source, frames, step,
               [](const unsigned char* bytes) { return From24bit(LittleEndian(bytes, 3)); });
}

void CAudioBuffer::ConvertFrom_32bit_LSB(int channel, const void* source, int frames,
                                         short step) noexcept {
    Convert<4>(channel, source, frames, step,
               [](const unsigned char* bytes) { return From32bit(LittleEndian(bytes, 4)); });
}

void CAudioBuffer::ConvertFrom_16bit_MSB(int channel, const void* source, int frames,
                                         short step) noexcept {
    Convert<2>(channel, source, frames, step,
               [](const unsigned char* bytes) { return From16bit(BigEndian(bytes, 2)); });
}

void CAudioBuffer::ConvertFrom_24bit_MSB(int channel, const void* source, int frames,
                                         short step) noexcept {
    Convert<3>(channel, source, frames, step,
               [](const unsigned char* bytes) { return From24bit(BigEndian(bytes, 3)); });
}

void CAudioBuffer::ConvertFrom_32bit_MSB(int channel, const void* source, int frames,
                                         short step) noexcept {
    Convert<4>(channel, source, frames, step,
               [](const unsigned char* bytes) { return From32bit(BigEndian(bytes, 4)); });
}

void CAudioBuffer::ConvertFrom_Float_MSB(int channel, const void* source, int frames,
                                         short step) noexcept {
    Convert<4>(channel, source, frames, step, [](const unsigned char* bytes) {
        return std::bit_cast<float>(BigEndian(bytes, 4));
    });
}

}  // namespace norava
