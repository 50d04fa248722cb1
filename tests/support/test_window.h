#pragma once

#include <windows.h>

#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace orvane::test {

// A hidden top-level window of a class and procedure of its own, for one test on one thread.
class TestWindow {
public:
    using Handler = std::function<std::optional<LRESULT>(UINT, WPARAM, LPARAM)>;

    explicit TestWindow(std::wstring className = L"OrVaneTestWindow",
                        const wchar_t* caption = L"Test window")
        : m_className(std::move(className)) {
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = &proc;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.lpszClassName = m_className.c_str();
        RegisterClassW(&windowClass);
        m_hwnd = CreateWindowExW(0, m_className.c_str(), caption, WS_OVERLAPPEDWINDOW, 100, 100,
                                 800, 600, nullptr, nullptr, windowClass.hInstance, nullptr);
        SetWindowLongPtrW(m_hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    }
    ~TestWindow() {
        destroy();
        UnregisterClassW(m_className.c_str(), GetModuleHandleW(nullptr));
    }
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;

    // Sees each message first; what it answers is the window procedure's result.
    Handler onMessage;

    [[nodiscard]] HWND hwnd() const { return m_hwnd; }
    [[nodiscard]] bool hasOwnProcedure() const {
        return reinterpret_cast<WNDPROC>(GetWindowLongW(m_hwnd, GWL_WNDPROC)) == &proc;
    }
    void destroy() {
        if (m_hwnd != nullptr) DestroyWindow(std::exchange(m_hwnd, nullptr));
    }
    LRESULT send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
        return SendMessageW(m_hwnd, message, wParam, lParam);
    }

private:
    static LRESULT CALLBACK proc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
        auto* const self = reinterpret_cast<TestWindow*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
        if (self != nullptr && self->onMessage) {
            if (const auto answer = self->onMessage(message, wParam, lParam)) return *answer;
        }
        return DefWindowProcW(hwnd, message, wParam, lParam);
    }

    std::wstring m_className;
    HWND m_hwnd = nullptr;
};

// A window that answers one message, and how often that reached it.
class AnsweringWindow : public TestWindow {
public:
    static constexpr UINT kMessage = WM_APP + 1;

    explicit AnsweringWindow(LRESULT answer = 42) {
        onMessage = [this, answer](UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
            if (message != kMessage) return std::nullopt;
            ++reached;
            if (inside) inside();
            return answer;
        };
    }

    std::atomic<int> reached{0};
    std::function<void()> inside;
};

}  // namespace orvane::test
