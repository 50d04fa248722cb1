#pragma once

#include <string>
#include <vector>

namespace orvane::test {

// A log that keeps its messages for the test, in place of the file: programs that link this have no
// other. A message is "<priority> text"; "%M" in it reads as "<the thread's last error>".
using LogMessage = std::string;

// Messages since the last call, all priorities.
std::vector<LogMessage> takeLog();

}  // namespace orvane::test
