#include "check/report.h"

#include "standins/support/wide_text.h"

namespace orvane::check {
namespace {

void print(std::string_view text) {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    std::string lines;
    for (const char c : text) lines += c == '\n' ? std::string("\r\n") : std::string(1, c);
    const std::wstring wide = standin::toWide(lines);
    DWORD done = 0;
    // Not a console: somebody keeps it in a file.
    if (!WriteConsoleW(output, wide.data(), static_cast<DWORD>(wide.size()), &done, nullptr))
        WriteFile(output, lines.data(), static_cast<DWORD>(lines.size()), &done, nullptr);
}

}  // namespace

Report::Report(const std::filesystem::path& file)
    : m_file(CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                         FILE_ATTRIBUTE_NORMAL, nullptr)) {
    DWORD done = 0;
    WriteFile(m_file.get(), "\xEF\xBB\xBF", 3, &done, nullptr);
}

void Report::both(std::string_view line) {
    screen(line);
    file(line);
}

void Report::screen(std::string_view text, const char* end) const {
    print(std::string(text) + end);
}

void Report::file(std::string_view text, std::string_view indent) {
    std::string lines;
    do {
        const std::size_t end = text.find('\n');
        std::string line(text.substr(0, end));
        if (!line.empty() && line.back() == '\r') line.pop_back();
        for (const auto& [secret, standIn] : m_hidden)
            for (std::size_t at = 0; (at = line.find(secret, at)) != std::string::npos;)
                line.replace(at, secret.size(), standIn);
        lines.append(indent).append(line).append("\r\n");
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    } while (!text.empty());
    DWORD done = 0;
    WriteFile(m_file.get(), lines.data(), static_cast<DWORD>(lines.size()), &done, nullptr);
}

void Report::hide(const std::filesystem::path& secret, std::string standIn) {
    m_hidden.emplace_back(standin::toUtf8(secret.native()), std::move(standIn));
}

}  // namespace orvane::check
