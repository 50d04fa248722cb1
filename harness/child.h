#pragma once

#include <windows.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/handles.h"

namespace orvane::test {

// How often `what` occurs in `text`.
[[nodiscard]] std::size_t countOf(std::string_view text, std::string_view what);

// A child process without a console window, in a job object together with all processes that it
// starts. The job is killed by the destructor, and when this process ends in any way. One thread at
// a time may use an object; any thread may create one.
class Child {
public:
    struct Start {
        std::wstring commandLine;
        std::filesystem::path folder{};  // the working directory; empty: that of this process
        // The file for standard output and standard error; it is overwritten and kept. Empty: a
        // temporary file that is deleted with the object. "NUL" drops the output.
        std::filesystem::path output{};
        std::map<std::wstring, std::wstring> environment{};  // added to that of this process
        bool interactive = false;  // uses this process's console and streams instead of `output`
    };
    // Throws std::system_error with the Windows error when it does not start. CreateProcess.
    explicit Child(const Start& start);
    explicit Child(const wchar_t* commandLine) : Child(Start{commandLine}) {}
    explicit Child(const std::wstring& commandLine) : Child(Start{commandLine}) {}
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    // Writes a line to its standard input.
    void tell(std::string line) const;
    // Kills the job and waits for its end. The exit code is kKilled.
    void kill();
    // Suspends or resumes its threads, but not those of its children. NtSuspendProcess.
    void suspend(bool suspended) const;
    // Waits for its end; none when it still runs after `limitMs` milliseconds.
    [[nodiscard]] std::optional<DWORD> exitCode(DWORD limitMs) const;
    // Its output so far.
    [[nodiscard]] std::string output() const;
    // Waits until it has printed `text` `times` times; false after `limitMs` milliseconds.
    [[nodiscard]] bool prints(std::string_view text, DWORD limitMs, std::size_t times = 1) const;

    // Kills every child of this process. Afterwards, starting or destroying a child blocks for
    // ever: call this only in a console control handler that then ends the process.
    static void killAll();

    static constexpr DWORD kKilled = 99;

private:
    std::filesystem::path openOutput(const std::filesystem::path& wanted);

    UniqueHandle m_job;
    UniqueHandle m_process;
    UniqueFile m_input;
    UniqueFile m_output;
};

}  // namespace orvane::test
