#pragma once

#include <windows.h>

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace orvane::soak {

// Checks the lines of the shared log. A killed process may leave the line that it was writing
// incomplete. All other lines must be whole, and each logger's lines must be complete and in order.
class LogCheck {
public:
    struct Tally {
        unsigned lines = 0;
        unsigned cut = 0;   // only the beginning of a line
        unsigned torn = 0;  // anything else that is not a line
        unsigned lost = 0;  // missing numbers of a logger's lines
        std::string firstTorn;
    };

    // Starts with an empty log.
    LogCheck();
    // Checks the lines since the last call. No process may write meanwhile.
    Tally readOn();

private:
    enum class Kind { whole, cut, torn };
    Kind judge(std::string_view line, Tally& tally);
    Kind judgeLogger(std::string_view text, Tally& tally);

    std::wstring m_file;
    std::uint64_t m_read = 0;
    std::map<unsigned, unsigned> m_next;  // by logger: the number of its next line
};

}  // namespace orvane::soak
