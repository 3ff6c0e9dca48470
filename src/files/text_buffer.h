#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace norava {

// Longest path the product handles, with its terminator. Longer ones are refused whole: a path cut
// short names another file.
inline constexpr size_t kPathBufferBytes = 1024;

// Buffer size for a name that is only shown (a file's name, a picture's, a program's).
inline constexpr size_t kNameBufferBytes = 256;

// Fills a fixed buffer and always terminates it. A text that does not fit is cut before the UTF-8
// character that would cross the end. Returns whether the whole text went in.
inline bool CopyText(char* destination, size_t destinationBytes, std::string_view text) {
    if (destinationBytes == 0) return false;
    size_t length = text.size();
    const bool fits = length < destinationBytes;
    if (!fits) {
        length = destinationBytes - 1;
        const auto isContinuation = [&](size_t i) {
            return (static_cast<unsigned char>(text[i]) & 0xC0u) == 0x80u;
        };
        while (length > 0 && isContinuation(length))
            --length;
    }
    if (length > 0) std::memmove(destination, text.data(), length);
    destination[length] = '\0';
    return fits;
}

}  // namespace norava
