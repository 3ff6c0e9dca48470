#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// What each target defines: one execution with one input. 0, or -1 for an input that is not worth
// keeping. Everything that it needs is made at the first call and serves all later ones, but no
// execution may depend on the ones before it: an input that is kept must fail again by itself.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace norava::fuzz {

// Ends the process, as a crash would, when a property does not hold: the fuzzer then keeps the
// input, and a replay fails.
inline void Require(bool holds, const char* property) {
    if (holds) return;
    std::fprintf(stderr, "broken: %s\n", property);
    std::abort();
}

}  // namespace norava::fuzz
