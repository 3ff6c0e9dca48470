#pragma once

#include <bit>
#include <cstdint>
#include <limits>
#include <vector>

namespace norava::test {

// What a host, a broken file or a bit error can leave in a float.
inline std::vector<float> HostileFloats() {
    using Limits = std::numeric_limits<float>;
    constexpr std::uint32_t kSignallingNaNs[] = {0x7f800001u, 0xffbfffffu};
    std::vector<float> floats = {1.5f, 2.5f, 7.0f, 127.0f, 2147483648.0f, -2147483904.0f};
    for (float x : {Limits::quiet_NaN(), Limits::infinity(), Limits::max(), Limits::denorm_min()})
        floats.insert(floats.end(), {x, -x});
    for (float x : {0.0f, 1.0e-30f, 0.5f, 1.0f, 1.0000001f, 9.999999f, 4.0e18f})
        floats.insert(floats.end(), {x, -x});
    for (std::uint32_t bits : kSignallingNaNs)
        floats.push_back(std::bit_cast<float>(bits));
    return floats;
}

}  // namespace norava::test
