#include "util/files/paths.h"

#include <algorithm>

#include "util/log/log.h"

namespace orvane {
namespace {

constexpr std::string_view kLongUncPrefix = R"(\\?\UNC\)";

const char* skipSlashes(const char* text) noexcept {
    while (is_slash(*text)) ++text;
    return text;
}

constexpr bool isSeparator(Wide unit) noexcept { return unit == L'\\' || unit == L'/'; }

bool isDots(const Wide* component, const Wide* end, std::ptrdiff_t count) noexcept {
    return end - component == count &&
           std::all_of(component, end, [](Wide unit) { return unit == L'.'; });
}

}  // namespace

bool strip_long_path_prefix(const char* path, PathView& view) noexcept {
    const std::string_view text(path);
    view.copy.reset();
    view.text = path;
    if (text.starts_with(kLongUncPrefix)) {
        view.copy = joinTexts({R"(\\)", text.substr(kLongUncPrefix.size())});
        view.text = view.copy.get();
        return view.copy != nullptr;
    }
    if (text.starts_with(kLongPathPrefix)) view.text += kLongPathPrefix.size();
    return true;
}

bool utl_is_unc_intl(const char* path, int log) noexcept {
    constexpr const char* self = "utl_is_unc_intl";
    const char* const host = skipSlashes(path);
    const auto leading = host - path;
    if (leading == 0) return false;
    if (leading > 2 || *host == '\0') {
        log_if(log, LOG_ERR, "%s: don't understand path(%s)", self, path);
        return false;
    }
    if (leading == 1) return false;

    const char* hostEnd = host;
    while (*hostEnd != '\0' && !is_slash(*hostEnd)) ++hostEnd;
    if (*hostEnd == '\0') {
        log_if(log, LOG_ERR, "%s: incomplete UNC path: host only(%s)", self, path);
        return false;
    }
    const char* const rest = skipSlashes(hostEnd);
    if (*rest == '\0') {
        log_if(log, LOG_ERR, "%s: incomplete UNC path: no path after host(%s)", self, path);
        return false;
    }
    if (rest - hostEnd > 1) {
        log_if(log, LOG_ERR, "%s: invalid UNC path: too many slashes after host(%s)", self, path);
        return false;
    }
    return true;
}

bool utl_is_absolute_intl(const char* path, bool& absolute, int log) noexcept {
    absolute = false;
    if (*path == '\0') return true;
    PathView view;
    if (!strip_long_path_prefix(path, view)) return false;
    if (*view.text == '\0') return true;
    if (view.text[1] == ':') {
        absolute = is_slash(view.text[2]);
    } else {
        absolute = utl_is_unc_intl(view.text, log);
    }
    return true;
}

void normalizeLongName(Wide* name, unsigned rootComponents) noexcept {
    const Wide* read = name;
    Wide* write = name;
    const auto skipSeparators = [&read] {
        while (isSeparator(*read)) ++read;
    };
    if (isSeparator(*read)) *write++ = L'\\';
    skipSeparators();

    // Between two rounds, what is written ends in "\" unless the text has ended.
    unsigned depth = 0;
    bool endsInDots = false;
    while (*read != 0) {
        const Wide* end = read;
        while (*end != 0 && !isSeparator(*end)) ++end;
        const bool inRoot = depth < rootComponents;
        const bool up = !inRoot && isDots(read, end, 2);
        const bool drop = up || (!inRoot && isDots(read, end, 1));
        if (up && depth > rootComponents) {
            do {
                --write;
            } while (write[-1] != L'\\');
            --depth;
        }
        if (!drop) {
            write = std::copy(read, end, write);
            if (*end != 0) *write++ = L'\\';
            ++depth;
        }
        endsInDots = drop && *end == 0;
        read = end;
        skipSeparators();
    }
    if (endsInDots && depth > rootComponents) --write;
    *write = 0;
}

}  // namespace orvane
