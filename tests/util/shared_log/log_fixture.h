#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "tests/support/temp_folder.h"
#include "util/log/log.h"
#include "util/shared_log/shared_log.h"

namespace orvane::test {

// Points the all-users application data elsewhere while it lives; what was there comes back, also
// after a run that was cut short.
class AppDataFolder {
public:
    AppDataFolder() {
        if (read(kKept).empty()) write(kKept, read(kValue));
    }
    ~AppDataFolder() {
        write(kValue, read(kKept));
        RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kKey, kKept);
    }
    AppDataFolder(const AppDataFolder&) = delete;
    AppDataFolder& operator=(const AppDataFolder&) = delete;

    void set(const std::string& folder) { write(kValue, wide(folder)); }
    void remove() { RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kKey, kValue); }

private:
    static std::wstring read(const wchar_t* name) {
        wchar_t text[1024] = {};
        DWORD size = sizeof text;
        RegGetValueW(HKEY_LOCAL_MACHINE, kKey, name, RRF_RT_REG_SZ, nullptr, text, &size);
        return text;
    }
    static void write(const wchar_t* name, const std::wstring& text) {
        EXPECT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, kKey, name, REG_SZ, text.c_str(),
                                  static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))),
                  ERROR_SUCCESS);
    }

    static constexpr const wchar_t* kKey =
        L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
    static constexpr const wchar_t* kValue = L"Common AppData";
    static constexpr const wchar_t* kKept = L"Common AppData before OrVane's tests";
};

// A log of the test's own, in a folder that does not exist yet.
class LogTest : public testing::Test {
protected:
    LogTest() { m_appData.set(m_base); }
    ~LogTest() override {
        closelog();
        setlogmask(0xFF);
    }

    [[nodiscard]] std::string content() const { return readText(m_file); }
    [[nodiscard]] std::vector<std::string> lines() const {
        std::vector<std::string> result;
        std::istringstream text(content());
        for (std::string line; std::getline(text, line);) result.push_back(line);
        return result;
    }

    TempFolder m_folder;
    AppDataFolder m_appData;
    const std::string m_base = m_folder / "ProgramData";
    const std::filesystem::path m_file = wide(m_base + "\\OrVaneMedia\\OrVane.log");
};

}  // namespace orvane::test
