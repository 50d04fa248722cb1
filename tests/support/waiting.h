#pragma once

#include <windows.h>

#include <functional>

namespace orvane::test {

// Waits for something that another thread or process brings about; false after the time-out.
// `eventually` serves nothing meanwhile, `pumpUntil` dispatches this thread's messages.
inline bool eventually(const std::function<bool()>& holds, DWORD timeoutMs = 5000) {
    const ULONGLONG end = GetTickCount64() + timeoutMs;
    for (; !holds(); Sleep(5)) {
        if (GetTickCount64() >= end) return false;
    }
    return true;
}
inline bool pumpUntil(const std::function<bool()>& holds, DWORD timeoutMs = 5000) {
    const ULONGLONG end = GetTickCount64() + timeoutMs;
    for (;; MsgWaitForMultipleObjectsEx(0, nullptr, 5, QS_ALLINPUT, MWMO_INPUTAVAILABLE)) {
        for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);)
            DispatchMessageW(&message);
        if (holds()) return true;
        if (GetTickCount64() >= end) return false;
    }
}

// Dispatches this thread's messages for so long.
inline void pumpFor(DWORD milliseconds) {
    pumpUntil([] { return false; }, milliseconds);
}

}  // namespace orvane::test
