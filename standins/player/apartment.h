#pragma once

// The player's own thread as seen from others: calls handed to it, work queued for it, and work
// that it does later. Served by that thread's message loop through a hidden window.

#include <windows.h>

#include <deque>
#include <functional>
#include <map>
#include <mutex>

namespace orvane::standin {

class Apartment {
public:
    // Belongs to the constructing thread, which also destroys it.
    Apartment();
    ~Apartment();
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;

    [[nodiscard]] bool isOwnThread() const { return GetCurrentThreadId() == m_thread; }

    // Runs `call` on the player's thread and waits, without limit, as a call into another apartment
    // does. RPC_E_DISCONNECTED once the window is gone.
    HRESULT run(const std::function<HRESULT()>& call);

    // Queues work for the message loop, in order; any thread. Dropped once the window is gone.
    void post(std::function<void()> work);
    // The same, no sooner than so many milliseconds from now.
    void postLater(unsigned milliseconds, std::function<void()> work);

    // Ends service: whatever is queued is dropped, calls from others fail. Own thread only.
    void close();

private:
    static LRESULT CALLBACK windowProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
    void serveQueue();
    void serveTimers();
    void armTimer();
    [[nodiscard]] HWND window() const;

    const DWORD m_thread = GetCurrentThreadId();
    mutable std::mutex m_mutex;  // guards what follows; never held while work runs
    HWND m_window = nullptr;
    std::deque<std::function<void()>> m_queue;
    std::multimap<ULONGLONG, std::function<void()>> m_timers;  // by due tick
};

}  // namespace orvane::standin
