#pragma once

// Opens files by UTF-8 path. A missing file is not an error: the call succeeds and `file` stays
// empty. When `denied` is not null, it receives whether access was denied, and that failure is
// logged at LOG_INFO instead of LOG_ERR. The thread's last error is the one of the failed call.

#include <windows.h>

#include "platform/handles.h"
#include "util/text/owned.h"

namespace orvane {

// CreateFileW with a name that is passed on unchanged.
[[nodiscard]] bool utl_get_win_file_handle_abs(UniqueFile& file, const wchar_t* name, DWORD access,
                                               DWORD share, DWORD disposition, DWORD flags, int log,
                                               bool* denied) noexcept;

// The same with the path's extended-length name, which `wideName` receives unless it is null.
[[nodiscard]] bool utl_get_win_file_handle(const char* path, UniqueFile& file, DWORD access,
                                           DWORD share, DWORD disposition, DWORD flags, int log,
                                           OwnedWide* wideName, bool* denied) noexcept;

// Opens a file or a directory to query its attributes only.
[[nodiscard]] bool utl_open_for_query(const char* path, UniqueFile& file, int log,
                                      OwnedWide* wideName, bool* denied) noexcept;

// Opens an existing file for appending: each write goes to the end, also when others write.
[[nodiscard]] bool utl_open_for_append(const char* path, UniqueFile& file, int log) noexcept;

// Closes the handle unless it is null, and sets it to null. A failure is always logged.
void close_handle(HANDLE& handle) noexcept;
void close_handle(UniqueFile& file) noexcept;

}  // namespace orvane
