#pragma once

#include <bit>
#include <cstdint>
#include <limits>
#include <vector>

namespace norava::test {

// What a host, a broken file or a bit error can leave in a float.
inline std::vector<float> HostileFloats() {
    using Limits = std::numeric_limits<float>;
    const auto bits = [](std::uint32_t word) { return std::bit_cast<float>(word); };
    return {
        Limits::quiet_NaN(),
        -Limits::quiet_NaN(),
        bits(0x7f800001u),
        bits(0xffbfffffu),
        Limits::infinity(),
        -Limits::infinity(),
        Limits::max(),
        -Limits::max(),
        Limits::min(),
        Limits::denorm_min(),
        -Limits::denorm_min(),
        -0.0f,
        -1.0e-30f,
        -1.0f,
        -0.5f,
        1.0000001f,
        1.5f,
        2.5f,
        7.0f,
        9.999999f,
        127.0f,
        2147483648.0f,
        -2147483904.0f,
        4.0e18f,
        1.0e30f,
    };
}

}  // namespace norava::test
