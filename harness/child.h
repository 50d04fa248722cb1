#pragma once

#include <windows.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/handles.h"

namespace orvane::test {

// How often `what` stands in `text`.
[[nodiscard]] std::size_t countOf(std::string_view text, std::string_view what);

// A process without a window of the console's, and all processes that it starts, in a job object:
// they end with this object at the latest, and with this process however it ends. Used by one
// thread at a time; any thread may start one.
class Child {
public:
    struct Start {
        std::wstring commandLine;
        std::filesystem::path folder{};  // where it starts; empty: where this process is
        // What it prints on both streams; made anew and kept. Empty: a file of its own in the
        // user's folder for temporary files, deleted with the object. "NUL" drops it.
        std::filesystem::path output{};
        std::map<std::wstring, std::wstring> environment{};  // added to ours
        bool interactive = false;  // has this process's console and streams in place of `output`
    };
    // Throws std::system_error with the system's number when it does not start. CreateProcess.
    explicit Child(const Start& start);
    explicit Child(const wchar_t* commandLine) : Child(Start{commandLine}) {}
    explicit Child(const std::wstring& commandLine) : Child(Start{commandLine}) {}
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    // A line for its standard input.
    void tell(std::string line) const;
    // Ends it and all that it has started; they have ended then. Its exit code is kKilled.
    void kill();
    // Stops or resumes all its threads, but not those of what it has started. NtSuspendProcess.
    void suspend(bool suspended) const;
    // None when it still runs after that time.
    [[nodiscard]] std::optional<DWORD> exitCode(DWORD limitMs) const;
    // What it has printed so far.
    [[nodiscard]] std::string output() const;
    // Whether `text` is printed, so often, within the time.
    [[nodiscard]] bool prints(std::string_view text, DWORD limitMs, std::size_t times = 1) const;

    // Ends every child of this process, for good: whoever starts another one, or destroys one,
    // waits for ever. For a handler of the console's that ends this process afterwards.
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
