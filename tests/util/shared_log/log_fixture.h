#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "harness/files.h"
#include "tests/support/saved_value.h"
#include "util/log/log.h"
#include "util/shared_log/shared_log.h"

namespace orvane::test {

// A log of the test's own, in a folder that does not exist yet.
class LogTest : public testing::Test {
protected:
    LogTest() { m_appData.set(wide(m_base)); }
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
    SavedValue m_appData{L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
                         L"Common AppData"};  // the all-users application data
    const std::string m_base = m_folder / "ProgramData";
    const std::filesystem::path m_file = wide(m_base + "\\OrVaneMedia\\OrVane.log");
};

}  // namespace orvane::test
