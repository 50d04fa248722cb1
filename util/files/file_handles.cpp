#include "util/files/file_handles.h"

#include "platform/last_error.h"
#include "util/files/long_names.h"
#include "util/log/log.h"
#include "util/text/text.h"

namespace orvane {

bool utl_get_win_file_handle_abs(UniqueFile& file, const wchar_t* name, DWORD access, DWORD share,
                                 DWORD disposition, DWORD flags, int log, bool* denied) noexcept {
    constexpr const char* self = "utl_get_win_file_handle_abs";
    // Before the call, so that nothing comes between it and its error.
    const UtlUTF8Str printable(log != 0 ? name : nullptr, log);
    file.reset();
    SetLastError(ERROR_SUCCESS);
    file.reset(CreateFileW(name, access, share, nullptr, disposition, flags, nullptr));
    const KeepLastError result;
    if (!file) {
        if (result.code() == ERROR_FILE_NOT_FOUND || result.code() == ERROR_PATH_NOT_FOUND) {
            return true;
        }
        int priority = LOG_ERR;
        if (denied != nullptr) {
            *denied = result.code() == ERROR_ACCESS_DENIED;
            if (*denied) priority = LOG_INFO;
        }
        log_if(log, priority, "%s: CreateFileW(%s,0x%08X) failed (%d) -- %M", self, printable.str(),
               static_cast<unsigned>(access), static_cast<int>(result.code()));
        return false;
    }
    if (disposition == CREATE_ALWAYS && result.code() == ERROR_ALREADY_EXISTS) {
        log_if(log, LOG_INFO, "%s: overwriting existing file %s", self, printable.str());
    }
    return true;
}

bool utl_get_win_file_handle(const char* path, UniqueFile& file, DWORD access, DWORD share,
                             DWORD disposition, DWORD flags, int log, OwnedWide* wideName,
                             bool* denied) noexcept {
    file.reset();
    OwnedWide name = utl_get_unicode_filename(path, log);
    if (!name) return false;
    if (!utl_get_win_file_handle_abs(file, name.get(), access, share, disposition, flags, log,
                                     denied)) {
        return false;
    }
    if (wideName != nullptr) *wideName = std::move(name);
    return true;
}

bool utl_open_for_query(const char* path, UniqueFile& file, int log, OwnedWide* wideName,
                        bool* denied) noexcept {
    return utl_get_win_file_handle(path, file, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                   OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, log, wideName,
                                   denied);
}

bool utl_open_for_append(const char* path, UniqueFile& file, int log) noexcept {
    return utl_get_win_file_handle(path, file, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                   OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, log, nullptr, nullptr);
}

void close_handle(HANDLE& handle) noexcept {
    if (handle == nullptr) return;
    if (CloseHandle(handle) == 0) {
        const KeepLastError failure;
        syslog(LOG_ERR, "%s: CloseHandle failed (%d) -- %M", "close_handle",
               static_cast<int>(failure.code()));
    }
    handle = nullptr;
}

void close_handle(UniqueFile& file) noexcept {
    if (!file) return;
    HANDLE handle = file.release();
    close_handle(handle);
}

}  // namespace orvane
