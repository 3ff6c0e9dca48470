#pragma once

#include <string>
#include <string_view>

namespace norava {

// The path of the first file that a dragged "text/uri-list" names on this machine; empty when there
// is none. What cannot be a path (a NUL inside, a damaged escape, another machine's file) is
// skipped.
std::string FirstFileOfUriList(std::string_view list, std::string_view hostName);

}  // namespace norava
