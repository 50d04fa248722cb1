#pragma once

#include <windows.h>

namespace orvane {

// A periodic timer. The message loop of the thread that starts it calls the callback. Start, stop
// and destroy it on that thread; the callback may do so, too. SetTimer.
class MessageTimer {
public:
    // `callback` gets `context` and must not throw.
    using Callback = void (*)(void* context);

    MessageTimer(Callback callback, void* context) noexcept
        : m_callback(callback), m_context(context) {}
    ~MessageTimer() { stop(); }
    MessageTimer(const MessageTimer&) = delete;
    MessageTimer& operator=(const MessageTimer&) = delete;

    // Calls back first after one period. Restarts a running timer. False when SetTimer fails.
    bool start(UINT periodMs) noexcept;
    void stop() noexcept;
    [[nodiscard]] bool isRunning() const noexcept { return m_id != 0; }

private:
    static void CALLBACK onTimer(HWND window, UINT message, UINT_PTR id, DWORD time);

    const Callback m_callback;
    void* const m_context;
    UINT_PTR m_id = 0;  // 0: not running
    DWORD m_thread = 0;
    MessageTimer* m_next = nullptr;
};

}  // namespace orvane
