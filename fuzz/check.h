#pragma once

#include <cstdio>
#include <cstdlib>

namespace norava::fuzz {

// Ends the process, as a crash would, when a property does not hold: the fuzzer then keeps the
// input, and a replay fails.
inline void Require(bool holds, const char* property) {
    if (holds) return;
    std::fprintf(stderr, "broken: %s\n", property);
    std::abort();
}

}  // namespace norava::fuzz
