#pragma once

#include <windows.h>

#include <functional>

namespace orvane::test {

// Waits for something that another thread or process brings about; false after the time-out.
// `eventually` serves nothing meanwhile, `pumpUntil` dispatches this thread's messages.
bool eventually(const std::function<bool()>& holds, DWORD timeoutMs = 5000);
bool pumpUntil(const std::function<bool()>& holds, DWORD timeoutMs = 5000);

// Dispatches this thread's messages for so long.
void pumpFor(DWORD milliseconds);

}  // namespace orvane::test
