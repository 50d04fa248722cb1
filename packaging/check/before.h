#pragma once

#include <windows.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace orvane::check {

// The machine as it was before the check: the registry's keys and values that tests, plug-in and
// application may touch, and the length of the shared log. Kept in a file for as long as it is not
// put back, so that a check that was cut short is taken back by the next one. Any thread, one at a
// time.
class Before {
public:
    // Looks at the machine and writes the file; false when the file cannot be written.
    [[nodiscard]] bool remember(const std::filesystem::path& file);
    // Takes over what a check before this one left; false when there is no such file.
    [[nodiscard]] bool recall(const std::filesystem::path& file);
    // Puts back what is different, and removes the file once nothing is. Answers what could not be
    // put back, a line each.
    [[nodiscard]] std::string putBack();

private:
    struct Value {
        std::uint32_t type = 0;
        std::string data;
        bool operator==(const Value&) const = default;
    };
    // By key and name. A key that is there has itself an entry, with the name kKeyItself.
    using Values = std::map<std::pair<std::wstring, std::wstring>, Value>;

    static Values look();
    static void lookAt(HKEY root, const std::wstring& path, bool below, Values& values);
    void putBackRegistry(std::string& problems);
    void putBackLog(std::string& problems) const;

    std::filesystem::path m_file;
    Values m_values;
    std::wstring m_log;           // empty: the system names no folder for it
    std::int64_t m_logSize = -1;  // -1: there was none
    std::uint32_t m_logFolderExisted = 0;
};

}  // namespace orvane::check
