#include "standins/player/player.h"

#include <utility>

#include "standins/player/main_window.h"
#include "standins/player/model.h"
#include "standins/player/objects.h"
#include "standins/player/plugin_host.h"

namespace orvane::standin {

Player::Player(PlayerOptions options)
    : m_model(std::make_shared<Model>(std::move(options))),
      m_core(makeCore(m_model)),
      m_plugins(std::make_unique<PluginHost>(m_core)) {}

Player::~Player() {
    m_plugins->unloadAll();
    m_window.reset();
    m_model->close();
}

bool Player::openLibrary(std::string& error) {
    return m_model->locked([&] { return m_model->library.open(m_model->options, error); });
}

bool Player::createWindow() {
    m_window = std::make_unique<MainWindow>();
    return m_window->create(m_model->locked([&] { return m_model->options.language; }));
}

HWND Player::window() const { return m_window ? m_window->hwnd() : nullptr; }
MainWindow* Player::mainWindow() { return m_window.get(); }
IWMPCore* Player::core() const { return m_core; }
PluginHost& Player::plugins() { return *m_plugins; }

bool Player::pumpUntil(const std::function<bool()>& condition, unsigned milliseconds) {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    for (;;) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (message.message == WM_QUIT) {
                PostQuitMessage(static_cast<int>(message.wParam));
                return condition();
            }
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        if (condition()) return true;
        const ULONGLONG now = GetTickCount64();
        if (now >= end) return false;
        // A condition may come true without a message: look again soon.
        const ULONGLONG left = end - now;
        MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(left < 5 ? left : 5),
                                    QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    }
}

size_t Player::itemCount() const {
    return m_model->locked([&] { return m_model->library.tracks().size(); });
}

CComPtr<IWMPMedia> Player::item(size_t index) const {
    return m_model->locked([&]() -> CComPtr<IWMPMedia> {
        const TrackList& tracks = m_model->library.tracks();
        if (index >= tracks.size()) return {};
        return makeMedia(m_model, tracks[index]);
    });
}

std::wstring Player::itemPath(size_t index) const {
    return m_model->locked([&] {
        const TrackList& tracks = m_model->library.tracks();
        return index < tracks.size() ? tracks[index]->path : std::wstring();
    });
}

std::vector<std::wstring> Player::playlistNames() const {
    return m_model->locked([&] {
        std::vector<std::wstring> names;
        for (const PlaylistPtr& playlist : m_model->library.playlists())
            names.push_back(playlist->name);
        return names;
    });
}

std::vector<std::wstring> Player::playlistPaths(const std::wstring& name) const {
    return m_model->locked([&] {
        std::vector<std::wstring> paths;
        const auto found = m_model->library.playlistsNamed(name);
        if (found.empty()) return paths;
        for (const TrackPtr& track : *found.front()->items) paths.push_back(track->path);
        return paths;
    });
}

CComPtr<IWMPPlaylist> Player::playlist(const std::wstring& name) const {
    return m_model->locked([&]() -> CComPtr<IWMPPlaylist> {
        const auto found = m_model->library.playlistsNamed(name);
        if (found.empty()) return {};
        return makePlaylist(m_model, found.front());
    });
}

long Player::playState() const {
    return m_model->locked([&] { return static_cast<long>(m_model->playback.state()); });
}

size_t Player::sinkCount() const { return m_model->sinks.count(); }

unsigned long Player::callCount(const std::string& call) const { return m_model->callCount(call); }

void Player::change(const std::function<void(PlayerOptions&)>& edit) {
    m_model->locked([&] { edit(m_model->options); });
}

}  // namespace orvane::standin
