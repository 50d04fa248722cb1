#pragma once

// Creates directories by UTF-8 path. Other processes may create the same ones at the same time.
// errno tells why a creation failed: EEXIST, ENOENT (a parent is missing), else unchanged.

namespace orvane {

[[nodiscard]] bool utl_mkdir_abs(const wchar_t* name, int log) noexcept;
[[nodiscard]] bool utl_mkdir(const char* path, int log) noexcept;

// Creates every missing level of the path; levels are separated by "\". When a file has the name of
// a level, the call fails, or with `replace` deletes the file first. The function logs its own
// errors at `priority`.
[[nodiscard]] bool utl_mkdir_multi_intl(const char* path, int log, bool replace,
                                        int priority) noexcept;

// Whether the existing path is a directory, or was a file that `replace` allowed to be deleted.
[[nodiscard]] bool utl_mkdir_handle_existing(const char* path, int log, bool replace,
                                             int priority) noexcept;

}  // namespace orvane
