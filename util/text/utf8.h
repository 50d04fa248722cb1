#pragma once

// Encodes and decodes UTF-8 and UTF-16, one character at a time. Malformed UTF-8 becomes U+FFFD;
// malformed UTF-16 is an error. A non-zero `log` logs each error at LOG_ERR, each kind with its own
// text. No allocation; any thread. By RFC 2279 a sequence of 5 or 6 bytes is one malformed
// character; U+FFFE and U+FFFF are refused. common/messages/text_coding.h has a decoder with other
// rules, for the pipes.

#include <cstddef>
#include <cstdint>

#include "util/text/owned.h"

namespace orvane {

// The code point's length in UTF-8 in bytes (1 to 6, RFC 2279), or 0 above 0x7FFFFFFF.
[[nodiscard]] int utl_utf8_len_from_ucs4(std::uint32_t codePoint, int log) noexcept;

// The length in bytes (1 to 6) of a sequence whose first byte is `byte`; 0 for an invalid one.
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
