#include "platform/waiting.h"

#include <objbase.h>

#include <optional>

namespace orvane {
namespace {

bool inSingleThreadedApartment() {
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    return SUCCEEDED(CoGetApartmentType(&type, &qualifier)) &&
           (type == APTTYPE_STA || type == APTTYPE_MAINSTA);
}

// Asking for a message lets the ones sent by other threads in first; none is taken off the queue.
void serveSentMessages() {
    MSG message;
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
}

WaitOutcome waitServingSentMessages(HANDLE handle, const Deadline& deadline) {
    for (;;) {
        const DWORD result = MsgWaitForMultipleObjectsEx(1, &handle, deadline.remaining(),
                                                         QS_SENDMESSAGE, MWMO_INPUTAVAILABLE);
        if (result == WAIT_OBJECT_0) return WaitOutcome::signalled;
        if (result == WAIT_TIMEOUT) return WaitOutcome::timedOut;
        if (result != WAIT_OBJECT_0 + 1) return WaitOutcome::failed;
        serveSentMessages();
    }
}

}  // namespace

WaitOutcome waitServingCalls(HANDLE handle, DWORD timeoutMs) {
    const Deadline deadline(timeoutMs);
    if (inSingleThreadedApartment()) {
        DWORD index = 0;
        const HRESULT result = CoWaitForMultipleHandles(0, timeoutMs, 1, &handle, &index);
        if (result == S_OK) return WaitOutcome::signalled;
        if (result == RPC_S_CALLPENDING) return WaitOutcome::timedOut;
        // COM refuses to wait inside some of its own calls; sent messages can be served there too.
    }
    return waitServingSentMessages(handle, deadline);
}

DWORD waitDispatchingMessages(std::span<const HANDLE> handles, DWORD timeoutMs) {
    const Deadline deadline(timeoutMs);
    const DWORD count = static_cast<DWORD>(handles.size());
    std::optional<int> quit;
    for (;;) {
        const DWORD result = MsgWaitForMultipleObjectsEx(
            count, handles.data(), deadline.remaining(), QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        if (result != WAIT_OBJECT_0 + count) {
            if (quit) PostQuitMessage(*quit);
            return result;
        }
        // One message at a time: a flood of them must not keep the handles from being looked at.
        MSG message;
        if (!PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) continue;
        if (message.message == WM_QUIT) {
            quit = static_cast<int>(message.wParam);
            continue;
        }
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

}  // namespace orvane
