#include "util/files/directories.h"

#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "util/failed_call/failed_call.h"
#include "util/files/files.h"
#include "util/files/long_names.h"
#include "util/log/log.h"

namespace orvane {
namespace {

constexpr const char* kMulti = "utl_mkdir_multi_intl";

// One level: there already, made by us, or made by somebody else in between.
bool ensureLevel(const char* directory, int log, bool replace, int priority) noexcept {
    if (!utl_access(directory, log)) {
        errno = 0;
        if (utl_mkdir(directory, log)) return true;
        if (errno != EEXIST) return false;
        log_if(log, LOG_INFO, "%s: %s created by another process", kMulti, directory);
    }
    return utl_mkdir_handle_existing(directory, log, replace, priority);
}

}  // namespace

bool utl_mkdir_abs(const wchar_t* name, int log) noexcept {
    if (CreateDirectoryW(name, nullptr) != 0) return true;
    const FailedCall failed;
    failed.log(log, LOG_ERR, "%s: CreateDirectoryW(%s) failed (%d) -- %M", "utl_mkdir_abs", name);
    if (failed.code() == ERROR_ALREADY_EXISTS) errno = EEXIST;
    if (failed.code() == ERROR_PATH_NOT_FOUND) errno = ENOENT;
    return false;
}

bool utl_mkdir(const char* path, int log) noexcept {
    const OwnedWide name = utl_get_unicode_filename(path, log);
    return name && utl_mkdir_abs(name.get(), log);
}

bool utl_mkdir_multi_intl(const char* path, int log, bool replace, int priority) noexcept {
    log_if(log, LOG_DEBUG, "%s: making %s", kMulti, path);
    const std::string_view whole(path);
    // One level after the other, each a part of the next; no longer than the path in the end.
    const OwnedText partial = allocateText(whole.size() + 1);
    if (!partial) {
        log_if(log, priority, "%s: not enough memory to allocate partial_dir", kMulti);
        return false;
    }
    char* partialEnd = partial.get();
    const std::size_t leading = std::min(whole.find_first_not_of('\\'), whole.size());
    bool made = false;
    for (std::size_t at = leading; at < whole.size();) {
        const std::size_t end = std::min(whole.find('\\', at), whole.size());
        const std::string_view name = whole.substr(at, end - at);
        const int length = static_cast<int>(name.size());
        const bool first = at == leading;
        at = std::min(whole.find_first_not_of('\\', end), whole.size());
        log_if(log, LOG_DEBUG, "%s: one_dir(%.*s), partial_dir(%s)", kMulti, length, name.data(),
               partial.get());
        if (first && leading > 2) {
            log_if(log, priority, "%s: too many (back)slashes (%d) starting %s", kMulti,
                   static_cast<int>(leading), path);
            return false;
        }
        const std::string_view joint = first ? whole.substr(0, leading) : "\\";
        partialEnd = std::copy(joint.begin(), joint.end(), partialEnd);
        partialEnd = std::copy(name.begin(), name.end(), partialEnd);
        if (first && leading == 2) {
            log_if(log, LOG_DEBUG, "%s: no processing for machine name %.*s", kMulti, length,
                   name.data());
            continue;
        }
        if (!ensureLevel(partial.get(), log, replace, priority)) return false;
        made = true;
    }
    return made;
}

bool utl_mkdir_handle_existing(const char* path, int log, bool replace, int priority) noexcept {
    constexpr const char* self = "utl_mkdir_handle_existing";
    log_if(log, LOG_DEBUG, "%s: %s already exists", self, path);
    bool exists = false;
    UtlStat record;
    if (!utl_stat(path, log, exists, record, nullptr) || !exists || record.isDirectory != 0) {
        return true;
    }
    if (!replace) {
        log_if(log, priority, "%s: %s exists but is not a directory", self, path);
        return false;
    }
    log_if(log, LOG_DEBUG, "%s: removing %s", self, path);
    return utl_file_delete(path, log, nullptr) && utl_mkdir(path, log);
}

}  // namespace orvane
