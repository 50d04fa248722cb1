#include "tests/support/process.h"

#include "tests/support/waiting.h"

namespace orvane::test {
namespace {

constexpr const wchar_t* kOutput = L"output.txt";

}  // namespace

std::size_t countOf(std::string_view text, std::string_view what) {
    std::size_t count = 0;
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string_view::npos;
         at += what.size())
        ++count;
    return count;
}

Process::Process(std::wstring commandLine) {
    SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
    UniqueFile input;
    CreatePipe(input.put(), m_input.put(), &inherited, 0);
    SetHandleInformation(m_input.get(), HANDLE_FLAG_INHERIT, 0);
    const UniqueFile printed(CreateFileW(m_folder.path(kOutput).c_str(), FILE_APPEND_DATA,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, CREATE_NEW,
                                         FILE_ATTRIBUTE_NORMAL, nullptr));
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

Process::~Process() {
    if (!exitCode(0)) kill();
}

void Process::tell(const std::string& line) {
    const std::string text = line + "\n";
    DWORD written = 0;
    WriteFile(m_input.get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

void Process::kill() {
    TerminateProcess(m_process.get(), 99);
    WaitForSingleObject(m_process.get(), 5000);
}

void Process::suspend(bool suspended) {
    const char* const name = suspended ? "NtSuspendProcess" : "NtResumeProcess";
    const auto call = reinterpret_cast<LONG(WINAPI*)(HANDLE)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name)));
    EXPECT_EQ(call(m_process.get()), 0);
}

std::optional<DWORD> Process::exitCode(DWORD limitMs) const {
    DWORD code = 0;
    if (WaitForSingleObject(m_process.get(), limitMs) != WAIT_OBJECT_0 ||
        !GetExitCodeProcess(m_process.get(), &code))
        return std::nullopt;
    return code;
}

std::string Process::output() const { return readText(m_folder.path(kOutput)); }

bool Process::prints(std::string_view text, DWORD limitMs, std::size_t times) const {
    return eventually([&] { return countOf(output(), text) >= times; }, limitMs);
}

}  // namespace orvane::test
