#include "packaging/check/transcript.h"

#include <sstream>

#include "packaging/check/child.h"

namespace orvane::check {
namespace {

constexpr DWORD kStartLimitMs = 60'000;
constexpr std::size_t kTimeLength = 12;  // "08:00:00.000"

}  // namespace

std::string Transcript::follow(DWORD limitMs, const std::function<void(const std::string&)>& said) {
    const ULONGLONG begin = GetTickCount64();
    for (std::size_t at = 0;; Sleep(10)) {
        m_text = contentOf(m_file);
        for (std::size_t end = 0; (end = m_text.find('\n', at)) != std::string::npos;
             at = end + 1) {
            const std::string line = m_text.substr(at, end - at);
            if (line.find("  result: ") != std::string::npos) return {};
            const std::size_t text = line.find_first_not_of(' ', kTimeLength);
            if (text != std::string::npos) said(line.substr(text));
        }
        const ULONGLONG gone = GetTickCount64() - begin;
        if (m_text.empty() && gone > kStartLimitMs)
            return "the plug-in did not start the application within a minute\n";
        if (gone > limitMs)
            return "the application was not done after " + std::to_string(limitMs / 1000) +
                   " seconds\n";
    }
}

std::vector<std::string> stepsIn(const std::string& script) {
    std::vector<std::string> titles;
    std::istringstream lines(script);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.starts_with("step ")) titles.push_back(line.substr(5));
    }
    return titles;
}

}  // namespace orvane::check
