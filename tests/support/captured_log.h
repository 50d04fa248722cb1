#pragma once

#include <string>
#include <vector>

#include "util/log/log.h"

namespace orvane::test {

// Keeps what is logged during its life, at every priority, in place of whoever wrote it before.
// One at a time in a program; any thread may log. A line reads "<priority> message", with
// "<number>" for the texts of errno ("%m") and of the thread's last error ("%M").
class CapturedLog {
public:
    CapturedLog();
    ~CapturedLog();
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    // The lines since the last call; `take` gives them as one text, each with a line feed.
    std::vector<std::string> lines();
    std::string take();

    // Whether such a line is there; forgets nothing.
    [[nodiscard]] bool holds(const std::string& line) const;

private:
    const LogWriter m_oldWriter;
    const unsigned m_oldMask;
};

}  // namespace orvane::test
