#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace norava {

// Copies as much of `text` as fits into `to` and always terminates it. A cut falls on a UTF-8
// character boundary, so a host never shows half a character. `text` ends at its first NUL. Returns
// the number of characters written without the terminator. An empty `to` is left alone. Any thread;
// allocates nothing.
std::size_t CopyText(std::span<char> to, std::string_view text) noexcept;

// Appends to the text that `to` holds already, by the same rules. Returns the new length.
std::size_t AppendText(std::span<char> to, std::string_view text) noexcept;

// Writes `value` with `decimals` digits after the point, which is a point in every locale of the
// host.
std::size_t CopyNumber(std::span<char> to, double value, int decimals) noexcept;
std::size_t CopyNumber(std::span<char> to, int value) noexcept;

}  // namespace norava
