// Fuzzes a log line's format and its error texts: the line has the expected text, and the format
// uses no printf argument that was not passed.

#include <cstdio>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "util/shared_log/log_format.h"

using namespace orvane;
using fuzz::require;

namespace {

// Up to the next "|", which is taken away too.
std::string takePart(std::string_view& input) {
    const std::size_t end = input.find('|');
    const std::string part(input.substr(0, end));
    input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
    return std::string(part.c_str());
}

// What printf makes of an escaped percent, done here: "%%" is one, and one alone stays.
std::string withSinglePercents(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        result += text[i];
        if (text.substr(i).starts_with("%%")) ++i;
    }
    return result;
}

struct Expected {
    std::string line;        // what is printed
    bool hasOthers = false;  // printf's own directives, which need arguments
};

Expected expectedOf(std::string_view format, std::string_view errnoText,
                    std::string_view windowsText) {
    Expected expected;
    for (std::size_t i = 0; i < format.size(); ++i) {
        if (format[i] != '%') {
            expected.line += format[i];
            continue;
        }
        const char directive = ++i < format.size() ? format[i] : '\0';
        if (directive == 'm')
            expected.line += withSinglePercents(errnoText);
        else if (directive == 'M')
            expected.line += withSinglePercents(windowsText);
        else if (directive == '%')
            expected.line += '%';
        else
            expected.hasOthers = true;
    }
    return expected;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string format = takePart(input);
    const std::string errnoText = takePart(input);
    const std::string windowsText = takePart(input);

    const OwnedText safeErrno = escapePercents(errnoText);
    const OwnedText safeWindows = escapePercents(windowsText);
    require(safeErrno && safeWindows, "any text can be escaped");
    require(!hasLonePercent(safeErrno.get()) && !hasLonePercent(safeWindows.get()),
            "an escaped text is safe in a format");
    require(hasLonePercent(errnoText) || safeErrno.get() == errnoText, "a safe text stays");

    const ErrorDirectives count = countErrorDirectives(format.c_str());
    const OwnedText translated =
        replaceErrorDirectives(format.c_str(), count, safeErrno.get(), safeWindows.get());
    require(translated != nullptr, "any format can be translated");
    const ErrorDirectives left = countErrorDirectives(translated.get());
    require(left.errnoTexts == 0 && left.windowsTexts == 0, "no directive of the log's is left");

    const Expected expected = expectedOf(format, errnoText, windowsText);
    if (expected.hasOthers) return 0;
    std::string line(expected.line.size() + 2, '\0');
    const int length = std::snprintf(line.data(), line.size(), translated.get(), 0);
    line.resize(expected.line.size());
    require(length >= 0 && static_cast<std::size_t>(length) == expected.line.size() &&
                line == expected.line,
            "the line says what it should");
    return 0;
}
