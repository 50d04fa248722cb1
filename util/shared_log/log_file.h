#pragma once

#include <cstdarg>

#include "platform/handles.h"
#include "util/text/owned.h"

namespace orvane {

// The log file while one line is being written: found, made when missing, opened, appended to and
// closed again, all while the caller owns the log's lock. Another program may move or delete the
// file between two lines.
class LogFile {
public:
    LogFile() = default;
    ~LogFile() { do_closelog(); }
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    [[nodiscard]] bool do_openlog() noexcept;
    void do_closelog() noexcept;

    // Appends one line in one write: `front` as it is, the message, the line's end. A line that
    // cannot be formatted or written is dropped: false, after saying why. WriteFile.
    bool log_msg_va(const char* front, const char* format, va_list args) noexcept;

private:
    UniqueFile m_file;
};

// "OrVaneMedia" in the all-users application data, and the log in it; none when unknown.
[[nodiscard]] OwnedText get_log_file_path() noexcept;
[[nodiscard]] OwnedText get_log_file_name(const char* directory) noexcept;

// Creates the file, writable for everyone, unless it exists.
[[nodiscard]] bool create_writable_file(const char* name) noexcept;

}  // namespace orvane
