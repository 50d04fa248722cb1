#include "util/files/long_names.h"

#include <windows.h>

#include <cstring>
#include <string_view>

#include "util/failed_call/failed_call.h"
#include "util/files/paths.h"
#include "util/log/log.h"

namespace orvane {

OwnedWide abspath_w(const wchar_t* path, int priority, int log) noexcept {
    constexpr const char* self = "abspath_w";
    if (*path == 0) {
        log_if(log, priority, "%s: can't determine absolute path of empty string", self);
        return nullptr;
    }
    const DWORD size = GetFullPathNameW(path, 0, nullptr, nullptr);
    if (size == 0) {
        FailedCall().log(log, priority, "%s: GetFullPathName(%s) (for size) failed (%d) -- %M",
                         self, path);
        return nullptr;
    }
    OwnedWide absolute = allocateWide(size);
    if (!absolute) {
        log_if(log, priority, "%s: unable to allocate %d bytes for absolute version of %s", self,
               static_cast<int>(2 * size), UtlUTF8Str(log != 0 ? path : nullptr, log).str());
        return nullptr;
    }
    const DWORD length = GetFullPathNameW(path, size, absolute.get(), nullptr);
    // A length that does not fit: the current directory has changed since the first call.
    if (length == 0 || length >= size) {
        FailedCall().log(log, priority, "%s: GetFullPathName(%s) failed (%d) -- %M", self, path);
        return nullptr;
    }
    return absolute;
}

OwnedText abspath_utf8(const char* path, int priority, int log) noexcept {
    const OwnedWide wide = utl_utf8_to_wide_intl(path, log);
    if (!wide) return nullptr;
    const OwnedWide absolute = abspath_w(wide.get(), priority, log);
    if (!absolute) return nullptr;
    return utl_wide_to_utf8_intl(absolute.get(), log);
}

OwnedWide build_unicode_filename_intl(const char* absolutePath, int log) noexcept {
    std::wstring_view prefix = LR"(\\?\)";
    unsigned rootComponents = 1;
    const char* rest = absolutePath;
    if (std::string_view(absolutePath).starts_with(kLongPathPrefix)) {
        prefix = {};
    } else if (utl_is_unc_intl(absolutePath, log)) {
        prefix = LR"(\\?\UNC)";
        rootComponents = 2;
        ++rest;
    }

    const std::size_t length = std::strlen(rest);
    OwnedWide name = allocateWide(prefix.size() + length + 1);
    if (!name) {
        log_if(log, LOG_ERR, "%s: unable to allocate %d byte buffer for unicode filename",
               "build_unicode_filename_intl", static_cast<int>(2 * (prefix.size() + length) + 2));
        return nullptr;
    }
    prefix.copy(name.get(), prefix.size());
    wchar_t* const wideRest = name.get() + prefix.size();
    if (!utl_utf8_to_wide_buf(rest, wideRest, sizeof(wchar_t) * (length + 1), log)) return nullptr;
    if (!prefix.empty()) normalizeLongName(wideRest, rootComponents);
    return name;
}

OwnedWide utl_get_unicode_filename(const char* path, int log) noexcept {
    if (path == nullptr) return nullptr;
    bool absolute = false;
    if (!utl_is_absolute_intl(path, absolute, log)) return nullptr;
    if (absolute) return build_unicode_filename_intl(path, log);
    const OwnedText absolutePath = abspath_utf8(path, LOG_ERR, log);
    if (!absolutePath) return nullptr;
    return build_unicode_filename_intl(absolutePath.get(), log);
}

}  // namespace orvane
