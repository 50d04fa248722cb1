#pragma once

// Questions about files and directories by UTF-8 path of any length, and deletion. Absence is an
// answer, not a failure. `denied` (may be null) and `log` as in file_handles.h.

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

// Whether a file or directory is there and can be opened. False when that cannot be told.
[[nodiscard]] bool utl_exists(const char* path, bool& exists, int log, bool* denied) noexcept;
[[nodiscard]] bool utl_file_exists(const char* path, bool& exists, bool* denied) noexcept;

[[nodiscard]] bool utl_stat(const char* path, int log, bool& exists, UtlStat& record,
                            bool* denied) noexcept;
// The same on an open file; an empty one is a path that does not exist. `name` is for messages.
[[nodiscard]] bool utl_stat_abs(bool& exists, UtlStat& record, const wchar_t* name,
                                const UniqueFile& file, int log) noexcept;

// Whether the system can read the path's attributes; a bare drive ("C:") can be asked about, too.
[[nodiscard]] bool utl_access(const char* path, int log) noexcept;

[[nodiscard]] bool utl_file_delete_intl(bool* denied, const wchar_t* name, int log) noexcept;
[[nodiscard]] bool utl_file_delete(const char* path, int log, bool* denied) noexcept;

}  // namespace orvane
