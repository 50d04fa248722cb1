// The player operations around playback: the transport, and questions about the player's state.

#include "plugin/wmp_plugin.h"

#include "media/com_text.h"
#include "util/log/log.h"

namespace orvane {
namespace {

constexpr DWORD kPlayStateTimeoutMs = 1000;

const char* outcome(bool succeeded) { return succeeded ? "succeeded" : "failed"; }
const char* yesOrNo(bool answer) { return answer ? "yes" : "no"; }
const char* enabledOrDisabled(bool on) { return on ? "enabled" : "disabled"; }

CComPtr<IWMPControls> controlsOf(IWMPCore* core) {
    CComPtr<IWMPControls> controls;
    if (!core || FAILED(core->get_controls(&controls))) return nullptr;
    return controls;
}

bool isInPlayState(IWMPCore* core, WMPPlayState wanted) {
    WMPPlayState state = wmppsUndefined;
    return core && SUCCEEDED(core->get_playState(&state)) && state == wanted;
}

bool isModeOn(IWMPCore* core, const wchar_t* mode) {
    CComPtr<IWMPSettings> settings;
    VARIANT_BOOL on = VARIANT_FALSE;
    return core && SUCCEEDED(core->get_settings(&settings)) && settings &&
           SUCCEEDED(settings->getMode(CComBSTR(mode), &on)) && on != VARIANT_FALSE;
}

}  // namespace

bool COrVaneWmpPlugin::pause() {
    const CComPtr<IWMPControls> controls = controlsOf(core());
    const bool paused = controls && SUCCEEDED(controls->pause());
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: Pause called (%s)", outcome(paused));
    return paused;
}

bool COrVaneWmpPlugin::stop() {
    const CComPtr<IWMPCore> core = this->core();
    const CComPtr<IWMPControls> controls = controlsOf(core);
    bool stopped = false;
    if (controls && SUCCEEDED(controls->stop())) {
        stopped = waitForPlayState(*core, wmppsStopped, kPlayStateTimeoutMs);
        if (!stopped)
            syslog(LOG_ERR,
                   "COrVaneWmpPlugin: timeout occured while waiting for the player to stop");
    }
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: Stop called (%s)", outcome(stopped));
    return stopped;
}

bool COrVaneWmpPlugin::playAndWait(IWMPCore& core, IWMPControls& controls) {
    if (FAILED(controls.play())) return false;
    if (waitForPlayState(core, wmppsPlaying, kPlayStateTimeoutMs)) return true;
    syslog(LOG_ERR, "COrVaneWmpPlugin: timeout occured while waiting for the playback to begin");
    return false;
}

bool COrVaneWmpPlugin::startCurrent() {
    const CComPtr<IWMPCore> core = this->core();
    CComPtr<IWMPMedia> current;
    bool started = false;
    if (core && SUCCEEDED(core->get_currentMedia(&current)) && current) {
        const CComPtr<IWMPControls> controls = controlsOf(core);
        started = controls && playAndWait(*core, *controls);
    }
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: StartCurrent called (%s)", outcome(started));
    return started;
}

bool COrVaneWmpPlugin::start(const juce::String& trackPath) {
    const CComPtr<IWMPCore> core = this->core();
    const CComPtr<IWMPControls> controls = controlsOf(core);
    bool started = false;
    if (controls) {
        controls->stop();
        started = SUCCEEDED(core->put_URL(bstrOf(trackPath))) && playAndWait(*core, *controls);
    }
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: StartTrack called (%s)", outcome(started));
    return started;
}

bool COrVaneWmpPlugin::isPlaying() {
    const bool playing = isInPlayState(core(), wmppsPlaying);
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: IsPlaying called (%s)", yesOrNo(playing));
    return playing;
}

bool COrVaneWmpPlugin::isPaused() {
    const bool paused = isInPlayState(core(), wmppsPaused);
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: IsPaused called (%s)", yesOrNo(paused));
    return paused;
}

bool COrVaneWmpPlugin::isShufflePlay() {
    const bool on = isModeOn(core(), L"shuffle");
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: IsShuffleEnabled called (%s)", enabledOrDisabled(on));
    return on;
}

bool COrVaneWmpPlugin::isRepeatTrack() {
    const bool on = isModeOn(core(), L"autoRewind");
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: IsLoopTrackEnabled called (%s)", enabledOrDisabled(on));
    return on;
}

bool COrVaneWmpPlugin::isRepeatAll() {
    const bool on = isModeOn(core(), L"loop");
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
