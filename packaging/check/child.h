#pragma once

#include <windows.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "platform/handles.h"

namespace orvane::check {

// A program and all that it starts: they end with this object at the latest, and with the check
// itself however that ends. What it prints goes to a file. It has no console window.
class Child {
public:
    struct Start {
        std::wstring commandLine;
        std::filesystem::path folder;  // where it starts
        std::filesystem::path output;
        std::map<std::wstring, std::wstring> environment;  // added to ours
    };
    // When it does not start, `error` has the system's number and exitCode is 0xFFFFFFFF at once.
    explicit Child(const Start& start);
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    DWORD error = 0;
    // None when it still runs after the time.
    [[nodiscard]] std::optional<DWORD> exitCode(DWORD limitMs) const;
    // A line for its standard input.
    void tell(std::string line) const;
    // It and all that it started.
    void end();
    // The one that runs, for good: from now on whoever starts another waits for ever. Any thread.
    static void endAll();

private:
    UniqueHandle m_job;
    UniqueHandle m_process;
    UniqueFile m_input;
};

// With all that is in it, however long its name.
void removeFolder(const std::filesystem::path& folder);
[[nodiscard]] std::string contentOf(const std::filesystem::path& file);

}  // namespace orvane::check
