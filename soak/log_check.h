#pragma once

#include <windows.h>

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace orvane::soak {

// Reads on in the shared log and judges each line. A process that is killed may leave the line that
// it was writing cut short; all others are whole, and a logger's are all there, in order.
class LogCheck {
public:
    struct Tally {
        unsigned lines = 0;
        unsigned cut = 0;   // the beginning of a line and no more
        unsigned torn = 0;  // anything else that is no line
        unsigned lost = 0;  // of a logger's numbers
        std::string firstTorn;
    };

    // Starts with an empty log.
    LogCheck();
    // What has come since; while nobody writes.
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
