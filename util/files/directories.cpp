#include "util/files/directories.h"

#include <windows.h>

#include <cerrno>
#include <cstring>
#include <string_view>

#include "platform/last_error.h"
#include "util/files/files.h"
#include "util/files/long_names.h"
#include "util/log/log.h"
#include "util/text/text.h"

namespace orvane {
namespace {

constexpr const char* kMulti = "utl_mkdir_multi_intl";

// The directory so far, in a buffer as long as the path that it is part of.
class PartialPath {
public:
    explicit PartialPath(std::size_t capacity) noexcept
        : m_text(allocateText(capacity + 1)), m_capacity(capacity) {}

    [[nodiscard]] explicit operator bool() const noexcept { return m_text != nullptr; }
    [[nodiscard]] const char* text() const noexcept { return m_text.get(); }

    [[nodiscard]] bool append(std::string_view part) noexcept {
        if (part.size() > m_capacity - m_length) return false;
        std::memcpy(m_text.get() + m_length, part.data(), part.size());
        m_length += part.size();
        return true;
    }

private:
    OwnedText m_text;
    std::size_t m_capacity;
    std::size_t m_length = 0;
};

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
    const KeepLastError failure;
    const UtlUTF8Str printable(log != 0 ? name : nullptr, log);
    SetLastError(failure.code());
    log_if(log, LOG_ERR, "%s: CreateDirectoryW(%s) failed (%d) -- %M", "utl_mkdir_abs",
           printable.str(), static_cast<int>(failure.code()));
    if (failure.code() == ERROR_ALREADY_EXISTS) errno = EEXIST;
    if (failure.code() == ERROR_PATH_NOT_FOUND) errno = ENOENT;
    return false;
}

bool utl_mkdir(const char* path, int log) noexcept {
    const OwnedWide name = utl_get_unicode_filename(path, log);
    return name && utl_mkdir_abs(name.get(), log);
}

bool utl_mkdir_multi_intl(const char* path, int log, bool replace, int priority) noexcept {
    log_if(log, LOG_DEBUG, "%s: making %s", kMulti, path);
    const OwnedText names = duplicateText(path);
    if (!names) {
        log_if(log, priority, "%s: not enough memory to allocate duplicate name", kMulti);
        return false;
    }
    PartialPath partial(std::strlen(path));
    if (!partial) {
        log_if(log, priority, "%s: not enough memory to allocate partial_dir", kMulti);
        return false;
    }

    const std::size_t leading = std::strspn(path, "\\");
    bool first = true;
    bool made = false;
    for (char* next = names.get() + leading; *next != '\0';) {
        char* const name = next;
        next += std::strcspn(next, "\\");
        const std::size_t separators = std::strspn(next, "\\");
        char* const end = next;
        next += separators;
        *end = '\0';
        log_if(log, LOG_DEBUG, "%s: one_dir(%s), partial_dir(%s)", kMulti, name, partial.text());

        if (first && leading > 2) {
            log_if(log, priority, "%s: too many (back)slashes (%d) starting %s", kMulti,
                   static_cast<int>(leading), path);
            return false;
        }
        const std::string_view joint = first ? std::string_view(path, leading) : "\\";
        if (!partial.append(joint) || !partial.append(name)) {
            log_if(log, priority, "%s: partial_dir truncated, can't make directory", kMulti);
            return false;
        }
        if (first && leading == 2) {
            log_if(log, LOG_DEBUG, "%s: no processing for machine name %s", kMulti, name);
        } else if (ensureLevel(partial.text(), log, replace, priority)) {
            made = true;
        } else {
            return false;
        }
        first = false;
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
