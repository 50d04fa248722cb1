#include "packaging/check/child.h"

#include <fstream>
#include <iterator>
#include <mutex>

namespace orvane::check {
namespace {

constexpr DWORD kNeverStarted = 0xFFFFFFFF;

// Sets variables of ours for as long as a child needs to inherit them.
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

std::mutex s_starting;
HANDLE s_running = nullptr;  // the last child's job

}  // namespace

Child::Child(const Start& start) : m_job(CreateJobObjectW(nullptr, nullptr)) {
    const std::lock_guard lock(s_starting);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(m_job.get(), JobObjectExtendedLimitInformation, &limits,
                            sizeof(limits));

    SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
    UniqueFile input;
    CreatePipe(input.put(), m_input.put(), &inherited, 0);
    SetHandleInformation(m_input.get(), HANDLE_FLAG_INHERIT, 0);
    const UniqueFile output(CreateFileW(start.output.c_str(), FILE_APPEND_DATA,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.get();
    startup.hStdOutput = startup.hStdError = output.get();
    const Environment environment(start.environment);
    std::wstring line = start.commandLine;
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE,
                        CREATE_SUSPENDED | CREATE_NO_WINDOW, nullptr, start.folder.c_str(),
                        &startup, &started)) {
        error = GetLastError();
        return;
    }
    m_process.reset(started.hProcess);
    const UniqueHandle thread(started.hThread);
    AssignProcessToJobObject(m_job.get(), m_process.get());
    ResumeThread(thread.get());
    s_running = m_job.get();
}

Child::~Child() {
    end();
    const std::lock_guard lock(s_starting);
    s_running = nullptr;
}

void Child::endAll() {
    s_starting.lock();  // and never unlocked
    if (s_running == nullptr) return;
    TerminateJobObject(s_running, 99);
    Sleep(300);  // until what they had open is closed
}

std::optional<DWORD> Child::exitCode(DWORD limitMs) const {
    if (!m_process) return kNeverStarted;
    DWORD code = 0;
    if (WaitForSingleObject(m_process.get(), limitMs) != WAIT_OBJECT_0 ||
        !GetExitCodeProcess(m_process.get(), &code))
        return std::nullopt;
    return code;
}

void Child::tell(std::string line) const {
    line += '\n';
    DWORD written = 0;
    WriteFile(m_input.get(), line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
}

void Child::end() {
    TerminateJobObject(m_job.get(), 99);
    if (m_process) WaitForSingleObject(m_process.get(), 5000);
}

void removeFolder(const std::filesystem::path& folder) {
    const std::wstring name = L"\\\\?\\" + folder.native();
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW((name + L"\\*").c_str(), &found);
    for (BOOL more = search != INVALID_HANDLE_VALUE; more; more = FindNextFileW(search, &found)) {
        const std::filesystem::path child = folder / found.cFileName;
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            const std::wstring file = L"\\\\?\\" + child.native();
            SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL);
            DeleteFileW(file.c_str());
        } else if (child.filename() != L"." && child.filename() != L"..") {
            removeFolder(child);
        }
    }
    if (search != INVALID_HANDLE_VALUE) FindClose(search);
    RemoveDirectoryW(name.c_str());
}

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace orvane::check
