#include "util/files/file_handles.h"

#include "platform/last_error.h"
#include "util/failed_call/failed_call.h"
#include "util/files/long_names.h"
#include "util/log/log.h"

namespace orvane {

bool utl_get_win_file_handle_abs(UniqueFile& file, const wchar_t* name, DWORD access, DWORD share,
                                 DWORD disposition, DWORD flags, int log, bool* denied) noexcept {
    constexpr const char* self = "utl_get_win_file_handle_abs";
    file.reset();
    SetLastError(ERROR_SUCCESS);
    file.reset(CreateFileW(name, access, share, nullptr, disposition, flags, nullptr));
    if (!file) {
        const FailedCall failed;
        if (failed.code() == ERROR_FILE_NOT_FOUND || failed.code() == ERROR_PATH_NOT_FOUND) {
            return true;
        }
        failed.log(log, failed.priority(ERROR_ACCESS_DENIED, denied),
                   "%s: CreateFileW(%s,0x%08X) failed (%d) -- %M", self, name,
                   static_cast<unsigned>(access));
        return false;
    }
    const KeepLastError result;
    if (disposition == CREATE_ALWAYS && result.code() == ERROR_ALREADY_EXISTS) {
        log_if(log, LOG_INFO, "%s: overwriting existing file %s", self,
               UtlUTF8Str(log != 0 ? name : nullptr, log).str());
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
        FailedCall().log(1, LOG_ERR, "%s: CloseHandle failed (%d) -- %M", "close_handle");
    }
    handle = nullptr;
}

void close_handle(UniqueFile& file) noexcept {
    if (!file) return;
    HANDLE handle = file.release();
    close_handle(handle);
}

}  // namespace orvane
