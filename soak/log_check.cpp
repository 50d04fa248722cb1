#include "soak/log_check.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <fstream>

#include "standins/support/wide_text.h"
#include "util/shared_log/log_file.h"

namespace orvane::soak {
namespace {

constexpr std::string_view kStart = "0000-00-00 00:00:00 : <0> ";  // 0: any digit

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Takes a number off the front; false when there is none.
bool takeNumber(std::string_view& text, unsigned& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

bool take(std::string_view& text, std::string_view what) {
    if (!text.starts_with(what)) return false;
    text.remove_prefix(what.size());
    return true;
}

}  // namespace

LogCheck::LogCheck() {
    const OwnedText folder = get_log_file_path();
    const OwnedText name = folder ? get_log_file_name(folder.get()) : nullptr;
    if (name) m_file = standin::toWide(name.get());
    DeleteFileW(m_file.c_str());
}

LogCheck::Tally LogCheck::readOn() {
    Tally tally;
    std::ifstream file(std::filesystem::path(m_file), std::ios::binary);
    file.seekg(static_cast<std::streamoff>(m_read));
    for (std::string line; std::getline(file, line);) {
        m_read += line.size() + (file.eof() ? 0 : 1);
        if (line.empty()) continue;  // what ends a killed process's line, when that had its own end
        ++tally.lines;
        const Kind kind = judge(line, tally);
        if (kind == Kind::cut) ++tally.cut;
        if (kind == Kind::torn && tally.torn++ == 0) tally.firstTorn = line.substr(0, 300);
    }
    return tally;
}

LogCheck::Kind LogCheck::judge(std::string_view line, Tally& tally) {
    const std::size_t known = std::min(line.size(), kStart.size());
    for (std::size_t i = 0; i < known; ++i)
        if (kStart[i] == '0' ? !isDigit(line[i]) : line[i] != kStart[i]) return Kind::torn;
    if (line.size() <= kStart.size()) return Kind::cut;
    line.remove_prefix(kStart.size());

    constexpr std::array<std::string_view, 4> kIdents = {"soak_logger : [", "orvane_soak_app : [",
                                                         "OrVaneWmpPlugin : [", "unknown : "};
    const auto* const ident = std::find_if(kIdents.begin(), kIdents.end(), [&](auto candidate) {
        return line.substr(0, candidate.size()) == candidate.substr(0, line.size());
    });
    if (ident == kIdents.end()) return Kind::torn;
    if (line.size() <= ident->size()) return Kind::cut;
    line.remove_prefix(ident->size());
    if (ident->back() == '[') {
        unsigned process = 0;
        if (!takeNumber(line, process)) return Kind::torn;
        if (line.size() < 3)
            return std::string_view("] ").starts_with(line) ? Kind::cut : Kind::torn;
        if (!take(line, "] ")) return Kind::torn;
    }
    if (ident == kIdents.begin()) return judgeLogger(line, tally);
    // Somebody else's line within this one.
    return line.find(" : <") == std::string_view::npos ? Kind::whole : Kind::torn;
}

// "NUMBER LINE aaaa."
LogCheck::Kind LogCheck::judgeLogger(std::string_view text, Tally& tally) {
    unsigned number = 0;
    unsigned line = 0;
    if (!takeNumber(text, number)) return Kind::torn;
    if (text.empty()) return Kind::cut;
    if (!take(text, " ")) return Kind::torn;
    if (text.empty()) return Kind::cut;
    if (!takeNumber(text, line)) return Kind::torn;
    if (text.empty()) return Kind::cut;
    if (!take(text, " ")) return Kind::torn;
    const char filler = static_cast<char>('a' + number % 26);
    const std::size_t length = std::min(text.find_first_not_of(filler), text.size());
    if (length == text.size()) return Kind::cut;
    if (text.substr(length) != ".") return Kind::torn;
    unsigned& next = m_next[number];
    if (line != next) ++tally.lost;
    next = line + 1;
    return Kind::whole;
}

}  // namespace orvane::soak
