#pragma once

#include <windows.h>

#include <string>

namespace orvane::test {

// An installation of the application for one test: folders below one of its own, and the registry
// value that names the folder. What was in the registry before comes back in the end.
class InstalledApp {
public:
    InstalledApp();
    ~InstalledApp();
    InstalledApp(const InstalledApp&) = delete;
    InstalledApp& operator=(const InstalledApp&) = delete;

    // The folder that all of it lies in, such as "C:\orvane-launcher-tests".
    [[nodiscard]] static std::wstring root();

    // Makes the folder (a plain absolute path of any length) with the program in it.
    void install(const std::wstring& folder);
    // The same with any other content as the program.
    void installContent(const std::wstring& folder, const std::string& content);

    // Sets the value that names the folder, or takes it away.
    void registerFolder(const std::wstring& folder);
    void registerData(DWORD type, const void* data, DWORD bytes);
    void unregister();

    // What the program does when it is started: an exit code, or "stay" until the test ends.
    void behave(const char* exit);
    // The command line and the working directory of the last start; empty when there was none.
    [[nodiscard]] static std::wstring commandLine();
    [[nodiscard]] static std::wstring workingDirectory();

private:
    static void removeAll();
    [[nodiscard]] static std::wstring reportLine(int index);

    std::wstring m_oldFolder;
    bool m_hadFolder = false;
    HANDLE m_leave;
};

}  // namespace orvane::test
