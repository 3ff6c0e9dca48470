#pragma once

#include <string>
#include <string_view>

namespace norava {

// Orders names the way people number and write them: runs of digits by their value, letters (of the
// Latin, Greek and Cyrillic scripts) whatever their case; names that are equal so far by their
// bytes, so that no two different names are equal. The same on every machine, whatever its locale.
// Returns below 0, 0 or above 0. Names are UTF-8; bytes that are not count as letters of their own.
int CompareNaturally(std::string_view a, std::string_view b);

// The name's characters with capital letters of those scripts made small.
std::u32string FoldCase(std::string_view name);

}  // namespace norava
