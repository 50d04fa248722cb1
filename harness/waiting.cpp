#include "harness/waiting.h"

namespace orvane::test {

bool eventually(const std::function<bool()>& holds, DWORD timeoutMs) {
    const ULONGLONG end = GetTickCount64() + timeoutMs;
    for (; !holds(); Sleep(3)) {
        if (GetTickCount64() >= end) return false;
    }
    return true;
}

bool pumpUntil(const std::function<bool()>& holds, DWORD timeoutMs) {
    const ULONGLONG end = GetTickCount64() + timeoutMs;
    for (;; MsgWaitForMultipleObjectsEx(0, nullptr, 5, QS_ALLINPUT, MWMO_INPUTAVAILABLE)) {
        for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);)
            DispatchMessageW(&message);
        if (holds()) return true;
        if (GetTickCount64() >= end) return false;
    }
}

void pumpFor(DWORD milliseconds) {
    pumpUntil([] { return false; }, milliseconds);
}

}  // namespace orvane::test
