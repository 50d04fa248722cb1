#include "util/text/text.h"

#include <cstring>
#include <limits>
#include <string>

#include "util/log/log.h"
#include "util/text/utf8.h"

namespace orvane {

bool utl_wide_buf_utf8_len(const Wide* text, std::size_t units, std::size_t* characters,
                           std::size_t& bytes, int log) noexcept {
    const Wide* const end = text + units;
    std::size_t count = 0;
    bytes = 0;
    while (text != end && *text != 0) {
        std::size_t length = 0;
        text = utl_utf8_char_len(text, static_cast<std::size_t>(end - text), length, nullptr, log);
        if (text == nullptr) return false;
        bytes += length;
        ++count;
    }
    if (characters != nullptr) *characters = count;
    return true;
}

bool utl_utf8_to_wide_buf(const char* text, Wide* buffer, std::size_t size, int log) noexcept {
    constexpr const char* self = "utl_utf8_to_wide_buf";
    std::size_t available = std::strlen(text) + 1;
    if (size < sizeof(Wide)) {
        log_if(log, LOG_ERR,
               "%s: %d byte(s) is not enough to transform a %d byte UTF-8 string to "
               "NUL-terminated UTF-16",
               self, static_cast<int>(size), static_cast<int>(available));
        return false;
    }
    std::memset(buffer, 0, size);
    std::size_t capacity = size / sizeof(Wide) - 1;

    while (*text != '\0' && capacity > 0) {
        Wide units[2];
        const char* const next = utl_utf8_decode_char(text, available, units, nullptr, log);
        available -= static_cast<std::size_t>(next - text);
        text = next;
        *buffer++ = units[0];
        --capacity;
        if (units[1] == 0) continue;
        if (capacity == 0) {
            log_if(log, LOG_ERR,
                   "%s: out of space in %u byte output string to store surrogate pair low half "
                   "(0x%04X)",
                   self, static_cast<unsigned>(size), static_cast<unsigned>(units[1]));
            return false;
        }
        *buffer++ = units[1];
        --capacity;
    }
    if (*text != '\0') {
        log_if(log, LOG_ERR,
               "%s: %u byte(s) of input string remain(s) undecoded (%s): out of space in %u byte "
               "output string",
               self, static_cast<unsigned>(available - 1), text, static_cast<unsigned>(size));
        return false;
    }
    return true;
}

OwnedWide utl_utf8_to_wide_intl(const char* text, int log) noexcept {
    if (text == nullptr) return nullptr;
    const std::size_t units = std::strlen(text) + 1;  // no character takes more units than bytes
    OwnedWide wide = allocateWide(units);
    if (!wide) {
        log_if(log, LOG_ERR, "%s: error allocating memory for %d byte(s)", "utl_utf8_to_wide_intl",
               static_cast<int>(units * sizeof(Wide)));
        return nullptr;
    }
    if (!utl_utf8_to_wide_buf(text, wide.get(), units * sizeof(Wide), log)) return nullptr;
    return wide;
}

OwnedText utl_wide_buf_to_utf8(const Wide* text, std::size_t units, int log) noexcept {
    if (text == nullptr) return nullptr;
    std::size_t bytes = 0;
    if (!utl_wide_buf_utf8_len(text, units, nullptr, bytes, log)) return nullptr;
    OwnedText encoded = allocateText(bytes + 1);
    if (!encoded) {
        log_if(log, LOG_ERR, "%s: error allocating %d bytes for UTF-8 encoded string",
               "utl_wide_buf_to_utf8", static_cast<int>(bytes + 1));
        return nullptr;
    }
    const Wide* const end = text + units;
    char* out = encoded.get();
    char* const outEnd = out + bytes;
    // Bounded by the first pass's result as well: the text may be another thread's to change.
    while (text != end && *text != 0) {
        std::size_t length = 0;
        std::uint32_t codePoint = 0;
        text =
            utl_utf8_char_len(text, static_cast<std::size_t>(end - text), length, &codePoint, log);
        if (text == nullptr || length > static_cast<std::size_t>(outEnd - out)) return nullptr;
        out = encodeUtf8(codePoint, out);
    }
    return encoded;
}

OwnedText utl_wide_to_utf8_intl(const Wide* text, int log) noexcept {
    if (text == nullptr) return nullptr;
    return utl_wide_buf_to_utf8(text, std::char_traits<Wide>::length(text), log);
}

OwnedText utl_wide_to_utf8(const Wide* text) noexcept { return utl_wide_to_utf8_intl(text, 1); }

OwnedText utl_wide_to_utf8_nolog(const Wide* text) noexcept {
    return utl_wide_to_utf8_intl(text, 0);
}

UtlUTF8Str::UtlUTF8Str(const Wide* text, int log) noexcept
    : m_text(log != 0 ? utl_wide_to_utf8(text) : utl_wide_to_utf8_nolog(text)) {}

UtlUTF8Str::~UtlUTF8Str() = default;

const char* UtlUTF8Str::str() const noexcept { return m_text ? m_text.get() : "(null)"; }

}  // namespace orvane
