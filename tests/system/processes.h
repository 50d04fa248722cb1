#pragma once

// The real programs as processes, and what shows how they fare.

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/common/link/pipe_fixtures.h"

namespace orvane::test {

inline std::size_t countOf(std::string_view text, std::string_view what) {
    std::size_t count = 0;
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string_view::npos;
         at += what.size())
        ++count;
    return count;
}

// A program of those beside the test's own. What it prints goes to a file.
class Process {
public:
    Process(std::wstring commandLine, std::filesystem::path output) : m_output(std::move(output)) {
        SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
        UniqueFile input;
        CreatePipe(input.put(), m_input.put(), &inherited, 0);
        SetHandleInformation(m_input.get(), HANDLE_FLAG_INHERIT, 0);
        const UniqueFile printed(CreateFileW(m_output.c_str(), GENERIC_WRITE,
                                             FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                                             CREATE_ALWAYS, 0, nullptr));
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = input.get();
        startup.hStdOutput = startup.hStdError = printed.get();
        PROCESS_INFORMATION started{};
        EXPECT_TRUE(CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                   nullptr, &startup, &started))
            << "error " << GetLastError();
        m_process.reset(started.hProcess);
        CloseHandle(started.hThread);
    }
    ~Process() {
        if (!exitCode(0)) kill();
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    // A line for its standard input.
    void tell(const std::string& line) {
        const std::string text = line + "\n";
        DWORD written = 0;
        WriteFile(m_input.get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
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
    [[nodiscard]] std::string output() const {
        std::ifstream file(m_output, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    // Whether `text` is printed, so often, within the time.
    [[nodiscard]] bool prints(std::string_view text, DWORD limitMs, std::size_t times = 1) const {
        return eventually([&] { return countOf(output(), text) >= times; }, limitMs);
    }

private:
    std::filesystem::path m_output;
    UniqueHandle m_process;
    UniqueFile m_input;
};

// Asks a window every 50 ms whether its thread still answers.
class StallMeter {
public:
    explicit StallMeter(HWND window) : m_thread([this, window] { run(window); }) {}
    ~StallMeter() { stop(); }
    StallMeter(const StallMeter&) = delete;
    StallMeter& operator=(const StallMeter&) = delete;

    // How long each answer took, in ms; 10,000 stands for none at all.
    std::vector<unsigned> stop() {
        m_stop = true;
        if (m_thread.joinable()) m_thread.join();
        return m_answers;
    }

private:
    void run(HWND window) {
        constexpr unsigned limitMs = 10'000;
        for (; !m_stop; Sleep(50)) {
            DWORD_PTR answer = 0;
            const ULONGLONG begin = GetTickCount64();
            const bool answered =
                SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, limitMs, &answer) != 0;
            m_answers.push_back(answered ? static_cast<unsigned>(GetTickCount64() - begin)
                                         : limitMs);
        }
    }

    std::vector<unsigned> m_answers;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

// A stranger that serves the event pipe in the application's place, again and again.
class Squatter {
public:
    enum class Way { neverReads, writesGarbage, closesAtOnce };

    explicit Squatter(Way way) : m_thread([this, way] { run(way); }) {}
    ~Squatter() {
        // It may be waiting for a client: one comes from here.
        for (m_stop = true; !m_stopped; Sleep(10))
            const UniqueFile client(CreateFileW(L"\\\\.\\pipe\\IpcOrvaneEventPipe", GENERIC_READ, 0,
                                                nullptr, OPEN_EXISTING, 0, nullptr));
        m_thread.join();
    }
    Squatter(const Squatter&) = delete;
    Squatter& operator=(const Squatter&) = delete;

    [[nodiscard]] unsigned clients() const { return m_clients; }

private:
    void run(Way way) {
        RawServer server("IpcOrvaneEventPipe");
        for (; !m_stop; server.reopen()) {
            if (!server.accept() || m_stop) continue;
            ++m_clients;
            // Until the client has gone.
            while (way != Way::closesAtOnce && !m_stop &&
                   PeekNamedPipe(server.get(), nullptr, 0, nullptr, nullptr, nullptr) != FALSE) {
                Sleep(5);
                if (way == Way::writesGarbage) server.write(Bytes(4001, 0x9E));
            }
        }
        server.close();
        m_stopped = true;
    }

    std::atomic<unsigned> m_clients{0};
    std::atomic<bool> m_stop{false};
    std::atomic<bool> m_stopped{false};
    std::thread m_thread;
};

}  // namespace orvane::test
