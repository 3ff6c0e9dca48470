#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

namespace norava::fuzz {

// A stream of bytes as decisions. At its end everything reads 0.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size) : rest_(data, size) {}

    bool IsEmpty() const { return rest_.empty(); }

    std::uint8_t Byte() {
        if (rest_.empty()) return 0;
        const std::uint8_t byte = rest_.front();
        rest_ = rest_.subspan(1);
        return byte;
    }
    bool Flag() { return (Byte() & 1) != 0; }
    // 0 .. count - 1, for at most 256.
    int Below(int count) { return Byte() % count; }
    std::uint32_t Word() {
        std::uint32_t word = 0;
        for (int i = 0; i < 4; ++i)
            word = word << 8 | Byte();
        return word;
    }
    int Int() { return std::bit_cast<int>(Word()); }
    std::span<const std::uint8_t> Take(std::size_t count) {
        const auto taken = rest_.first(std::min(count, rest_.size()));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }

    // Mostly 0..1; else an item's number, what no host should send, or any bits.
    float Float() {
        using Limits = std::numeric_limits<float>;
        constexpr std::array kHostile = {Limits::quiet_NaN(),
                                         Limits::infinity(),
                                         -Limits::infinity(),
                                         Limits::max(),
                                         -Limits::max(),
                                         Limits::denorm_min(),
                                         -0.0f,
                                         -1.0f,
                                         1.0000001f,
                                         2147483648.0f};
        switch (Below(8)) {
            case 0:
                return static_cast<float>(Below(16));
            case 1:
                return kHostile[static_cast<std::size_t>(Below(int{kHostile.size()}))];
            case 2:
                return std::bit_cast<float>(Word());
            default:
                return static_cast<float>(Byte()) / 255.0f;
        }
    }

  private:
    std::span<const std::uint8_t> rest_;
};

}  // namespace norava::fuzz
