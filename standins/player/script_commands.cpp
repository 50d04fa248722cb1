#include "standins/player/script.h"

#include <windows.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "standins/player/com_support.h"
#include "standins/player/media_object.h"
#include "standins/player/model.h"
#include "standins/player/player.h"
#include "standins/player/playlist_object.h"
#include "standins/player/plugin_host.h"

namespace orvane::standin {

namespace {

constexpr unsigned kStatePollMs = 10;
constexpr unsigned kStateWaitMs = 5000;

// A VARIANT that clears itself.
class Value {
public:
    Value() { VariantInit(&m_value); }
    ~Value() { VariantClear(&m_value); }
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;
    VARIANT& get() { return m_value; }

private:
    VARIANT m_value;
};

std::string describeWindow(HWND window) {
    RECT r{};
    GetWindowRect(window, &r);
    return "window at " + std::to_string(r.left) + "," + std::to_string(r.top) + ", " +
           std::to_string(r.right - r.left) + " by " + std::to_string(r.bottom - r.top);
}

ComRef<IWMPControls> controlsOf(Player& player) {
    ComRef<IWMPControls> controls;
    player.core()->get_controls(controls.put());
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
        const HRESULT opened = m_player.core()->put_URL(Text(path).get());
        m_report("open " + toUtf8(path) + ": " + describe(opened));
    }
    return control(L"play");
}

bool Script::control(const wchar_t* what) {
    const std::wstring name = what;
    const auto controls = controlsOf(m_player);
    HRESULT result = E_FAIL;
    if (controls)
        result = name == L"play"    ? controls->play()
                 : name == L"pause" ? controls->pause()
                                    : controls->stop();
    m_report(toUtf8(name) + ": " + describe(result));
    return true;
}

bool Script::setMode(const Arguments& arguments) {
    if (arguments.size() != 2 || (arguments[1] != L"on" && arguments[1] != L"off")) return false;
    ComRef<IWMPSettings> settings;
    if (FAILED(m_player.core()->get_settings(settings.put()))) return false;
    const VARIANT_BOOL value = arguments[1] == L"on" ? VARIANT_TRUE : VARIANT_FALSE;
    const HRESULT result = settings->setMode(Text(arguments[0]).get(), value);
    m_report("mode " + toUtf8(arguments[0]) + " " + toUtf8(arguments[1]) + ": " + describe(result));
    return true;
}

bool Script::setOption(const Arguments& arguments) {
    bool parsed = !arguments.empty();
    std::string error;
    m_player.change([&](PlayerOptions& options) {
        PlayerOptions changed = options;
        parsed = parsed && parseOptions(arguments, changed, error);
        if (parsed) options = std::move(changed);
    });
    if (!error.empty()) m_report(error);
    return parsed;
}

bool Script::waitState(const Arguments& arguments) {
    long state = 0;
    unsigned limit = kStateWaitMs;
    if (arguments.empty() || arguments.size() > 2 || !readState(arguments[0], state) ||
        (arguments.size() == 2 && !readNumber(arguments[1], limit)))
        return false;
    m_waiting = true;
    lookForState(state, GetTickCount64() + limit);
    return true;
}

void Script::lookForState(long state, unsigned long long deadline) {
    const bool reached = m_player.playState() == state;
    if (!reached && GetTickCount64() < deadline) {
        m_player.model().apartment.postLater(
            kStatePollMs, [this, state, deadline] { lookForState(state, deadline); });
        return;
    }
    if (!reached) {
        ++m_failures;
        m_report("play state " + nameOfPlayState(state) + " not reached");
    }
    m_player.model().apartment.post([this] { carryOn(); });
}

bool Script::sendMedia(const Arguments& arguments) {
    std::vector<ComRef<IUnknown>> items;
    const auto add = [&](size_t index) { items.push_back(m_player.item(index).query<IUnknown>()); };
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
    Value value;
    if (!makeObjectArray(items, value.get())) return false;
    m_report("send " + std::to_string(items.size()) + " item(s) to the plug-ins");
    m_player.plugins().sendProperty(PLUGIN_MISC_MEDIASENDTO, value.get());
    return true;
}

bool Script::sendPlaylists(const Arguments& arguments) {
    std::vector<ComRef<IUnknown>> playlists;
    for (const std::wstring& name : arguments) {
        const auto playlist = m_player.playlist(name);
        if (!playlist) return false;
        playlists.push_back(playlist.query<IUnknown>());
    }
    Value value;
    if (!makeObjectArray(playlists, value.get())) return false;
    m_report("send " + std::to_string(playlists.size()) + " playlist(s) to the plug-ins");
    m_player.plugins().sendProperty(PLUGIN_MISC_PLAYLISTSENDTO, value.get());
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
