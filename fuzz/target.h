#pragma once

#include <cstddef>
#include <cstdint>

// What each target defines: one execution with one input. 0, or -1 for an input that is not worth
// keeping. Everything that it needs is made at the first call and serves all later ones, but no
// execution may depend on the ones before it: an input that is kept must fail again by itself.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
