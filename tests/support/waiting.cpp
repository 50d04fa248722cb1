#include "tests/support/waiting.h"

namespace orvane::test {
namespace {

void dispatchMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

}  // namespace

bool eventually(const std::function<bool()>& holds, DWORD timeoutMs) {
    const ULONGLONG end = GetTickCount64() + timeoutMs;
    for (; !holds(); Sleep(5)) {
        if (GetTickCount64() >= end) return false;
    }
    return true;
}

bool pumpUntil(const std::function<bool()>& holds, DWORD timeoutMs) {
    const ULONGLONG end = GetTickCount64() + timeoutMs;
    for (;;) {
        dispatchMessages();
        if (holds()) return true;
        if (GetTickCount64() >= end) return false;
        MsgWaitForMultipleObjectsEx(0, nullptr, 5, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    }
}

void pumpFor(DWORD milliseconds) {
    pumpUntil([] { return false; }, milliseconds);
}

}  // namespace orvane::test
