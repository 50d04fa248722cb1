#include "tests/common/launcher/installed_app.h"

#include <fstream>

#include "tests/support/temp_folder.h"

namespace orvane::test {
namespace {

constexpr const wchar_t* kSettingsKey = L"Software\\OrVaneMedia\\Settings";
constexpr const char* kReportFile = "C:\\orvane-launcher-tests\\report.txt";

std::wstring testProgramFolder() {
    std::wstring path(1024, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), 1024));
    return path.substr(0, path.rfind(L'\\'));
}

}  // namespace

InstalledApp::InstalledApp() : m_leave(CreateEventW(nullptr, TRUE, FALSE, L"OrVaneTestAppLeave")) {
    wchar_t folder[512] = {};
    DWORD bytes = sizeof(folder) - sizeof(wchar_t);
    m_hadFolder = RegGetValueW(HKEY_LOCAL_MACHINE, kSettingsKey, L"Path", RRF_RT_REG_SZ, nullptr,
                               folder, &bytes) == ERROR_SUCCESS;
    m_oldFolder = folder;
    unregister();
    removeAll();
    makeFolder(root());
    SetEnvironmentVariableW(L"ORVANE_TEST_REPORT", L"C:\\orvane-launcher-tests\\report.txt");
    behave("0");
}

InstalledApp::~InstalledApp() {
    SetEvent(m_leave);
    CloseHandle(m_leave);
    if (m_hadFolder)
        registerFolder(m_oldFolder);
    else
        unregister();
    removeAll();
}

void InstalledApp::removeAll() {
    std::error_code ignored;
    std::filesystem::remove_all(openable(root()), ignored);
}

std::wstring InstalledApp::root() { return L"C:\\orvane-launcher-tests"; }

void InstalledApp::install(const std::wstring& folder) {
    installContent(folder, readText(testProgramFolder() + L"\\launched_app.exe"));
}

void InstalledApp::installContent(const std::wstring& folder, const std::string& content) {
    makeFolder(folder);
    writeFile(folder + L"\\OrVaneApp.exe", content);
}

void InstalledApp::registerFolder(const std::wstring& folder) {
    registerData(REG_SZ, folder.c_str(), static_cast<DWORD>((folder.size() + 1) * sizeof(wchar_t)));
}

void InstalledApp::registerData(DWORD type, const void* data, DWORD bytes) {
    ASSERT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, kSettingsKey, L"Path", type, data, bytes),
              ERROR_SUCCESS);
}

void InstalledApp::unregister() { RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kSettingsKey, L"Path"); }

void InstalledApp::behave(const char* exit) {
    DeleteFileA(kReportFile);
    SetEnvironmentVariableA("ORVANE_TEST_EXIT", exit);
}

std::wstring InstalledApp::commandLine() { return reportLine(0); }
std::wstring InstalledApp::workingDirectory() { return reportLine(1); }

std::wstring InstalledApp::reportLine(int index) {
    std::ifstream report(kReportFile, std::ios::binary);
    std::string line;
    for (int i = 0; i <= index; ++i) {
        if (!std::getline(report, line)) return {};
    }
    return wide(line);
}

}  // namespace orvane::test
