#pragma once
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

/// The entry of a fuzz target, called once for each input. Returns 0; the fuzzer ignores any other answer.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace quorvane::fuzz {

/// Ends the process if an invariant does not hold; that is what the fuzzer notices.
inline void require(bool holds, const char* invariant) {
    if (holds) return;
    std::fprintf(stderr, "broken invariant: %s\n", invariant);
    std::abort();
}

}  // namespace quorvane::fuzz
