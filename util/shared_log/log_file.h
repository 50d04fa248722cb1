#pragma once

#include <cstdarg>

#include "platform/handles.h"
#include "util/text/owned.h"

namespace orvane {

// The log file, opened for one line and closed again, because another program may move or delete
// the file between two lines. A missing file is created. The caller owns the log's lock meanwhile.
class LogFile {
public:
    LogFile() = default;
    ~LogFile() { do_closelog(); }
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    [[nodiscard]] bool do_openlog() noexcept;
    void do_closelog() noexcept;

    // Appends one line in one write: `front` unchanged, the message, the line's end. When that
    // fails, the line is dropped, the reason goes to diagnose(), and the result is false.
    // WriteFile.
    bool log_msg_va(const char* front, const char* format, va_list args) noexcept;

private:
    UniqueFile m_file;
};

// The path of "OrVaneMedia" in the all-users application data, and of the log in a directory; null
// when unknown.
[[nodiscard]] OwnedText get_log_file_path() noexcept;
[[nodiscard]] OwnedText get_log_file_name(const char* directory) noexcept;

// Creates the file, writable for everyone, unless it exists.
[[nodiscard]] bool create_writable_file(const char* name) noexcept;

}  // namespace orvane
