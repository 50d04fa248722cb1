#pragma once

// What holds for every input. A fuzzer ends with the sentence that does not; the input is kept.

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

// Takes the first byte of an input for a choice of the fuzzer's own; 0 when there is none.
inline std::uint8_t takeChoice(std::span<const std::uint8_t>& input) {
    if (input.empty()) return 0;
    const std::uint8_t choice = input.front();
    input = input.subspan(1);
    return choice;
}

}  // namespace orvane::fuzz
