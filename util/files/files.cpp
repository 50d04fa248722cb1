#include "util/files/files.h"

#include "platform/last_error.h"
#include "util/failed_call/failed_call.h"
#include "util/files/file_handles.h"
#include "util/files/long_names.h"
#include "util/log/log.h"

namespace orvane {
namespace {

constexpr std::uint64_t join(DWORD high, DWORD low) noexcept {
    return std::uint64_t{high} << 32 | low;
}

constexpr std::uint64_t ticks(const FILETIME& time) noexcept {
    return join(time.dwHighDateTime, time.dwLowDateTime);
}

}  // namespace

bool utl_exists(const char* path, bool& exists, int log, bool* denied) noexcept {
    exists = false;
    UniqueFile file;
    if (!utl_open_for_query(path, file, log, nullptr, denied)) return false;
    exists = static_cast<bool>(file);
    close_handle(file);
    return true;
}

bool utl_file_exists(const char* path, bool& exists, bool* denied) noexcept {
    return utl_exists(path, exists, 1, denied);
}

bool utl_stat(const char* path, int log, bool& exists, UtlStat& record, bool* denied) noexcept {
    exists = false;
    if (*path == '\0') return true;
    UniqueFile file;
    OwnedWide name;
    if (!utl_open_for_query(path, file, log, &name, denied)) return false;
    const bool known = utl_stat_abs(exists, record, name.get(), file, log);
    const KeepLastError result;
    close_handle(file);
    return known;
}

bool utl_stat_abs(bool& exists, UtlStat& record, const wchar_t* name, const UniqueFile& file,
                  int log) noexcept {
    constexpr const char* self = "utl_stat_abs";
    exists = static_cast<bool>(file);
    if (!exists) {
        if (log != 0 && log_enabled(LOG_DEBUG)) {
            syslog(LOG_DEBUG, "%s: %s does not exist", self, UtlUTF8Str(name, log).str());
        }
        return true;
    }
    BY_HANDLE_FILE_INFORMATION information{};
    if (GetFileInformationByHandle(file.get(), &information) == 0) {
        FailedCall().log(log, LOG_ERR, "%s: GetFileInformationByHandle(%s) failed (%d) -- %M", self,
                         name);
        return false;
    }
    record.isDirectory = (information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? 1 : 0;
    record.lastAccess = ticks(information.ftLastAccessTime);
    record.lastWrite = ticks(information.ftLastWriteTime);
    record.size = join(information.nFileSizeHigh, information.nFileSizeLow);
    return true;
}

bool utl_access(const char* path, int log) noexcept {
    constexpr const char* self = "utl_access";
    if (path[0] != '\0' && path[1] == ':' && path[2] == '\0') {
        if (GetFileAttributesA(path) != INVALID_FILE_ATTRIBUTES) return true;
        FailedCall().log(log, LOG_INFO, "%s: GetFileAttributes(%s) failed (%d) -- %M", self, path);
        return false;
    }
    const OwnedWide name = utl_get_unicode_filename(path, log);
    if (!name) return false;
    if (GetFileAttributesW(name.get()) != INVALID_FILE_ATTRIBUTES) return true;
    FailedCall().log(log, LOG_INFO, "%s: GetFileAttributesW(%s) failed (%d) -- %M", self,
                     name.get());
    return false;
}

bool utl_file_delete_intl(bool* denied, const wchar_t* name, int log) noexcept {
    if (DeleteFileW(name) != 0) return true;
    const FailedCall failed;
    failed.log(log, failed.priority(ERROR_ACCESS_DENIED, denied),
               "%s: DeleteFileW(%s) failed (%d) -- %M", "utl_file_delete_intl", name);
    return false;
}

bool utl_file_delete(const char* path, int log, bool* denied) noexcept {
    const OwnedWide name = utl_get_unicode_filename(path, log);
    if (!name) {
        if (denied != nullptr) *denied = false;
        return false;
    }
    return utl_file_delete_intl(denied, name.get(), log);
}

}  // namespace orvane
