#pragma once

// Checks a property that must hold for every input. When it does not, the fuzzer ends with the
// sentence, and libFuzzer keeps the input.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>

namespace orvane::fuzz {

inline void require(bool holds, const char* sentence) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", sentence);
    std::abort();
}

// Removes and returns the first byte of an input, for a choice of the fuzzer; 0 when it is empty.
inline std::uint8_t takeChoice(std::span<const std::uint8_t>& input) {
    if (input.empty()) return 0;
    const std::uint8_t choice = input.front();
    input = input.subspan(1);
    return choice;
}

}  // namespace orvane::fuzz
