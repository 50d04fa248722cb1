#pragma once

#include <windows.h>

#include <deque>
#include <functional>
#include <memory>
#include <vector>

#include "platform/handles.h"

namespace orvane {

// Runs tasks on the thread that created it, through a message-only window. Any thread may post.
// Each task is one posted message, so the thread handles its other messages in between. Tasks also
// run while the thread waits in waitServingCalls(). Messages are posted, not sent, because COM
// refuses outgoing calls during a sent message. CreateWindowExW with HWND_MESSAGE, PostMessageW.
class MessageWindow : public std::enable_shared_from_this<MessageWindow> {
    struct Key {};  // makes the constructor callable by create() only

public:
    // Must not throw.
    using Task = std::function<void()>;

    // Call it on the thread that is to run the tasks. Null on failure, with the reason in
    // GetLastError(). May throw std::bad_alloc.
    [[nodiscard]] static std::shared_ptr<MessageWindow> create();

    explicit MessageWindow(Key);
    ~MessageWindow() { close(); }
    MessageWindow(const MessageWindow&) = delete;
    MessageWindow& operator=(const MessageWindow&) = delete;

    // Any thread. False when the window is closed, its thread has ended or PostMessageW fails; the
    // task does not run then.
    bool post(Task task) noexcept;

    // Runs `task` on the window's thread and waits for its end without a time-out, dispatching the
    // calling thread's messages. False when it threw, or when it did not run because the window was
    // closed or its thread ended. On the window's thread it runs at once.
    bool run(const std::function<void()>& task) noexcept;

    // Destroys the window and drops the waiting tasks. A task may call it. The window's thread
    // only.
    void close() noexcept;

    [[nodiscard]] bool isOwnThread() const noexcept { return GetCurrentThreadId() == m_thread; }

    // For waitServingCalls(): while one exists, a new task for a window of the calling thread also
    // signals the window's taskEvent().
    class Waiting {
    public:
        Waiting();
        ~Waiting();
        Waiting(const Waiting&) = delete;
        Waiting& operator=(const Waiting&) = delete;
        // The windows of the calling thread.
        [[nodiscard]] const std::vector<std::shared_ptr<MessageWindow>>& windows() const {
            return m_windows;
        }

    private:
        std::vector<std::shared_ptr<MessageWindow>> m_windows;
    };
    // The window's thread only, as is runNext().
    [[nodiscard]] HANDLE taskEvent() const noexcept { return m_taskEvent.get(); }
    void runNext();

private:
    static LRESULT CALLBACK onMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);

    const DWORD m_thread;
    const UniqueHandle m_threadHandle;
    const UniqueHandle m_taskEvent;  // auto-reset
    SRWLOCK m_lock = SRWLOCK_INIT;   // guards what follows
    HWND m_hwnd = nullptr;
    std::deque<Task> m_tasks;
    int m_waits = 0;                  // of the window's thread
    UniqueHandle m_spareDone;         // an event that a run() has used
    MessageWindow* m_next = nullptr;  // in the list of all that are open
};

}  // namespace orvane
