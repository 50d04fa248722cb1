#include "util/text/utf8.h"

#include "util/log/log.h"

namespace orvane {
namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

struct SequenceRow {
    std::uint32_t last;    // the highest code point of this length
    unsigned char marker;  // or'ed into the first byte
};
constexpr SequenceRow kSequences[] = {
    {0x7F, 0x00},     {0x7FF, 0xC0},     {0xFFFF, 0xE0},
    {0x1FFFFF, 0xF0}, {0x3FFFFFF, 0xF8}, {0x7FFFFFFF, 0xFC},
};

constexpr bool isSurrogate(std::uint32_t value) { return value >= 0xD800 && value <= 0xDFFF; }
constexpr bool isNonCharacter(std::uint32_t value) { return value == 0xFFFE || value == 0xFFFF; }
constexpr bool isContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

unsigned char byteAt(const char* text, int index) {
    return static_cast<unsigned char>(text[index]);
}

// What is wrong with a complete sequence's value, if anything; reports it.
bool isAcceptable(std::uint32_t value, int length, const char* text, int log) noexcept {
    constexpr const char* self = "utl_utf8_decode_char";
    const int shortest = utl_utf8_len_from_ucs4(value, log);
    if (shortest != length) {
        log_if(log, LOG_ERR, "%s: overlong encoding(%s)...should be %d byte(s), not %d", self, text,
               shortest, length);
        return false;
    }
    if (value > 0x10FFFF) {
        log_if(log, LOG_ERR, "%s: code point 0x%08X is too big", self, value);
        return false;
    }
    if (isSurrogate(value)) {
        log_if(log, LOG_ERR,
               "%s: code point 0x%08X is in the range used to indicate surrogate pairs", self,
               value);
        return false;
    }
    if (isNonCharacter(value)) {
        log_if(log, LOG_ERR, "%s: invalid code point (0x%08X)", self, value);
        return false;
    }
    return true;
}

}  // namespace

int utl_utf8_len_from_ucs4(std::uint32_t codePoint, int log) noexcept {
    int length = 1;
    for (const SequenceRow& row : kSequences) {
        if (codePoint <= row.last) return length;
        ++length;
    }
    log_if(log, LOG_ERR, "%s: 0x%08X is an invalid code point", "utl_utf8_len_from_ucs4",
           codePoint);
    return 0;
}

int utl_utf8_first_byte_len(unsigned char byte) noexcept {
    if (byte < 0x80) return 1;
    if (byte < 0xC0) return 0;
    if (byte < 0xE0) return 2;
    if (byte < 0xF0) return 3;
    if (byte < 0xF8) return 4;
    if (byte < 0xFC) return 5;
    if (byte < 0xFE) return 6;
    return 0;
}

const Wide* utl_utf8_char_len(const Wide* text, std::size_t available, std::size_t& length,
                              std::uint32_t* codePoint, int log) noexcept {
    constexpr const char* self = "utl_utf8_char_len";
    length = 0;
    if (available == 0) {
        log_if(log, LOG_ERR, "%s: can't determine length of empty buffer", self);
        return nullptr;
    }
    std::uint32_t value = static_cast<std::uint16_t>(text[0]);
    std::size_t used = 1;
    if (isNonCharacter(value)) {
        log_if(log, LOG_ERR, "%s: invalid UTF-16 value: 0x%04X", self, value);
        return nullptr;
    }
    if (isSurrogate(value)) {
        if (value > 0xDBFF) {
            log_if(log, LOG_ERR, "%s: 0x%04X is an invalid surrogate pair high-half", self, value);
            return nullptr;
        }
        if (available == 1) {
            log_if(log, LOG_ERR, "%s: buffer ends after the high-half of a surrogate pair", self);
            return nullptr;
        }
        const std::uint32_t low = static_cast<std::uint16_t>(text[1]);
        if (low < 0xDC00 || low > 0xDFFF) {
            log_if(log, LOG_ERR, "%s: 0x%04X is an invalid surrogate pair low-half", self, low);
            return nullptr;
        }
        value = ((value & 0x3FF) << 10 | (low & 0x3FF)) + 0x10000;
        used = 2;
    }
    length = static_cast<std::size_t>(utl_utf8_len_from_ucs4(value, log));
    if (codePoint != nullptr) *codePoint = value;
    return text + used;
}

char* encodeUtf8(std::uint32_t codePoint, char* out) noexcept {
    const int length = utl_utf8_len_from_ucs4(codePoint, 0);
    if (length == 0) return out;
    int shift = 6 * (length - 1);
    *out++ = static_cast<char>((codePoint >> shift) | kSequences[length - 1].marker);
    while (shift > 0) {
        shift -= 6;
        *out++ = static_cast<char>((codePoint >> shift & 0x3F) | 0x80);
    }
    return out;
}

const char* utl_utf8_decode_char(const char* text, std::size_t available, Wide (&out)[2],
                                 bool* replaced, int log) noexcept {
    constexpr const char* self = "utl_utf8_decode_char";
    out[0] = static_cast<Wide>(kReplacement);
    out[1] = 0;
    if (replaced != nullptr) *replaced = true;

    const unsigned char first = byteAt(text, 0);
    const int length = utl_utf8_first_byte_len(first);
    if (length == 0) {
        log_if(log, LOG_ERR, "%s: 0x%02X is not a valid first byte of a UTF-8 encoded character",
               self, first);
        return text + 1;
    }
    if (static_cast<std::size_t>(length) > available) {
        log_if(log, LOG_ERR,
               "%s: first byte 0x%02X indicates a %d byte UTF-8 character, but we only have %d "
               "valid byte(s)",
               self, first, length, static_cast<int>(available));
        return text + 1;
    }

    std::uint32_t value = length == 1 ? first : first & ((1U << (7 - length)) - 1);
    for (int i = 1; i < length; ++i) {
        const unsigned char byte = byteAt(text, i);
        if (!isContinuation(byte)) {
            log_if(log, LOG_ERR,
                   "%s: 0x%02X is not a valid continuation character in a UTF-8 encoding", self,
                   byte);
            return text + i;
        }
        value = value << 6 | (byte & 0x3FU);
    }
    if (!isAcceptable(value, length, text, log)) return text + length;

    if (value > 0xFFFF) {
        out[0] = static_cast<Wide>(((value - 0x10000) >> 10) + 0xD800);
        out[1] = static_cast<Wide>((value & 0x3FF) + 0xDC00);
    } else {
        out[0] = static_cast<Wide>(value);
    }
    if (replaced != nullptr) *replaced = false;
    return text + length;
}

}  // namespace orvane
