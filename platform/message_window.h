#pragma once

#include <windows.h>

#include <deque>
#include <functional>
#include <memory>
#include <vector>

#include "platform/handles.h"

namespace orvane {

// Runs tasks on the thread that made it: a message-only window, to which any thread posts. Each
// task is one posted message, so the thread's other messages get their turn in between; the tasks
// also run while that thread waits in waitServingCalls(). Posted and not sent: in a sent message
// COM refuses calls out of the apartment. CreateWindowExW with HWND_MESSAGE, PostMessageW.
class MessageWindow : public std::enable_shared_from_this<MessageWindow> {
    struct Key {};  // only create() makes one

public:
    // Must not throw.
    using Task = std::function<void()>;

    // On the thread that is to run the tasks. Null when the system refuses, with the reason in
    // GetLastError(). std::bad_alloc.
    [[nodiscard]] static std::shared_ptr<MessageWindow> create();

    explicit MessageWindow(Key);
    ~MessageWindow() { close(); }
    MessageWindow(const MessageWindow&) = delete;
    MessageWindow& operator=(const MessageWindow&) = delete;

    // Any thread. False when the window is closed, its thread has ended or the system refuses; the
    // task does not run then.
    bool post(Task task) noexcept;

    // Runs `task` on the window's thread and waits for its end, for as long as that takes, while
    // the calling thread's messages are dispatched. False when it did not run, because the window
    // was closed or its thread ended meanwhile, or when it threw. On the own thread it runs at
    // once.
    bool run(const std::function<void()>& task) noexcept;

    // Destroys the window, also from inside a task. What waits is dropped and nothing runs any
    // more. Own thread.
    void close() noexcept;

    [[nodiscard]] bool isOwnThread() const noexcept { return GetCurrentThreadId() == m_thread; }

    // While one lives, the calling thread waits and its windows' tasks signal an event of theirs as
    // well. For waitServingCalls().
    class Waiting {
    public:
        Waiting();
        ~Waiting();
        Waiting(const Waiting&) = delete;
        Waiting& operator=(const Waiting&) = delete;
        // Those of the calling thread.
        [[nodiscard]] const std::vector<std::shared_ptr<MessageWindow>>& windows() const {
            return m_windows;
        }

    private:
        std::vector<std::shared_ptr<MessageWindow>> m_windows;
    };
    // Own thread.
    [[nodiscard]] HANDLE taskEvent() const noexcept { return m_taskEvent.get(); }
    void runNext();

private:
    static LRESULT CALLBACK onMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);

    const DWORD m_thread;
    const UniqueHandle m_threadHandle;
    const UniqueHandle m_taskEvent;  // reset by the wait that it ends
    SRWLOCK m_lock = SRWLOCK_INIT;   // guards what follows
    HWND m_hwnd = nullptr;
    std::deque<Task> m_tasks;
    int m_waits = 0;                  // of the own thread
    UniqueHandle m_spareDone;         // an event that a run() has used
    MessageWindow* m_next = nullptr;  // in the list of all that are open
};

}  // namespace orvane
