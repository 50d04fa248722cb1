#pragma once

// Queries files and directories by UTF-8 path of any length, and deletes files. A missing file is a
// valid answer, not an error. `denied` (may be null) and `log` are as in file_handles.h.

#include <windows.h>

#include <cstdint>

#include "platform/handles.h"

namespace orvane {

struct UtlStat {
    std::uint32_t isDirectory = 0;
    std::uint64_t lastAccess = 0;  // FILETIME: 100 ns since 1601, UTC
    std::uint64_t lastWrite = 0;
    std::uint64_t size = 0;  // bytes
};

// Sets `exists` to whether there is such a file or directory. False when that is unknown.
[[nodiscard]] bool utl_exists(const char* path, bool& exists, int log, bool* denied) noexcept;
[[nodiscard]] bool utl_file_exists(const char* path, bool& exists, bool* denied) noexcept;

[[nodiscard]] bool utl_stat(const char* path, int log, bool& exists, UtlStat& record,
                            bool* denied) noexcept;
// The same for an open file; an empty `file` is a path that does not exist. `name` is for the log.
[[nodiscard]] bool utl_stat_abs(bool& exists, UtlStat& record, const wchar_t* name,
                                const UniqueFile& file, int log) noexcept;

// Whether the path's attributes can be read. A bare drive ("C:") is allowed.
[[nodiscard]] bool utl_access(const char* path, int log) noexcept;

[[nodiscard]] bool utl_file_delete_intl(bool* denied, const wchar_t* name, int log) noexcept;
[[nodiscard]] bool utl_file_delete(const char* path, int log, bool* denied) noexcept;

}  // namespace orvane
