#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/handles.h"
#include "tests/support/temp_folder.h"

namespace orvane::test {

// Points the all-users application data at `folder` while it lives; what was there comes back, also
// after a run that was cut short.
class AppDataFolder {
public:
    AppDataFolder();
    ~AppDataFolder();
    AppDataFolder(const AppDataFolder&) = delete;
    AppDataFolder& operator=(const AppDataFolder&) = delete;

    void set(const std::string& folder);
    void remove();

private:
    UniqueRegKey m_key;
};

// A log of the test's own, in a folder that does not exist yet.
class LogTest : public testing::Test {
protected:
    LogTest();
    ~LogTest() override;

    [[nodiscard]] std::string directory() const { return m_base + "\\OrVaneMedia"; }
    [[nodiscard]] std::string file() const { return directory() + "\\OrVane.log"; }
    [[nodiscard]] std::string content() const { return readText(wide(file())); }
    [[nodiscard]] std::vector<std::string> lines() const;

    TempFolder m_folder;
    AppDataFolder m_appData;
    std::string m_base;
};

// The line without its time, which is checked for form.
[[nodiscard]] std::string afterTime(const std::string& line);

// Another process, util_log_writer, and what it prints.
class LogWriter {
public:
    explicit LogWriter(const std::string& arguments);

    // The exit code once it has ended; fails the test when that takes long.
    [[nodiscard]] int wait();
    [[nodiscard]] std::string printed() const;  // on both streams, after `wait`

private:
    TempFolder m_folder;
    UniqueHandle m_process;
};

}  // namespace orvane::test
