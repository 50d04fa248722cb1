#include "standins/player/script.h"

#include <windows.h>

#include <iterator>

#include "standins/player/com_support.h"
#include "standins/player/model.h"
#include "standins/player/objects.h"
#include "standins/player/player.h"
#include "standins/player/plugin_host.h"

namespace orvane::standin {

namespace {

std::string describeWindow(HWND window) {
    RECT r{};
    GetWindowRect(window, &r);
    return "window at " + std::to_string(r.left) + "," + std::to_string(r.top) + ", " +
           std::to_string(r.right - r.left) + " by " + std::to_string(r.bottom - r.top);
}

CComPtr<IWMPControls> controlsOf(Player& player) {
    CComPtr<IWMPControls> controls;
    player.core()->get_controls(&controls);
    return controls;
}

}  // namespace

bool Script::showWindow(int how) {
    ShowWindow(m_player.window(), how);
    m_report(describeWindow(m_player.window()) +
             (IsWindowVisible(m_player.window()) ? "" : ", hidden"));
    return true;
}

bool Script::moveWindow(const Arguments& arguments) {
    int numbers[4] = {};
    if (arguments.size() != std::size(numbers)) return false;
    for (size_t i = 0; i < std::size(numbers); ++i) {
        const bool negative = arguments[i].starts_with(L"-");
        unsigned number = 0;
        if (!readNumber(arguments[i].substr(negative ? 1 : 0), number)) return false;
        numbers[i] = negative ? -static_cast<int>(number) : static_cast<int>(number);
    }
    SetWindowPos(m_player.window(), nullptr, numbers[0], numbers[1], numbers[2], numbers[3],
                 SWP_NOZORDER | SWP_NOACTIVATE);
    m_report(describeWindow(m_player.window()));
    return true;
}

bool Script::shrinkWindow() {
    ShowWindow(m_player.window(), SW_SHOWNORMAL);
    return moveWindow({L"100", L"100", L"300", L"80"});
}

bool Script::restoreNormal() {
    ShowWindow(m_player.window(), SW_SHOWNORMAL);
    return moveWindow({L"100", L"100", L"800", L"600"});
}

bool Script::activate() {
    // An active window is not told again that it is: give the place away first.
    if (GetActiveWindow() == m_player.window()) SetForegroundWindow(GetDesktopWindow());
    SetForegroundWindow(m_player.window());
    SetActiveWindow(m_player.window());
    m_report(GetActiveWindow() == m_player.window() ? "window active" : "window not active");
    return true;
}

bool Script::play(const Arguments& arguments) {
    if (arguments.size() > 1) return false;
    if (!arguments.empty()) {
        unsigned index = 0;
        std::wstring path = arguments.front();
        if (readNumber(path, index)) {
            if (index >= m_player.itemCount()) return false;
            path = m_player.itemPath(index);
        }
        const HRESULT opened = m_player.core()->put_URL(CComBSTR(path.c_str()));
        m_report("open " + toUtf8(path) + ": " + describe(opened));
    }
    return control(L"play");
}

bool Script::control(const wchar_t* what) {
    const std::wstring name = what;
    const auto controls = controlsOf(m_player);
    HRESULT result = E_FAIL;
    if (controls) result = name == L"play" ? controls->play() : controls->stop();
    m_report(toUtf8(name) + ": " + describe(result));
    return true;
}

bool Script::setMode(const Arguments& arguments) {
    if (arguments.size() != 2 || (arguments[1] != L"on" && arguments[1] != L"off")) return false;
    CComPtr<IWMPSettings> settings;
    if (FAILED(m_player.core()->get_settings(&settings))) return false;
    const VARIANT_BOOL value = arguments[1] == L"on" ? VARIANT_TRUE : VARIANT_FALSE;
    const HRESULT result = settings->setMode(CComBSTR(arguments[0].c_str()), value);
    m_report("mode " + toUtf8(arguments[0]) + " " + toUtf8(arguments[1]) + ": " + describe(result));
    return true;
}

bool Script::sendMedia(const Arguments& arguments) {
    std::vector<CComPtr<IUnknown>> items;
    const auto add = [&](size_t index) { items.emplace_back(m_player.item(index).p); };
    for (const std::wstring& argument : arguments) {
        unsigned index = 0;
        if (argument == L"all") {
            for (size_t i = 0; i < m_player.itemCount(); ++i) add(i);
        } else if (readNumber(argument, index) && index < m_player.itemCount()) {
            add(index);
        } else {
            return false;
        }
    }
    m_report("send " + std::to_string(items.size()) + " item(s) to the plug-ins");
    m_player.plugins().send(PLUGIN_MISC_MEDIASENDTO, items);
    return true;
}

bool Script::sendPlaylists(const Arguments& arguments) {
    std::vector<CComPtr<IUnknown>> playlists;
    for (const std::wstring& name : arguments) {
        const auto playlist = m_player.playlist(name);
        if (!playlist) return false;
        playlists.emplace_back(playlist.p);
    }
    m_report("send " + std::to_string(playlists.size()) + " playlist(s) to the plug-ins");
    m_player.plugins().send(PLUGIN_MISC_PLAYLISTSENDTO, playlists);
    return true;
}

bool Script::printPlaylists() {
    const auto names = m_player.playlistNames();
    m_report("playlists: " + std::to_string(names.size()));
    for (const std::wstring& name : names) {
        const auto paths = m_player.playlistPaths(name);
        m_report("playlist " + toUtf8(name) + ": " + std::to_string(paths.size()) + " item(s)");
        for (const std::wstring& path : paths) m_report("  " + toUtf8(path));
    }
    return true;
}

bool Script::makeSecondObject() {
    m_player.plugins().makeSecond();
    return true;
}

bool Script::close() {
    PostMessageW(m_player.window(), WM_CLOSE, 0, 0);
    return true;
}

bool Script::exit(const Arguments& arguments) {
    unsigned code = 0;
    if (arguments.size() > 1 || (arguments.size() == 1 && !readNumber(arguments[0], code)))
        return false;
    m_report("leaving at once");
    ExitProcess(code);
}

}  // namespace orvane::standin
