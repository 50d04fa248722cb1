#pragma once

#include <windows.h>

#include <deque>
#include <functional>
#include <memory>

namespace orvane {

// Runs tasks on the thread that made it: a message-only window, to which any thread posts. Each
// task is one posted message, so the thread's other messages get their turn in between.
// CreateWindowExW with HWND_MESSAGE, PostMessageW.
class MessageWindow : public std::enable_shared_from_this<MessageWindow> {
    struct Key {};  // only create() makes one

public:
    // Must not throw.
    using Task = std::function<void()>;

    // On the thread that is to run the tasks. Null when the system refuses, with the reason in
    // GetLastError(). std::bad_alloc.
    [[nodiscard]] static std::shared_ptr<MessageWindow> create();

    explicit MessageWindow(Key) noexcept : m_thread(GetCurrentThreadId()) {}
    ~MessageWindow() { close(); }
    MessageWindow(const MessageWindow&) = delete;
    MessageWindow& operator=(const MessageWindow&) = delete;

    // Any thread. False when the window is closed, its thread has ended or the system refuses; the
    // task does not run then.
    bool post(Task task) noexcept;

    // Destroys the window, also from inside a task. What waits is dropped and nothing runs any
    // more. Own thread.
    void close() noexcept;

    [[nodiscard]] bool isOwnThread() const noexcept { return GetCurrentThreadId() == m_thread; }

private:
    static LRESULT CALLBACK onMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
    void runNext();

    const DWORD m_thread;
    SRWLOCK m_lock = SRWLOCK_INIT;  // guards what follows
    HWND m_hwnd = nullptr;
    std::deque<Task> m_tasks;
};

}  // namespace orvane
