#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

namespace norava {

// One pixel's colour. The bytes lie in memory as red, green, blue, alpha; alpha 255 is opaque.
// Channel values from outside are brought into 0 .. 255.
struct CColor {
    uint8_t red = 0;
    uint8_t green = 0;
    uint8_t blue = 0;
    uint8_t alpha = 255;

    constexpr CColor() = default;
    constexpr explicit CColor(int grey) { Set(grey); }
    constexpr CColor(int grey, int a) { Set(grey, grey, grey, a); }
    constexpr CColor(int r, int g, int b) { Set(r, g, b); }
    constexpr CColor(int r, int g, int b, int a) { Set(r, g, b, a); }

    constexpr void Set(int grey) { Set(grey, grey, grey); }
    constexpr void Set(int r, int g, int b) { Set(r, g, b, 255); }
    constexpr void Set(int r, int g, int b, int a) {
        SetRed(r);
        SetGreen(g);
        SetBlue(b);
        SetAlpha(a);
    }

    [[nodiscard]] constexpr uint8_t GetRed() const { return red; }
    [[nodiscard]] constexpr uint8_t GetGreen() const { return green; }
    [[nodiscard]] constexpr uint8_t GetBlue() const { return blue; }
    [[nodiscard]] constexpr uint8_t GetAlpha() const { return alpha; }
    constexpr void SetRed(int value) { red = ToByte(value); }
    constexpr void SetGreen(int value) { green = ToByte(value); }
    constexpr void SetBlue(int value) { blue = ToByte(value); }
    constexpr void SetAlpha(int value) { alpha = ToByte(value); }

    // The channels as byte / 255; setting truncates value * 255 toward zero.
    [[nodiscard]] constexpr double GetRedF() const { return red / 255.0; }
    [[nodiscard]] constexpr double GetGreenF() const { return green / 255.0; }
    [[nodiscard]] constexpr double GetBlueF() const { return blue / 255.0; }
    [[nodiscard]] constexpr double GetAlphaF() const { return alpha / 255.0; }
    constexpr void SetRedF(double value) { red = UnitToByte(value); }
    constexpr void SetGreenF(double value) { green = UnitToByte(value); }
    constexpr void SetBlueF(double value) { blue = UnitToByte(value); }
    constexpr void SetAlphaF(double value) { alpha = UnitToByte(value); }

    // Multiplies red, green and blue; what passes white stays white.
    constexpr void Brighten(double factor) {
        SetRedF(GetRedF() * factor);
        SetGreenF(GetGreenF() * factor);
        SetBlueF(GetBlueF() * factor);
    }

    [[nodiscard]] constexpr uint32_t GetWord() const { return std::bit_cast<uint32_t>(*this); }
    [[nodiscard]] static constexpr CColor FromWord(uint32_t word) {
        return std::bit_cast<CColor>(word);
    }

    // 0 .. 1 to 0 .. 255, truncated; not a number gives 0.
    [[nodiscard]] static constexpr uint8_t UnitToByte(double value) {
        const double scaled = value * 255.0;
        if (!(scaled > 0.0)) return 0;
        return scaled >= 255.0 ? uint8_t{255} : static_cast<uint8_t>(scaled);
    }

    constexpr bool operator==(const CColor&) const = default;

  private:
    static constexpr uint8_t ToByte(int value) {
        return static_cast<uint8_t>(std::clamp(value, 0, 255));
    }
};

static_assert(sizeof(CColor) == 4 && std::endian::native == std::endian::little);

}  // namespace norava
