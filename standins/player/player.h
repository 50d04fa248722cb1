#pragma once

// The stand-in player as a whole: one per process at a time, on the thread that constructs it (its
// user-interface thread), in or out of a program of its own. That thread must have COM initialised
// as a single-threaded apartment and must pump messages: events, delayed state changes and, with
// `serveOnOwnThread`, calls from other threads are all served by its message loop.

#include <wmp.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "standins/player/com_support.h"
#include "standins/player/player_options.h"

namespace orvane::standin {

class MainWindow;
class Model;
class PluginHost;

class Player {
public:
    explicit Player(PlayerOptions options);
    // Lets the plug-ins go, closes the window, drops all sinks. Objects still held elsewhere stay
    // valid and answer RPC_E_DISCONNECTED.
    ~Player();
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    // Reads the library folder; false with a sentence when it cannot be read.
    bool openLibrary(std::string& error);

    // The main window, class "WMPlayerApp", hidden; optional in tests that need none.
    bool createWindow();
    [[nodiscard]] HWND window() const;  // null when there is none
    MainWindow* mainWindow();           // null when there is none

    [[nodiscard]] IWMPCore* core() const;  // not counted; valid while the player is
    PluginHost& plugins();

    // Dispatches messages until the condition holds (then true), or for that long.
    bool pumpUntil(const std::function<bool()>& condition, unsigned milliseconds);

    // Library and playlists as they are now; any thread.
    [[nodiscard]] size_t itemCount() const;
    [[nodiscard]] CComPtr<IWMPMedia> item(size_t index) const;  // empty when out of range
    [[nodiscard]] std::wstring itemPath(size_t index) const;
    [[nodiscard]] std::vector<std::wstring> playlistNames() const;
    [[nodiscard]] std::vector<std::wstring> playlistPaths(const std::wstring& name) const;
    [[nodiscard]] CComPtr<IWMPPlaylist> playlist(const std::wstring& name) const;

    // Any thread.
    [[nodiscard]] long playState() const;
    [[nodiscard]] size_t sinkCount() const;
    // How often a call was made, as "IWMPMediaCollection::getAll"; of all calls with no name.
    [[nodiscard]] unsigned long callCount(const std::string& call = {}) const;
    // Changes the options that can change while it runs (all but library and program).
    void change(const std::function<void(PlayerOptions&)>& edit);

    Model& model() { return *m_model; }

private:
    std::shared_ptr<Model> m_model;
    CComPtr<IWMPCore> m_core;
    std::unique_ptr<PluginHost> m_plugins;
    std::unique_ptr<MainWindow> m_window;
};

// COM on the constructing thread, as a single-threaded apartment, left again on destruction.
class ComApartment {
public:
    ComApartment() : m_result(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
    ~ComApartment() {
        if (SUCCEEDED(m_result)) CoUninitialize();
    }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;

private:
    HRESULT m_result;
};

}  // namespace orvane::standin
