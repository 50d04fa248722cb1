#pragma once

#include <windows.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/handles.h"

namespace orvane::check {

// Writes the check's messages to the screen and to the report file. Texts are UTF-8, of one or more
// lines separated by "\n". The report is UTF-8 with a byte order mark and CR LF; each line is on
// the disk when the call returns. One thread.
class Report {
public:
    // Overwrites an old report.
    explicit Report(const std::filesystem::path& file);
    [[nodiscard]] bool isOpen() const { return static_cast<bool>(m_file); }

    void both(std::string_view line);
    // `end` is empty for the first part of a line.
    void screen(std::string_view text, const char* end = "\n") const;
    // `text` may have several lines; each gets the indent.
    void file(std::string_view text, std::string_view indent = {});

    // Replaces the path `secret` with `standIn` in later texts, because a folder's name may contain
    // the user's name.
    void hide(const std::filesystem::path& secret, std::string standIn);

private:
    UniqueFile m_file;
    std::vector<std::pair<std::string, std::string>> m_hidden;
};

}  // namespace orvane::check
