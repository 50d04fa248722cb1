#pragma once

#include <windows.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/handles.h"

namespace orvane::check {

// What the check says: on the screen for whoever runs it, in the report for whoever reads it later.
// Texts are UTF-8, of one or more lines with "\n"
// between them. The report (UTF-8 with its mark, CR LF) is on the disk up to
// its last line at any moment. One thread.
class Report {
public:
    // The old report goes.
    explicit Report(const std::filesystem::path& file);
    [[nodiscard]] bool isOpen() const { return static_cast<bool>(m_file); }

    void both(std::string_view line);
    // `end` is empty for the beginning of a line that goes on.
    void screen(std::string_view text, const char* end = "\n") const;
    // `text` may have several lines; each gets the indent.
    void file(std::string_view text, std::string_view indent = {});

    // Stands for `secret` from now on: a folder's name may hold its user's.
    void hide(const std::filesystem::path& secret, std::string standIn);

private:
    UniqueFile m_file;
    std::vector<std::pair<std::string, std::string>> m_hidden;
};

}  // namespace orvane::check
