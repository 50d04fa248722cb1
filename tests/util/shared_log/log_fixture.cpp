#include "tests/util/shared_log/log_fixture.h"

#include <windows.h>

#include <regex>
#include <sstream>

#include "util/log/log.h"
#include "util/shared_log/shared_log.h"

namespace orvane::test {
namespace {

constexpr const wchar_t* kShellFolders =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
constexpr const wchar_t* kValue = L"Common AppData";
constexpr const wchar_t* kKept = L"Common AppData before OrVane's tests";

std::wstring readValue(HKEY key, const wchar_t* name) {
    wchar_t text[1024] = {};
    DWORD size = sizeof text - sizeof(wchar_t);
    if (RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(text), &size) !=
        ERROR_SUCCESS) {
        return {};
    }
    return text;
}

void writeValue(HKEY key, const wchar_t* name, const std::wstring& text) {
    EXPECT_EQ(RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                             static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))),
              ERROR_SUCCESS);
}

}  // namespace

AppDataFolder::AppDataFolder() {
    EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, kShellFolders, 0, KEY_QUERY_VALUE | KEY_SET_VALUE,
                            m_key.put()),
              ERROR_SUCCESS);
    if (readValue(m_key.get(), kKept).empty()) {
        writeValue(m_key.get(), kKept, readValue(m_key.get(), kValue));
    }
}

AppDataFolder::~AppDataFolder() {
    writeValue(m_key.get(), kValue, readValue(m_key.get(), kKept));
    RegDeleteValueW(m_key.get(), kKept);
}

void AppDataFolder::set(const std::string& folder) {
    writeValue(m_key.get(), kValue, wide(folder));
}

void AppDataFolder::remove() { RegDeleteValueW(m_key.get(), kValue); }

LogTest::LogTest() : m_base(m_folder / "ProgramData") {
    m_appData.set(m_base);
    setlogmask(0xFF);
}

LogTest::~LogTest() {
    closelog();
    setlogmask(0xFF);
}

std::vector<std::string> LogTest::lines() const {
    std::vector<std::string> result;
    std::istringstream text(content());
    for (std::string line; std::getline(text, line);) result.push_back(line);
    return result;
}

std::string afterTime(const std::string& line) {
    static const std::regex form(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d : ([^\r\n]*))");
    std::smatch match;
    return std::regex_match(line, match, form) ? match[1].str() : "(no line: " + line + ")";
}

LogWriter::LogWriter(const std::string& arguments) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const UniqueFile output(CreateFileW(m_folder.path(L"out").c_str(), FILE_APPEND_DATA,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, CREATE_NEW,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = output.get();
    startup.hStdError = output.get();
    wchar_t self[MAX_PATH];
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    std::wstring program(self);
    program.replace(program.find_last_of(L'\\') + 1, std::wstring::npos, L"util_log_writer.exe");
    std::wstring command = L"\"" + program + L"\" " + wide(arguments);
    PROCESS_INFORMATION process{};
    EXPECT_NE(CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                             &startup, &process),
              0);
    CloseHandle(process.hThread);
    m_process.reset(process.hProcess);
}

int LogWriter::wait() {
    EXPECT_EQ(WaitForSingleObject(m_process.get(), 60000), DWORD{WAIT_OBJECT_0});
    DWORD code = 99;
    EXPECT_NE(GetExitCodeProcess(m_process.get(), &code), 0);
    return static_cast<int>(code);
}

std::string LogWriter::printed() const { return readText(m_folder.path(L"out")); }

}  // namespace orvane::test
