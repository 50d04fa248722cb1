#include "platform/message_timer.h"

#include <utility>

#include "platform/host_call.h"
#include "platform/srw_lock.h"

namespace orvane {
namespace {

// Those that run. A message of one that has been stopped may still be in its thread's queue, so
// each is looked up.
SRWLOCK lock = SRWLOCK_INIT;
MessageTimer* running = nullptr;

}  // namespace

bool MessageTimer::start(UINT periodMs) noexcept {
    stop();
    const ExclusiveLock guard(lock);
    m_id = SetTimer(nullptr, 0, periodMs, &onTimer);
    if (m_id == 0) return false;
    m_thread = GetCurrentThreadId();
    m_next = std::exchange(running, this);
    return true;
}

void MessageTimer::stop() noexcept {
    if (m_id == 0) return;
    const ExclusiveLock guard(lock);
    KillTimer(nullptr, std::exchange(m_id, 0));
    MessageTimer** link = &running;
    while (*link != this) link = &(*link)->m_next;
    *link = m_next;
}

void CALLBACK MessageTimer::onTimer(HWND, UINT, UINT_PTR id, DWORD) {
    const HostCall call;
    Callback callback = nullptr;
    void* context = nullptr;
    {
        const ExclusiveLock guard(lock);
        const DWORD thread = GetCurrentThreadId();
        const MessageTimer* timer = running;
        while (timer != nullptr && (timer->m_id != id || timer->m_thread != thread))
            timer = timer->m_next;
        if (timer == nullptr) return;
        callback = timer->m_callback;
        context = timer->m_context;
    }
    callback(context);
}

}  // namespace orvane
