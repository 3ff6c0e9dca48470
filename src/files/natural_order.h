#pragma once

#include <string>
#include <string_view>

namespace norava {

// Orders names the way people number and write them: runs of digits by their value, letters (of the
// Latin, Greek and Cyrillic scripts) whatever their case; names that are equal so far by their
// bytes, so that no two different names are equal. The same on every machine, whatever its locale.
// Returns below 0, 0 or above 0. Names are UTF-8; bytes that are not count as letters of their own.
int CompareNaturally(std::string_view a, std::string_view b);

// A letter of Latin-1 (U+00C0 .. U+00FF) without its accent; any other character as it is.
char32_t WithoutAccent(char32_t character);

// The name's characters with capital letters of those scripts made small.
std::u32string FoldCase(std::string_view name);

}  // namespace norava
