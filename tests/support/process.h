#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

#include "platform/handles.h"
#include "tests/support/temp_folder.h"
#include "tests/support/waiting.h"

namespace orvane::test {

// How often `what` stands in `text`.
inline std::size_t countOf(std::string_view text, std::string_view what) {
    std::size_t count = 0;
    for (auto at = text.find(what); at != text.npos; at = text.find(what, at + what.size()))
        ++count;
    return count;
}

// Another program, found beside the test's own, which ends with this object at the latest.
class Process {
public:
    // A program that does not start fails the test.
    explicit Process(std::wstring commandLine) {
        SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
        UniqueFile input;
        CreatePipe(input.put(), m_input.put(), &inherited, 0);
        SetHandleInformation(m_input.get(), HANDLE_FLAG_INHERIT, 0);
        const UniqueFile printed(CreateFileW(m_output.c_str(), FILE_APPEND_DATA,
                                             FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                                             CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = input.get();
        startup.hStdOutput = startup.hStdError = printed.get();
        PROCESS_INFORMATION started{};
        EXPECT_TRUE(CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                   nullptr, &startup, &started))
            << "error " << GetLastError();
        const UniqueHandle thread(started.hThread);
        m_process.reset(started.hProcess);
    }
    ~Process() {
        if (!exitCode(0)) kill();
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // A line for its standard input.
    void tell(const std::string& line) {
        DWORD written = 0;
        const std::string whole = line + "\n";
        WriteFile(m_input.get(), whole.data(), static_cast<DWORD>(whole.size()), &written, nullptr);
    }
    // It has ended then.
    void kill() {
        TerminateProcess(m_process.get(), 99);
        WaitForSingleObject(m_process.get(), 5000);
    }
    // All its threads.
    void suspend(bool suspended) {
        const char* const name = suspended ? "NtSuspendProcess" : "NtResumeProcess";
        const auto call = reinterpret_cast<LONG(WINAPI*)(HANDLE)>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name)));
        EXPECT_EQ(call(m_process.get()), 0);
    }
    // None: it still runs.
    [[nodiscard]] std::optional<DWORD> exitCode(DWORD limitMs) const {
        DWORD code = 0;
        if (WaitForSingleObject(m_process.get(), limitMs) != WAIT_OBJECT_0 ||
            !GetExitCodeProcess(m_process.get(), &code))
            return std::nullopt;
        return code;
    }
    // What it has printed so far, on both streams.
    [[nodiscard]] std::string output() const { return readText(m_output); }
    // Whether `text` is printed, so often, within the time.
    [[nodiscard]] bool prints(std::string_view text, DWORD limitMs, std::size_t times = 1) const {
        return eventually([&] { return countOf(output(), text) >= times; }, limitMs);
    }

private:
    const TempFolder m_folder;
    const std::filesystem::path m_output = m_folder.path(L"output.txt");
    UniqueHandle m_process;
    UniqueFile m_input;
};

}  // namespace orvane::test
