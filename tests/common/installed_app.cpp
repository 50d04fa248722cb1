#include "tests/common/installed_app.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

namespace orvane::test {
namespace {

constexpr const wchar_t* settingsKey = L"Software\\OrVaneMedia\\Settings";
constexpr const char* reportFile = "C:\\orvane-launcher-tests\\report.txt";

std::wstring extended(const std::wstring& path) { return L"\\\\?\\" + path; }

void removeTree(const std::wstring& folder) {
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW((extended(folder) + L"\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return;
    do {
        const std::wstring name = found.cFileName;
        if (name == L"." || name == L"..") continue;
        const std::wstring path = folder + L"\\" + name;
        if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
            removeTree(path);
        else
            DeleteFileW(extended(path).c_str());
    } while (FindNextFileW(search, &found));
    FindClose(search);
    RemoveDirectoryW(extended(folder).c_str());
}

std::wstring testProgramFolder() {
    std::wstring path(1024, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), 1024));
    return path.substr(0, path.rfind(L'\\'));
}

}  // namespace

InstalledApp::InstalledApp() : m_leave(CreateEventW(nullptr, TRUE, FALSE, L"OrVaneTestAppLeave")) {
    wchar_t folder[512] = {};
    DWORD bytes = sizeof(folder) - sizeof(wchar_t);
    m_hadFolder = RegGetValueW(HKEY_LOCAL_MACHINE, settingsKey, L"Path", RRF_RT_REG_SZ, nullptr,
                               folder, &bytes) == ERROR_SUCCESS;
    m_oldFolder = folder;
    unregister();
    removeTree(root());
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
    removeTree(root());
}

std::wstring InstalledApp::root() { return L"C:\\orvane-launcher-tests"; }

void InstalledApp::makeFolder(const std::wstring& folder) {
    for (std::size_t end = folder.find(L'\\', 3); end != std::wstring::npos;
         end = folder.find(L'\\', end + 1))
        CreateDirectoryW(extended(folder.substr(0, end)).c_str(), nullptr);
    CreateDirectoryW(extended(folder).c_str(), nullptr);
}

void InstalledApp::install(const std::wstring& folder) {
    makeFolder(folder);
    ASSERT_TRUE(CopyFileW((testProgramFolder() + L"\\launched_app.exe").c_str(),
                          (extended(folder) + L"\\OrVaneApp.exe").c_str(), FALSE))
        << GetLastError();
}

void InstalledApp::installContent(const std::wstring& folder, const std::string& content) {
    makeFolder(folder);
    const HANDLE file = CreateFileW((extended(folder) + L"\\OrVaneApp.exe").c_str(), GENERIC_WRITE,
                                    0, nullptr, CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    DWORD written = 0;
    WriteFile(file, content.data(), static_cast<DWORD>(content.size()), &written, nullptr);
    CloseHandle(file);
}

void InstalledApp::registerFolder(const std::wstring& folder) {
    registerData(REG_SZ, folder.c_str(), static_cast<DWORD>((folder.size() + 1) * sizeof(wchar_t)));
}

void InstalledApp::registerData(DWORD type, const void* data, DWORD bytes) {
    ASSERT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, settingsKey, L"Path", type, data, bytes),
              ERROR_SUCCESS);
}

void InstalledApp::unregister() { RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, settingsKey, L"Path"); }

void InstalledApp::behave(const char* exit) {
    DeleteFileA(reportFile);
    SetEnvironmentVariableA("ORVANE_TEST_EXIT", exit);
}

std::wstring InstalledApp::commandLine() { return reportLine(0); }
std::wstring InstalledApp::workingDirectory() { return reportLine(1); }

std::wstring InstalledApp::reportLine(int index) {
    std::ifstream report(reportFile, std::ios::binary);
    std::string line;
    for (int i = 0; i <= index; ++i) {
        if (!std::getline(report, line)) return {};
    }
    std::wstring wide(line.size(), L'\0');
    wide.resize(static_cast<std::size_t>(
        MultiByteToWideChar(CP_UTF8, 0, line.data(), static_cast<int>(line.size()), wide.data(),
                            static_cast<int>(wide.size()))));
    return wide;
}

}  // namespace orvane::test
