#include "util/shared_log/log_format.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace orvane {
namespace {

std::size_t countLonePercents(std::string_view text) noexcept {
    std::size_t count = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') continue;
        if (i + 1 < text.size() && text[i + 1] == '%') {
            ++i;
        } else {
            ++count;
        }
    }
    return count;
}

// Adds a * b; false when the sum does not fit.
bool addProduct(std::size_t& sum, std::size_t a, std::size_t b) noexcept {
    const std::size_t room = std::numeric_limits<std::size_t>::max() - sum;
    if (b != 0 && a > room / b) return false;
    sum += a * b;
    return true;
}

}  // namespace

ErrorDirectives countErrorDirectives(const char* format) noexcept {
    ErrorDirectives count;
    while ((format = std::strchr(format, '%')) != nullptr) {
        const char directive = format[1];
        if (directive == 'm') ++count.errnoTexts;
        if (directive == 'M') ++count.windowsTexts;
        format += directive == '\0' ? 1 : 2;
    }
    return count;
}

bool hasLonePercent(std::string_view text) noexcept { return countLonePercents(text) != 0; }

OwnedText escapePercents(std::string_view text) noexcept {
    OwnedText escaped = allocateText(text.size() + countLonePercents(text) + 1);
    if (!escaped) return nullptr;
    char* out = escaped.get();
    for (std::size_t i = 0; i < text.size(); ++i) {
        *out++ = text[i];
        if (text[i] != '%') continue;
        *out++ = '%';
        if (i + 1 < text.size() && text[i + 1] == '%') ++i;
    }
    return escaped;
}

OwnedText replaceErrorDirectives(const char* format, ErrorDirectives count,
                                 std::string_view errnoText,
                                 std::string_view windowsText) noexcept {
    std::size_t size = std::strlen(format) + 1;
    if (!addProduct(size, count.errnoTexts, errnoText.size()) ||
        !addProduct(size, count.windowsTexts, windowsText.size())) {
        return nullptr;
    }
    OwnedText translated = allocateText(size);
    if (!translated) return nullptr;
    char* out = translated.get();
    while (*format != '\0') {
        if (*format != '%' || format[1] == '\0') {
            *out++ = *format++;
        } else if (format[1] == 'm') {
            out = std::copy(errnoText.begin(), errnoText.end(), out);
            format += 2;
        } else if (format[1] == 'M') {
            out = std::copy(windowsText.begin(), windowsText.end(), out);
            format += 2;
        } else {
            *out++ = *format++;
            *out++ = *format++;
        }
    }
    return translated;
}

}  // namespace orvane
