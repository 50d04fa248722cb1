#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

#include "platform/handles.h"
#include "tests/support/temp_folder.h"

namespace orvane::test {

// How often `what` stands in `text`.
[[nodiscard]] std::size_t countOf(std::string_view text, std::string_view what);

// Another program, found beside the test's own, which ends with this object at the latest.
class Process {
public:
    // A program that does not start fails the test.
    explicit Process(std::wstring commandLine);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // A line for its standard input.
    void tell(const std::string& line);
    // It has ended then.
    void kill();
    // All its threads.
    void suspend(bool suspended);
    // None: it still runs.
    [[nodiscard]] std::optional<DWORD> exitCode(DWORD limitMs) const;
    // What it has printed so far, on both streams.
    [[nodiscard]] std::string output() const;
    // Whether `text` is printed, so often, within the time.
    [[nodiscard]] bool prints(std::string_view text, DWORD limitMs, std::size_t times = 1) const;

private:
    TempFolder m_folder;
    UniqueHandle m_process;
    UniqueFile m_input;
};

}  // namespace orvane::test
