#include "harness/child.h"

#include <mutex>
#include <set>
#include <system_error>

#include "harness/waiting.h"

namespace orvane::test {
namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Sets variables of this process for as long as a child needs to inherit them.
class Environment {
public:
    explicit Environment(const std::map<std::wstring, std::wstring>& added) {
        for (const auto& [name, value] : added) {
            std::wstring old(32767, L'\0');
            old.resize(GetEnvironmentVariableW(name.c_str(), old.data(), 32767));
            m_old[name] = old;
            SetEnvironmentVariableW(name.c_str(), value.c_str());
        }
    }
    ~Environment() {
        for (const auto& [name, value] : m_old)
            SetEnvironmentVariableW(name.c_str(), value.empty() ? nullptr : value.c_str());
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    std::map<std::wstring, std::wstring> m_old;
};

// Guards the environment, the handles that are inheritable for a moment, and the jobs.
std::mutex s_starting;
std::set<HANDLE> s_jobs;

}  // namespace

std::size_t countOf(std::string_view text, std::string_view what) {
    std::size_t count = 0;
    for (auto at = text.find(what); at != text.npos; at = text.find(what, at + what.size()))
        ++count;
    return count;
}

Child::Child(const Start& start) : m_job(CreateJobObjectW(nullptr, nullptr)) {
    const std::lock_guard lock(s_starting);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(m_job.get(), JobObjectExtendedLimitInformation, &limits,
                            sizeof(limits));

    SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
    const std::filesystem::path file = openOutput(start.output);
    const UniqueFile output(CreateFileW(file.c_str(), FILE_APPEND_DATA, kShareAll, &inherited,
                                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    UniqueFile input;
    CreatePipe(input.put(), m_input.put(), &inherited, 0);
    SetHandleInformation(m_input.get(), HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = start.interactive ? 0 : STARTF_USESTDHANDLES;
    startup.hStdInput = input.get();
    startup.hStdOutput = startup.hStdError = output.get();

    const Environment environment(start.environment);
    std::wstring line = start.commandLine;
    PROCESS_INFORMATION started{};
    // Suspended until it is in the job: what it starts is then in it as well.
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE,
                        CREATE_SUSPENDED | (start.interactive ? 0 : CREATE_NO_WINDOW), nullptr,
                        start.folder.empty() ? nullptr : start.folder.c_str(), &startup, &started))
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(),
                                "CreateProcess");
    m_process.reset(started.hProcess);
    const UniqueHandle thread(started.hThread);
    AssignProcessToJobObject(m_job.get(), m_process.get());
    ResumeThread(thread.get());
    s_jobs.insert(m_job.get());
}

Child::~Child() {
    kill();
    const std::lock_guard lock(s_starting);
    s_jobs.erase(m_job.get());
}

std::filesystem::path Child::openOutput(const std::filesystem::path& wanted) {
    std::filesystem::path file = wanted;
    DWORD flags = FILE_ATTRIBUTE_NORMAL;
    if (wanted.empty()) {
        static unsigned number = 0;
        file = std::filesystem::temp_directory_path() /
               (L"OrVane output " + std::to_wstring(GetCurrentProcessId()) + L"-" +
                std::to_wstring(++number));
        flags = FILE_FLAG_DELETE_ON_CLOSE;
    }
    m_output.reset(
        CreateFileW(file.c_str(), GENERIC_READ, kShareAll, nullptr, CREATE_ALWAYS, flags, nullptr));
    return file;
}

void Child::tell(std::string line) const {
    line += '\n';
    DWORD written = 0;
    WriteFile(m_input.get(), line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
}

void Child::kill() {
    // Before Windows 8 a process in a job, as this one may be, cannot put its child into another.
    TerminateProcess(m_process.get(), kKilled);
    TerminateJobObject(m_job.get(), kKilled);
    WaitForSingleObject(m_process.get(), 10'000);
}

void Child::suspend(bool suspended) const {
    const char* const name = suspended ? "NtSuspendProcess" : "NtResumeProcess";
    const auto call = reinterpret_cast<LONG(WINAPI*)(HANDLE)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name)));
    if (call == nullptr || call(m_process.get()) != 0)
        throw std::runtime_error("a process cannot be suspended or resumed");
}

std::optional<DWORD> Child::exitCode(DWORD limitMs) const {
    DWORD code = 0;
    if (WaitForSingleObject(m_process.get(), limitMs) != WAIT_OBJECT_0 ||
        !GetExitCodeProcess(m_process.get(), &code))
        return std::nullopt;
    return code;
}

std::string Child::output() const {
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(m_output.get(), &size)) return {};
    std::string text(static_cast<std::size_t>(size.QuadPart), '\0');
    OVERLAPPED fromTheStart{};
    DWORD read = 0;
    if (!ReadFile(m_output.get(), text.data(), static_cast<DWORD>(text.size()), &read,
                  &fromTheStart))
        return {};
    text.resize(read);
    return text;
}

bool Child::prints(std::string_view text, DWORD limitMs, std::size_t times) const {
    return eventually([&] { return countOf(output(), text) >= times; }, limitMs);
}

void Child::killAll() {
    s_starting.lock();  // and never unlocked
    for (HANDLE const job : s_jobs) TerminateJobObject(job, kKilled);
    if (!s_jobs.empty()) Sleep(300);  // until what they had open is closed
}

}  // namespace orvane::test
