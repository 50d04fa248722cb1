#pragma once

// Creating directories by UTF-8 path, side by side with other processes that create the same ones.
// errno tells why a creation failed: EEXIST, ENOENT (a parent is missing), else unchanged.

namespace orvane {

[[nodiscard]] bool utl_mkdir_abs(const wchar_t* name, int log) noexcept;
[[nodiscard]] bool utl_mkdir(const char* path, int log) noexcept;

// Creates every missing level; levels are separated by "\". A file that stands where a directory is
// needed fails the call, or with `replace` is deleted to make room. Problems of this function's own
// are reported at `priority`.
[[nodiscard]] bool utl_mkdir_multi_intl(const char* path, int log, bool replace,
                                        int priority) noexcept;

// Whether an existing path can serve as that level, after `replace` has had its say.
[[nodiscard]] bool utl_mkdir_handle_existing(const char* path, int log, bool replace,
                                             int priority) noexcept;

}  // namespace orvane
