#pragma once

#include <windows.h>

#include <juce_core/juce_core.h>
#include <wmp.h>

#include <atomic>
#include <functional>
#include <memory>

#include "common/link/app_connector.h"
#include "common/messages/plugin_methods.h"
#include "hooks/wmp_window_hook.h"
#include "media/format_runtime.h"
#include "platform/atl/atlcom.h"
#include "platform/message_timer.h"
#include "platform/message_window.h"
#include "platform/wmp_plugin_ui.h"

namespace orvane {

// The class id that is registered with COM and with the player.
extern const CLSID CLSID_OrVaneWmpPlugin;

// The object that the player creates. It links the player to the application: FinalConstruct starts
// the application when it is not running, connects both pipes, hooks the player's main window and
// starts the reconnect timer, or fails as a whole.
//
// Threads: the object's own thread, the player's user-interface thread, creates it, calls SetCore
// and SetProperty and runs its timer. References are taken and given back, and events raised, on
// any thread that holds a reference. The object is always destroyed on its own thread: a last
// reference that is released on another thread is posted there as a message. When that thread never
// dispatches the message, the object is never destroyed. The command pipe's reader thread calls the
// operations of IOrvanePluginMethods (all but disconnectFromApp, which belongs to the object's
// thread), at any moment until the connector is gone; they reach the player through core() and the
// window through withWindowHook() only. An outer object that aggregates this one must release it on
// this object's thread.
//
// Errors: HRESULTs and booleans. Nothing throws out of here.
class COrVaneWmpPlugin : public CComObjectRootEx<CComMultiThreadModel>,
                         public CComCoClass<COrVaneWmpPlugin, &CLSID_OrVaneWmpPlugin>,
                         public IWMPEvents,
                         public IWMPPluginUI,
                         public IOrvanePluginMethods {
public:
    COrVaneWmpPlugin() = default;
    virtual ~COrVaneWmpPlugin();

    // Writes or removes the registry entries of the class; plugin/registration.h.
    static HRESULT WINAPI UpdateRegistry(BOOL registering);

    BEGIN_COM_MAP(COrVaneWmpPlugin)
    COM_INTERFACE_ENTRY(IWMPEvents)
    COM_INTERFACE_ENTRY(IWMPPluginUI)
    END_COM_MAP()

    // As DECLARE_PROTECT_FINAL_CONSTRUCT has it, but on the count alone: the reference that goes
    // after FinalConstruct is not the last one.
    void InternalFinalConstructAddRef() noexcept { InternalAddRef(); }
    void InternalFinalConstructRelease() noexcept { Root::InternalRelease(); }

    // What Release asks; 0 makes it delete the object. The last reference ends the object's work
    // first, while it is still whole and counted, so that the player may call in meanwhile.
    ULONG InternalRelease() noexcept;

    // S_OK, or E_FAIL after one log line with the reason.
    HRESULT FinalConstruct();
    // Ends the object's work, unless that is done already, as it is for whatever was created whole
    // and is not aggregated.
    void FinalRelease();

    // ---- IWMPPluginUI
    STDMETHOD(SetCore)(IWMPCore* core) override;
    STDMETHOD(Create)(HWND parent, HWND* window) override;
    STDMETHOD(Destroy)() override;
    STDMETHOD(DisplayPropertyPage)(HWND parent) override;
    // For "QueryDestroy" while a music file is being rewritten: a sentence for the user, in the
    // user's language (LoadStringW). E_NOTIMPL otherwise.
    STDMETHOD(GetProperty)(const WCHAR* name, VARIANT* value) override;
    STDMETHOD(SetProperty)(const WCHAR* name, const VARIANT* value) override;
    STDMETHOD(TranslateAccelerator)(MSG* message) override;

    // ---- IWMPEvents (wmp_plugin_events.cpp)
    STDMETHOD_(void, OpenStateChange)(LONG newState) override;
    STDMETHOD_(void, PlayStateChange)(LONG newState) override;
    STDMETHOD_(void, AudioLanguageChange)(LONG languageId) override;
    STDMETHOD_(void, StatusChange)() override;
    STDMETHOD_(void, ScriptCommand)(BSTR type, BSTR parameter) override;
    STDMETHOD_(void, NewStream)() override;
    STDMETHOD_(void, Disconnect)(LONG result) override;
    STDMETHOD_(void, Buffering)(VARIANT_BOOL start) override;
    STDMETHOD_(void, Error)() override;
    STDMETHOD_(void, Warning)(LONG type, LONG parameter, BSTR description) override;
    STDMETHOD_(void, EndOfStream)(LONG result) override;
    STDMETHOD_(void, PositionChange)(double oldPosition, double newPosition) override;
    STDMETHOD_(void, MarkerHit)(LONG marker) override;
    STDMETHOD_(void, DurationUnitChange)(LONG unit) override;
    STDMETHOD_(void, CdromMediaChange)(LONG drive) override;
    STDMETHOD_(void, PlaylistChange)
    (IDispatch* playlist, WMPPlaylistChangeEventType change) override;
    STDMETHOD_(void, CurrentPlaylistChange)(WMPPlaylistChangeEventType change) override;
    STDMETHOD_(void, CurrentPlaylistItemAvailable)(BSTR name) override;
    STDMETHOD_(void, MediaChange)(IDispatch* item) override;
    STDMETHOD_(void, CurrentMediaItemAvailable)(BSTR name) override;
    STDMETHOD_(void, CurrentItemChange)(IDispatch* media) override;
    STDMETHOD_(void, MediaCollectionChange)() override;
    STDMETHOD_(void, MediaCollectionAttributeStringAdded)(BSTR name, BSTR value) override;
    STDMETHOD_(void, MediaCollectionAttributeStringRemoved)(BSTR name, BSTR value) override;
    STDMETHOD_(void, MediaCollectionAttributeStringChanged)
    (BSTR name, BSTR oldValue, BSTR newValue) override;
    STDMETHOD_(void, PlaylistCollectionChange)() override;
    STDMETHOD_(void, PlaylistCollectionPlaylistAdded)(BSTR name) override;
    STDMETHOD_(void, PlaylistCollectionPlaylistRemoved)(BSTR name) override;
    STDMETHOD_(void, PlaylistCollectionPlaylistSetAsDeleted)
    (BSTR name, VARIANT_BOOL deleted) override;
    STDMETHOD_(void, ModeChange)(BSTR mode, VARIANT_BOOL value) override;
    STDMETHOD_(void, MediaError)(IDispatch* media) override;
    STDMETHOD_(void, OpenPlaylistSwitch)(IDispatch* item) override;
    STDMETHOD_(void, DomainChange)(BSTR domain) override;
    STDMETHOD_(void, SwitchedToPlayerApplication)() override;
    STDMETHOD_(void, SwitchedToControl)() override;
    STDMETHOD_(void, PlayerDockedStateChange)() override;
    STDMETHOD_(void, PlayerReconnect)() override;
    STDMETHOD_(void, Click)(short button, short shiftState, LONG x, LONG y) override;
    STDMETHOD_(void, DoubleClick)(short button, short shiftState, LONG x, LONG y) override;
    STDMETHOD_(void, KeyDown)(short keyCode, short shiftState) override;
    STDMETHOD_(void, KeyPress)(short key) override;
    STDMETHOD_(void, KeyUp)(short keyCode, short shiftState) override;
    STDMETHOD_(void, MouseDown)(short button, short shiftState, LONG x, LONG y) override;
    STDMETHOD_(void, MouseMove)(short button, short shiftState, LONG x, LONG y) override;
    STDMETHOD_(void, MouseUp)(short button, short shiftState, LONG x, LONG y) override;

    // ---- IOrvanePluginMethods (wmp_plugin_playlists.cpp)
    bool createSpecialPlaylistFolders() override;
    bool addToCleanedFolder(const juce::String& playlistName,
                            const juce::StringArray& trackPaths) override;
    bool addToNotFoundFolder(const juce::String& playlistName,
                             const juce::StringArray& trackPaths) override;
    bool addToDirtyFolder(const juce::String& playlistName,
                          const juce::StringArray& trackPaths) override;
    bool nestedPlaylistsSupported() override;
    int getPlaylistCount(const juce::String& specialFolderName) override;
    bool getPlaylistName(const juce::String& specialFolderName, int playlistIndex,
                         juce::String& name) override;
    bool removePlaylist(const juce::String& specialFolderName,
                        const juce::String& playlistName) override;
    int getPlaylistTrackCount(const juce::String& specialFolderName,
                              const juce::String& playlistName) override;
    bool getPlaylistTrackPath(const juce::String& specialFolderName,
                              const juce::String& playlistName, int trackIndex,
                              juce::String& path) override;
    bool removeTrackFromPlaylist(const juce::String& specialFolderName,
                                 const juce::String& playlistName,
                                 const juce::String& trackPath) override;

    // ---- IOrvanePluginMethods (wmp_plugin_playback.cpp)
    bool pause() override;
    bool stop() override;
    bool startCurrent() override;
    bool start(const juce::String& trackPath) override;
    bool isPlaying() override;
    bool isPaused() override;
    bool isShufflePlay() override;
    bool isRepeatTrack() override;
    bool isRepeatAll() override;
    bool isInSpecialMode() override;
    bool supportsRandomTrackAccess() override;
    void close() override;

    // ---- IOrvanePluginMethods (wmp_plugin_media_info.cpp)
    bool getCurrentMediaInfo(juce::StringPairArray& metadataOut) override;
    bool getMediaInfoFromPath(const juce::String& trackPath, juce::StringPairArray& metadataOut,
                              const juce::String& albumArtPath) override;
    bool getMediaInfoFromIndex(int trackIndex, juce::StringPairArray& metadataOut,
                               const juce::String& albumArtPath) override;
    bool setMediaInfoToPath(const juce::String& trackPath, const juce::StringPairArray& metadata,
                            const juce::String& albumArtPath, bool emptyOk) override;
    bool setMediaInfoToIndex(int trackIndex, const juce::StringPairArray& metadata,
                             const juce::String& albumArtPath, bool emptyOk) override;
    int getTrackCount() override;

    // ---- IOrvanePluginMethods (wmp_plugin_send_to.cpp and wmp_plugin.cpp)
    bool sendSelectedTracks() override;
    bool disconnectFromApp() override;

    // The reconnect timer, which runs only while the link is down: it tries to connect 2000 ms
    // after the loss and 2000 ms after each failed attempt.
    void timerCallback();

private:
    // Runs `use` with the player's core on the object's thread, in one step, and returns its
    // result. All code that uses the player's objects runs in such a step, which also releases
    // every pointer that it gets. False when there is no core, `use` throws, or the object ends
    // first. Any thread.
    [[nodiscard]] bool onPlayer(const std::function<bool(IWMPCore&)>& use);

    // Runs `work` on the object's thread: at once when called there, otherwise later. Does nothing
    // after the object's end.
    void onOwnThread(std::function<void()> work);

    // Calls `use` with the main-window hook, if there is one, under a lock that keeps it alive. Any
    // thread. `use` must neither send messages nor wait: the player's thread may wait for the lock.
    template <typename Use>
    void withWindowHook(Use&& use) {
        const juce::ScopedLock lock(m_lock);
        if (m_windowHook != nullptr) use(*m_windowHook);
    }

    // Appends the tracks that are in the library to the first playlist of that name, created when
    // there is none. True when the playlist exists. Ends early with false when the object is being
    // released, because the player waits for it.
    [[nodiscard]] bool addTracksToPlaylist(const juce::String& name,
                                           const juce::StringArray& trackPaths);
    using FindTrack = std::function<CComPtr<IWMPMedia>(IWMPCore&)>;
    [[nodiscard]] bool readMediaInfo(const FindTrack& find, juce::StringPairArray& metadataOut,
                                     const juce::String& albumArtPath);
    [[nodiscard]] bool writeMediaInfo(const FindTrack& find, const juce::StringPairArray& metadata,
                                      const juce::String& albumArtPath);
    [[nodiscard]] bool isInPlayState(long wanted);
    [[nodiscard]] bool isModeOn(const wchar_t* mode);
    // Waits up to 1000 ms for the player's state: until its event, and polls every 20 ms. After a
    // time-out logs `timeoutText` and returns false.
    [[nodiscard]] bool waitForPlayState(long wanted, const char* timeoutText);
    void reportPlayState(LONG newState);

    using Root = CComObjectRootEx<CComMultiThreadModel>;

    HRESULT link();
    HRESULT attach(IWMPCore* core);
    void unload();
    // Sends PlayerGoodbye, removes the hook and closes the link, once. The object's thread. Waits
    // up to 4000 ms for a running command and serves that command's calls meanwhile; after that the
    // command keeps the object, which is destroyed when the command ends.
    void end() noexcept;
    void unlink();
    void endCommands();
    void startReconnecting();
    // On the thread that ends the last command after end() has begun, or in end() itself.
    void commandsHaveEnded() noexcept;
    // Makes the object's own thread release the caller's reference.
    void releaseOnOwnThread() noexcept;
    FormatRuntime m_formatRuntime;  // from the first track that needs it to the object's end
    CComPtr<IWMPCore> m_core;       // the object's thread only, as the next two
    CComPtr<IConnectionPoint> m_connectionPoint;
    DWORD m_adviseCookie = 0;                      // 0: not advised
    std::unique_ptr<WmpWindowHook> m_windowHook;   // written under m_lock
    std::unique_ptr<WindowHook> m_listWindowHook;  // on the track list; nothing fills it yet
    std::unique_ptr<AppConnector> m_connector;     // the object's thread only

    // What a command shares while it runs. It owns nothing until end() drops it; from then on the
    // shares that commands still have own a reference to the object (m_keptByCommand).
    std::shared_ptr<IOrvanePluginMethods> m_methods;
    UniqueHandle m_commandsEnded{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    bool m_keptByCommand = false;

    std::shared_ptr<MessageWindow> m_window;  // runs what belongs to the object's thread
    MessageTimer m_reconnectTimer{
        [](void* self) { static_cast<COrVaneWmpPlugin*>(self)->timerCallback(); }, this};

    juce::CriticalSection m_lock;  // guards m_windowHook against commands
    UniqueHandle m_playStateChanged{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    int m_steps = 0;                      // of commands, on the stack of the object's thread
    unsigned m_setCoreCalls = 0;          // lets SetCore detect a nested call of itself
    std::atomic<bool> m_released{false};  // end() has begun: no core is taken any more
    bool m_ended = false;                 // end() is done
};

}  // namespace orvane
