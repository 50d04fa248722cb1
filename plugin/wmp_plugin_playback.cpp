// The player operations around playback: the transport, and questions about the player's state.

#include "plugin/wmp_plugin.h"

#include <cstdint>
#include <tuple>

#include "media/com_text.h"
#include "platform/waiting.h"
#include "plugin/poll_until.h"
#include "util/log/log.h"

namespace orvane {
namespace {

constexpr DWORD kPlayStateTimeoutMs = 1000;
constexpr DWORD kPollMs = 20;  // at most, without an event of the player's
constexpr const char* kPlayTimeout =
    "COrVaneWmpPlugin: timeout occured while waiting for the playback to begin";
constexpr const char* kStopTimeout =
    "COrVaneWmpPlugin: timeout occured while waiting for the player to stop";

const char* outcome(bool succeeded) { return succeeded ? "succeeded" : "failed"; }
const char* yesOrNo(bool answer) { return answer ? "yes" : "no"; }
const char* enabledOrDisabled(bool on) { return on ? "enabled" : "disabled"; }

CComPtr<IWMPControls> controlsOf(IWMPCore& core) {
    CComPtr<IWMPControls> controls;
    if (FAILED(core.get_controls(&controls))) return nullptr;
    return controls;
}

bool play(IWMPCore& core) {
    const CComPtr<IWMPControls> controls = controlsOf(core);
    return controls && SUCCEEDED(controls->play());
}

}  // namespace

bool COrVaneWmpPlugin::isInPlayState(long wanted) {
    return onPlayer([wanted](IWMPCore& core) {
        WMPPlayState state = wmppsUndefined;
        return SUCCEEDED(core.get_playState(&state)) && state == wanted;
    });
}

bool COrVaneWmpPlugin::isModeOn(const wchar_t* mode) {
    return onPlayer([mode](IWMPCore& core) {
        CComPtr<IWMPSettings> settings;
        VARIANT_BOOL on = VARIANT_FALSE;
        return SUCCEEDED(core.get_settings(&settings)) && settings &&
               SUCCEEDED(settings->getMode(CComBSTR(mode), &on)) && on != VARIANT_FALSE;
    });
}

bool COrVaneWmpPlugin::waitForPlayState(long wanted, const char* timeoutText) {
    const HANDLE changed = m_playStateChanged.get();
    const bool reached = pollUntil(
        kPlayStateTimeoutMs, [] { return static_cast<std::uint32_t>(GetTickCount()); },
        [&] { return isInPlayState(wanted); },
        [&] {
            std::ignore = waitDispatchingMessages({&changed, 1}, kPollMs);
        });
    if (!reached) syslog(LOG_ERR, timeoutText);
    return reached;
}

bool COrVaneWmpPlugin::pause() {
    const bool paused = onPlayer([](IWMPCore& core) {
        const CComPtr<IWMPControls> controls = controlsOf(core);
        return controls && SUCCEEDED(controls->pause());
    });
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: Pause called (%s)", outcome(paused));
    return paused;
}

bool COrVaneWmpPlugin::stop() {
    const bool asked = onPlayer([](IWMPCore& core) {
        const CComPtr<IWMPControls> controls = controlsOf(core);
        return controls && SUCCEEDED(controls->stop());
    });
    const bool stopped = asked && waitForPlayState(wmppsStopped, kStopTimeout);
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: Stop called (%s)", outcome(stopped));
    return stopped;
}

bool COrVaneWmpPlugin::startCurrent() {
    const bool asked = onPlayer([](IWMPCore& core) {
        CComPtr<IWMPMedia> current;
        return SUCCEEDED(core.get_currentMedia(&current)) && current && play(core);
    });
    const bool started = asked && waitForPlayState(wmppsPlaying, kPlayTimeout);
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: StartCurrent called (%s)", outcome(started));
    return started;
}

bool COrVaneWmpPlugin::start(const juce::String& trackPath) {
    const bool asked = onPlayer([&](IWMPCore& core) {
        const CComPtr<IWMPControls> controls = controlsOf(core);
        if (!controls) return false;
        controls->stop();
        return SUCCEEDED(core.put_URL(bstrOf(trackPath))) && SUCCEEDED(controls->play());
    });
    const bool started = asked && waitForPlayState(wmppsPlaying, kPlayTimeout);
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: StartTrack called (%s)", outcome(started));
    return started;
}

bool COrVaneWmpPlugin::isPlaying() {
    const bool playing = isInPlayState(wmppsPlaying);
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: IsPlaying called (%s)", yesOrNo(playing));
    return playing;
}

bool COrVaneWmpPlugin::isPaused() {
    const bool paused = isInPlayState(wmppsPaused);
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: IsPaused called (%s)", yesOrNo(paused));
    return paused;
}

bool COrVaneWmpPlugin::isShufflePlay() {
    const bool on = isModeOn(L"shuffle");
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: IsShuffleEnabled called (%s)", enabledOrDisabled(on));
    return on;
}

bool COrVaneWmpPlugin::isRepeatTrack() {
    const bool on = isModeOn(L"autoRewind");
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: IsLoopTrackEnabled called (%s)", enabledOrDisabled(on));
    return on;
}

bool COrVaneWmpPlugin::isRepeatAll() {
    const bool on = isModeOn(L"loop");
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: IsLoopAllEnabled called (%s)", enabledOrDisabled(on));
    return on;
}

bool COrVaneWmpPlugin::isInSpecialMode() {
    bool special = false;
    withWindowHook([&](WmpWindowHook& hook) { special = hook.isInSpecialMode(); });
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: IsInSpecialMode called (%s)", special ? "true" : "false");
    return special;
}

bool COrVaneWmpPlugin::supportsRandomTrackAccess() { return true; }

void COrVaneWmpPlugin::close() {
    withWindowHook([](WmpWindowHook& hook) { hook.postMessage(WM_CLOSE, 0, 0); });
}

}  // namespace orvane
