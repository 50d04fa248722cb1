#include "hooks/wmp_window_hook.h"

#include <optional>

#include "common/messages/player_name.h"

namespace orvane {
namespace {

constexpr const wchar_t* kPlayerCaption = L"Windows Media Player";
constexpr const wchar_t* kPlayerClass = L"WMPlayerApp";
constexpr int kSpecialModeMaxWidth = 366;
constexpr int kSpecialModeMaxHeight = 90;

struct WindowArea {
    int left, top, width, height;  // pixels, frame included
};

WindowArea toArea(const RECT& rect) {
    return {static_cast<int>(rect.left), static_cast<int>(rect.top),
            static_cast<int>(rect.right - rect.left), static_cast<int>(rect.bottom - rect.top)};
}

std::optional<WindowArea> areaOnScreen(HWND hwnd) {
    RECT rect{};
    if (!GetWindowRect(hwnd, &rect)) return std::nullopt;
    return toArea(rect);
}

// The restored window's area, while the window is neither maximised nor minimised.
std::optional<WindowArea> normalArea(HWND hwnd) {
    WINDOWPLACEMENT placement{};
    placement.length = sizeof(placement);
    if (!GetWindowPlacement(hwnd, &placement) || placement.showCmd != SW_SHOWNORMAL)
        return std::nullopt;
    return toArea(placement.rcNormalPosition);
}

}  // namespace

WmpWindowHook::WmpWindowHook(IOrvaneApplicationEvents* events) : m_events(events) {}

bool WmpWindowHook::InstallHook() {
    if (!WindowHook::InstallHook(kPlayerCaption, kPlayerClass, nullptr)) return false;
    m_inSpecialMode = isInSpecialMode();
    return true;
}

bool WmpWindowHook::isInSpecialMode() const {
    const auto area = normalArea(getHwnd());
    return area && area->width <= kSpecialModeMaxWidth && area->height <= kSpecialModeMaxHeight;
}

bool WmpWindowHook::OnMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM) {
    switch (message) {
        case WM_MOVE:
            // Minimising moves the window as well, to a place far off the screen.
            if (normalArea(hwnd)) {
                if (const auto area = areaOnScreen(hwnd))
                    m_events->playerMoved(playerName(), area->left, area->top, area->width,
                                          area->height);
            }
            break;
        case WM_SIZE:
            onSize(hwnd, wParam);
            break;
        case WM_ACTIVATE:
            // The high word tells whether the window is minimised.
            if (LOWORD(wParam) != WA_INACTIVE) m_events->playerActivated(playerName());
            break;
        case WM_SHOWWINDOW:
            if (wParam != 0)
                m_events->playerShown(playerName());
            else
                m_events->playerHidden(playerName());
            break;
        default:
            break;
    }
    return true;
}

void WmpWindowHook::onSize(HWND hwnd, WPARAM kind) {
    if (kind == SIZE_MINIMIZED) {
        m_events->playerMinimized(playerName());
        return;
    }
    if (kind != SIZE_MAXIMIZED && kind != SIZE_RESTORED) return;

    if (const auto area = areaOnScreen(hwnd)) {
        if (kind == SIZE_MAXIMIZED)
            m_events->playerMaximized(playerName(), area->left, area->top, area->width,
                                      area->height);
        else
            m_events->playerMoved(playerName(), area->left, area->top, area->width, area->height);
    }
    if (kind != SIZE_RESTORED) return;

    const bool inSpecialMode = isInSpecialMode();
    if (inSpecialMode == m_inSpecialMode) return;
    // First, as the call may let a further WM_SIZE in.
    m_inSpecialMode = inSpecialMode;
    m_events->playerInSpecialMode(playerName(), inSpecialMode);
}

}  // namespace orvane
