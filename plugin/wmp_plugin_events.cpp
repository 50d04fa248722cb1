#include "plugin/wmp_plugin.h"

// The player's events. All but PlayStateChange leave at most a line in the log, at a priority that
// the plug-in's mask drops, so what a line needs is prepared only when it is wanted.

#include <cstdint>
#include <new>
#include <string>

#include "common/messages/player_name.h"
#include "media/field_table.h"
#include "media/wmp_media_item.h"
#include "platform/host_call.h"
#include "util/log/log.h"

namespace orvane {
namespace {

// A text of the player's for a trace line, in the thread's ANSI code page; empty while traces are
// off.
class TraceText {
public:
    explicit TraceText(BSTR text) noexcept {
        const int units = static_cast<int>(SysStringLen(text));
        if (units == 0 || !log_enabled(LOG_DEBUG)) return;
        try {
            const int size =
                WideCharToMultiByte(CP_THREAD_ACP, 0, text, units, nullptr, 0, nullptr, nullptr);
            m_text.resize(static_cast<std::size_t>(size));
            WideCharToMultiByte(CP_THREAD_ACP, 0, text, units, m_text.data(), size, nullptr,
                                nullptr);
        } catch (const std::bad_alloc&) {
            m_text.clear();
        }
    }

    [[nodiscard]] const char* get() const noexcept { return m_text.c_str(); }

private:
    std::string m_text;
};

unsigned addressOf(const void* object) {
    return static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(object));
}

HRESULT firstErrorCode(IWMPCore& core, LONG& code) {
    CComPtr<IWMPError> errors;
    HRESULT result = core.get_Error(&errors);
    if (FAILED(result)) return result;
    if (!errors) return E_POINTER;

    CComPtr<IWMPErrorItem> first;
    result = errors->get_Item(0, &first);
    if (FAILED(result)) return result;
    return first ? first->get_errorCode(&code) : E_POINTER;
}

// Reads what is sent and no more: the player waits for it, between two tracks.
void reportStart(AppConnector& connector, IWMPMedia* media) {
    WmpMediaItem item;
    if (!item.LoadFields(media, fields::kReported)) return;
    juce::String artist = item.getTrackArtist();
    if (artist.isEmpty()) {
        item.readField(media, fields::kAlbumArtist, {});
        artist = item.getAlbumArtist();
    }
    connector.playStarted(playerName(), item.getTrackTitle(), artist, item.getAlbumTitle(),
                          item.getGenre(), item.getFilename(), item.getYear(),
                          item.getTrackNumber());
}

}  // namespace

STDMETHODIMP_(void) COrVaneWmpPlugin::PlayStateChange(LONG newState) {
    const HostCall inProgress;
    SetEvent(m_playStateChanged.get());  // a command may wait for it
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: play state=%d", static_cast<int>(newState));
    onOwnThread([this, newState] { reportPlayState(newState); });
}

void COrVaneWmpPlugin::reportPlayState(LONG newState) {
    try {
        // The player may let us go while it answers.
        const CComPtr<IUnknown> self(GetUnknown());
        AppConnector* const link = m_connector.get();
        if (link == nullptr) return;

        if (newState == wmppsStopped) {
            link->playStopped(playerName());
        } else if (newState == wmppsPaused) {
            link->playPaused(playerName());
        } else if (newState == wmppsPlaying) {
            const CComPtr<IWMPCore> player = m_core;
            CComPtr<IWMPMedia> media;
            if (player && SUCCEEDED(player->get_currentMedia(&media))) reportStart(*link, media);
        }
    } catch (...) {
        // An event that there is no memory for is lost.
    }
}

STDMETHODIMP_(void) COrVaneWmpPlugin::Error() {
    const HostCall inProgress;
    if (!log_enabled(LOG_INFO)) return;
    onOwnThread([this] {
        const CComPtr<IUnknown> self(GetUnknown());
        HRESULT result = S_OK;
        LONG code = 0;
        if (const CComPtr<IWMPCore> player = m_core) result = firstErrorCode(*player, code);
        if (FAILED(result))
            syslog(LOG_INFO, "COrVaneWmpPlugin: unknown error occured");
        else
            syslog(LOG_INFO, "COrVaneWmpPlugin: error 0x%08x occured", static_cast<unsigned>(code));
    });
}

STDMETHODIMP_(void) COrVaneWmpPlugin::OpenStateChange(LONG newState) {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: open state=%d", static_cast<int>(newState));
}

STDMETHODIMP_(void) COrVaneWmpPlugin::ScriptCommand(BSTR type, BSTR parameter) {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: script command \"%s\" with param \"%s\"",
           TraceText(type).get(), TraceText(parameter).get());
}

STDMETHODIMP_(void) COrVaneWmpPlugin::Warning(LONG, LONG, BSTR description) {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: warning occured - %s", TraceText(description).get());
}

STDMETHODIMP_(void) COrVaneWmpPlugin::DurationUnitChange(LONG) {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: duration unit changed");
}

STDMETHODIMP_(void) COrVaneWmpPlugin::CdromMediaChange(LONG) {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: CDROM media chaged");
}

STDMETHODIMP_(void) COrVaneWmpPlugin::CurrentPlaylistChange(WMPPlaylistChangeEventType change) {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: current playlist change = %d", static_cast<int>(change));
}

STDMETHODIMP_(void) COrVaneWmpPlugin::CurrentPlaylistItemAvailable(BSTR name) {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: current playlist item \"%s\" becomes available",
           TraceText(name).get());
}

STDMETHODIMP_(void) COrVaneWmpPlugin::MediaChange(IDispatch*) {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: media changed");
}

STDMETHODIMP_(void) COrVaneWmpPlugin::CurrentMediaItemAvailable(BSTR name) {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: current media item \"%s\" becomes available",
           TraceText(name).get());
}

STDMETHODIMP_(void) COrVaneWmpPlugin::CurrentItemChange(IDispatch* media) {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: current item changed, ptr=0x%08x", addressOf(media));
}

STDMETHODIMP_(void) COrVaneWmpPlugin::MediaCollectionChange() {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: media collection changed");
}

STDMETHODIMP_(void) COrVaneWmpPlugin::MediaCollectionAttributeStringAdded(BSTR name, BSTR value) {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: media collection attr.string \"%s\" added, value=\"%s\"",
           TraceText(name).get(), TraceText(value).get());
}

STDMETHODIMP_(void) COrVaneWmpPlugin::MediaCollectionAttributeStringRemoved(BSTR name, BSTR value) {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: media collection attr.string \"%s\" removed, value=\"%s\"",
           TraceText(name).get(), TraceText(value).get());
}

STDMETHODIMP_(void)
COrVaneWmpPlugin::MediaCollectionAttributeStringChanged(BSTR name, BSTR oldValue, BSTR newValue) {
    syslog(LOG_DEBUG,
           "COrVaneWmpPluging: media collection attr.string \"%s\" changed, old.val=\"%s\" "
           "new.val=\"%s\"",
           TraceText(name).get(), TraceText(oldValue).get(), TraceText(newValue).get());
}

STDMETHODIMP_(void) COrVaneWmpPlugin::PlaylistCollectionChange() {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: playlist collection changed");
}

STDMETHODIMP_(void) COrVaneWmpPlugin::PlaylistCollectionPlaylistAdded(BSTR name) {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: playlist \"%s\" added to collection",
           TraceText(name).get());
}

STDMETHODIMP_(void) COrVaneWmpPlugin::PlaylistCollectionPlaylistRemoved(BSTR name) {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: playlist \"%s\" removed from collection",
           TraceText(name).get());
}

STDMETHODIMP_(void)
COrVaneWmpPlugin::PlaylistCollectionPlaylistSetAsDeleted(BSTR name, VARIANT_BOOL deleted) {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: playlist \"%s\" %s as deleted", TraceText(name).get(),
           deleted != VARIANT_FALSE ? "checked" : "unchecked");
}

STDMETHODIMP_(void) COrVaneWmpPlugin::ModeChange(BSTR mode, VARIANT_BOOL value) {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: mode changed, %s=%s", TraceText(mode).get(),
           value != VARIANT_FALSE ? "on" : "off");
}

STDMETHODIMP_(void) COrVaneWmpPlugin::MediaError(IDispatch*) {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: media error occured");
}

STDMETHODIMP_(void) COrVaneWmpPlugin::OpenPlaylistSwitch(IDispatch* item) {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: open playlist switched to 0x%08x", addressOf(item));
}

STDMETHODIMP_(void) COrVaneWmpPlugin::DomainChange(BSTR domain) {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: domain changed to \"%s\"", TraceText(domain).get());
}

STDMETHODIMP_(void) COrVaneWmpPlugin::SwitchedToPlayerApplication() {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: player switched to application");
}

STDMETHODIMP_(void) COrVaneWmpPlugin::SwitchedToControl() {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: player switched to control");
}

STDMETHODIMP_(void) COrVaneWmpPlugin::PlayerDockedStateChange() {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: player docked state changed");
}

STDMETHODIMP_(void) COrVaneWmpPlugin::PlayerReconnect() {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: player reconnected");
}

STDMETHODIMP_(void) COrVaneWmpPlugin::Click(short button, short, LONG x, LONG y) {
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: mouse button %d clicked at (%d,%d)",
           static_cast<int>(button), static_cast<int>(x), static_cast<int>(y));
}

// What neither the application nor the log hears of.

STDMETHODIMP_(void) COrVaneWmpPlugin::AudioLanguageChange(LONG) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::StatusChange() {}

STDMETHODIMP_(void) COrVaneWmpPlugin::NewStream() {}

STDMETHODIMP_(void) COrVaneWmpPlugin::Disconnect(LONG) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::Buffering(VARIANT_BOOL) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::EndOfStream(LONG) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::PositionChange(double, double) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::MarkerHit(LONG) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::PlaylistChange(IDispatch*, WMPPlaylistChangeEventType) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::DoubleClick(short, short, LONG, LONG) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::KeyDown(short, short) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::KeyPress(short) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::KeyUp(short, short) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::MouseDown(short, short, LONG, LONG) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::MouseMove(short, short, LONG, LONG) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::MouseUp(short, short, LONG, LONG) {}

}  // namespace orvane
