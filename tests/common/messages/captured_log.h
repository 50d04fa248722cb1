#pragma once

#include <string>
#include <vector>

namespace orvane::test {

// A test program that has this in it logs here instead of into the shared log, at every priority.
// Each line reads "<priority> text". Taking the lines forgets them.
std::vector<std::string> takeLogLines();

// Whether a line is there that equals `line`; forgets nothing.
bool logHolds(const std::string& line);

}  // namespace orvane::test
