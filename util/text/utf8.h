#pragma once

// UTF-8 and UTF-16, one character at a time. Reading UTF-8 never fails: what is malformed becomes
// U+FFFD. Reading UTF-16 is strict. A non-zero `log` reports each problem at LOG_ERR.
// No state, no allocation: any thread. Follows RFC 2279: sequences of up to 6 bytes are one
// malformed character each, U+FFFE and U+FFFF are refused, and each fault has a log text of its
// own. common/messages/text_coding.h has a decoder with other rules, for the pipes.

#include <cstddef>
#include <cstdint>

#include "util/text/owned.h"

namespace orvane {

// Bytes that the code point takes in UTF-8 (1 to 6, RFC 2279's table), or 0 above 0x7FFFFFFF.
[[nodiscard]] int utl_utf8_len_from_ucs4(std::uint32_t codePoint, int log) noexcept;

// Bytes of the sequence that starts with `byte` (1 to 6), or 0 when none can.
[[nodiscard]] int utl_utf8_first_byte_len(unsigned char byte) noexcept;

// Reads one character of at most `available` units. Gives its length in UTF-8 bytes and, unless
// `codePoint` is null, its code point. Returns the position after it; on malformed input null, with
// a length of 0.
[[nodiscard]] const Wide* utl_utf8_char_len(const Wide* text, std::size_t available,
                                            std::size_t& length, std::uint32_t* codePoint,
                                            int log) noexcept;

// Writes a code point of 1 to 6 UTF-8 bytes; returns the position after the last one.
char* encodeUtf8(std::uint32_t codePoint, char* out) noexcept;

// Decodes one character of at most `available` bytes (1 or more, a terminating NUL included) into
// one or two units; out[1] is 0 when there is no second one. `replaced`, unless null, tells whether
// U+FFFD stands for something malformed. Returns where to read on, always further than `text`.
const char* utl_utf8_decode_char(const char* text, std::size_t available, Wide (&out)[2],
                                 bool* replaced, int log) noexcept;

}  // namespace orvane
