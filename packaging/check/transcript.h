#pragma once

#include <windows.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace orvane::check {

// What the stand-in application writes while its script runs.
class Transcript {
public:
    explicit Transcript(std::filesystem::path file) : m_file(std::move(file)) {}

    // Reads along until the script has its result. `said` gets the text of each line that the
    // script means for us (its word "say"). Answers what is wrong: the application never started,
    // or was not done in time.
    [[nodiscard]] std::string follow(DWORD limitMs,
                                     const std::function<void(const std::string&)>& said);
    [[nodiscard]] const std::string& text() const { return m_text; }

private:
    std::filesystem::path m_file;
    std::string m_text;
};

// The titles of a script's steps.
[[nodiscard]] std::vector<std::string> stepsIn(const std::string& script);

}  // namespace orvane::check
