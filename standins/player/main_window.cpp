#include "standins/player/main_window.h"

namespace orvane::standin {

namespace {

constexpr const wchar_t* kClassName = L"WMPlayerApp";

}  // namespace

const std::map<std::wstring, const wchar_t*>& captions() {
    static const std::map<std::wstring, const wchar_t*> texts = {
        {L"en", L"Windows Media Player"},
        {L"fr", L"Lecteur Windows Media"},
        {L"es", L"Reproductor de Windows Media"},
        {L"legacy", L"Windows Media Player Legacy"}};
    return texts;
}

bool MainWindow::create(const std::wstring& language) {
    const auto caption = captions().find(language);
    if (caption == captions().end()) return false;
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.lpfnWndProc = windowProc;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
    windowClass.lpszClassName = kClassName;
    RegisterClassExW(&windowClass);  // fails harmlessly for the second window of a process
    m_hwnd = CreateWindowExW(0, kClassName, caption->second, WS_OVERLAPPEDWINDOW, 100, 100, 800,
                             600, nullptr, nullptr, windowClass.hInstance, nullptr);
    if (m_hwnd == nullptr) return false;
    SetWindowLongPtrW(m_hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    return true;
}

MainWindow::~MainWindow() {
    if (m_hwnd == nullptr) return;
    SetWindowLongPtrW(m_hwnd, GWLP_USERDATA, 0);
    DestroyWindow(m_hwnd);
}

LRESULT CALLBACK MainWindow::windowProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* self = reinterpret_cast<MainWindow*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
    if (self != nullptr) {
        if (message == WM_CLOSE && self->onClose) {
            self->onClose();
            return 0;
        }
        if (message == WM_NCDESTROY) self->m_hwnd = nullptr;
    }
    return DefWindowProcW(hwnd, message, wParam, lParam);
}

}  // namespace orvane::standin
