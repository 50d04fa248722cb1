#pragma once

// Opening files by UTF-8 path. A file that is not there is no failure: the call succeeds and `file`
// stays empty. A `denied` flag that is not null tells whether a failure was for lack of rights,
// which is then reported at LOG_INFO instead of LOG_ERR. The thread's last error is left as the
// failing call set it.

#include <windows.h>

#include "platform/handles.h"
#include "util/text/owned.h"

namespace orvane {

// CreateFileW on a name that the system takes as it is.
[[nodiscard]] bool utl_get_win_file_handle_abs(UniqueFile& file, const wchar_t* name, DWORD access,
                                               DWORD share, DWORD disposition, DWORD flags, int log,
                                               bool* denied) noexcept;

// The same on the path's extended-length name, which `wideName` receives unless it is null.
[[nodiscard]] bool utl_get_win_file_handle(const char* path, UniqueFile& file, DWORD access,
                                           DWORD share, DWORD disposition, DWORD flags, int log,
                                           OwnedWide* wideName, bool* denied) noexcept;

// A file or a directory, for asking about it.
[[nodiscard]] bool utl_open_for_query(const char* path, UniqueFile& file, int log,
                                      OwnedWide* wideName, bool* denied) noexcept;

// An existing file, so that every write lands at its end, whoever else writes.
[[nodiscard]] bool utl_open_for_append(const char* path, UniqueFile& file, int log) noexcept;

// Closes a handle that is not null and forgets it; a failure is always reported.
void close_handle(HANDLE& handle) noexcept;
void close_handle(UniqueFile& file) noexcept;

}  // namespace orvane
