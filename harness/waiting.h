#pragma once

#include <windows.h>

#include <functional>

namespace orvane::test {

// Waits until `holds` returns true; false after the time-out. pumpUntil dispatches this thread's
// messages meanwhile, eventually does not.
bool eventually(const std::function<bool()>& holds, DWORD timeoutMs = 5000);
bool pumpUntil(const std::function<bool()>& holds, DWORD timeoutMs = 5000);

// Dispatches this thread's messages for that time.
void pumpFor(DWORD milliseconds);

}  // namespace orvane::test
