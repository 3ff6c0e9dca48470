#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Text as the toolkit holds it. Bytes that are no valid UTF-8 count as one character each.
namespace norava::utf8 {

// Bytes of the character that begins at `at`; 0 at the end.
[[nodiscard]] size_t LengthAt(std::string_view text, size_t at);
// Where the character before `at` begins.
[[nodiscard]] size_t Before(std::string_view text, size_t at);
// The character that begins at `at`; a stray byte gives U+FFFD.
[[nodiscard]] uint32_t CharacterAt(std::string_view text, size_t at);
// Nothing for what is no Unicode character.
[[nodiscard]] std::string Encode(uint32_t character);

}  // namespace norava::utf8
