#include "platform/waiting.h"

#include <objbase.h>

#include <optional>
#include <vector>

#include "platform/message_window.h"

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

// What MsgWaitForMultipleObjectsEx answers, with sent messages served.
DWORD waitServingSentMessages(std::span<const HANDLE> handles, const Deadline& deadline) {
    const auto count = static_cast<DWORD>(handles.size());
    for (;;) {
        const DWORD result = MsgWaitForMultipleObjectsEx(
            count, handles.data(), deadline.remaining(), QS_SENDMESSAGE, MWMO_INPUTAVAILABLE);
        if (result != WAIT_OBJECT_0 + count) return result;
        serveSentMessages();
    }
}

// The same, with COM calls served where there can be some.
DWORD waitServing(std::span<const HANDLE> handles, const Deadline& deadline) {
    if (inSingleThreadedApartment()) {
        DWORD index = 0;
        const HRESULT result =
            CoWaitForMultipleHandles(0, deadline.remaining(), static_cast<ULONG>(handles.size()),
                                     const_cast<HANDLE*>(handles.data()), &index);
        if (result == S_OK) return WAIT_OBJECT_0 + index;
        if (result == RPC_S_CALLPENDING) return WAIT_TIMEOUT;
        // COM refuses to wait inside some of its own calls; sent messages can be served there too.
    }
    return waitServingSentMessages(handles, deadline);
}

}  // namespace

WaitOutcome waitServingCalls(HANDLE handle, DWORD timeoutMs) {
    const Deadline deadline(timeoutMs);
    const MessageWindow::Waiting waiting;
    std::vector<HANDLE> handles{handle};
    for (const auto& window : waiting.windows()) handles.push_back(window->taskEvent());
    for (;;) {
        const DWORD result = waitServing(handles, deadline);
        if (result == WAIT_OBJECT_0) return WaitOutcome::signalled;
        if (result == WAIT_TIMEOUT) return WaitOutcome::timedOut;
        if (result >= WAIT_OBJECT_0 + handles.size()) return WaitOutcome::failed;
        waiting.windows()[result - WAIT_OBJECT_0 - 1]->runNext();
    }
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
