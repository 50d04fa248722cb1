#pragma once

// A log that keeps its messages for the test, in place of the file: programs that link this have no
// other. "%M" reads as "<the thread's last error>", "%m" as "<errno>".

#include <string>
#include <vector>

namespace orvane::test {

struct LogMessage {
    int priority;
    std::string text;
    bool operator==(const LogMessage&) const = default;
};

void PrintTo(const LogMessage& message, std::ostream* out);

// Messages since the last call, all priorities.
std::vector<LogMessage> takeLog();

}  // namespace orvane::test
