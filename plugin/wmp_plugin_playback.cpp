// The player operations around playback: the transport, and questions about the player's state.

#include "plugin/wmp_plugin.h"

#include <cstdint>
#include <optional>

#include "media/com_text.h"
#include "plugin/poll_until.h"
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

// Polls the player until it is in the state; false when it is not within kPlayStateTimeoutMs.
// Dispatches the calling thread's messages meanwhile.
bool waitForPlayState(IWMPCore& core, WMPPlayState wanted) {
    std::optional<int> quit;
    const bool reached = pollUntil(
        kPlayStateTimeoutMs, [] { return static_cast<std::uint32_t>(GetTickCount()); },
        [&] { return isInPlayState(&core, wanted); },
        [&] {
            MSG message;
            if (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
                if (message.message == WM_QUIT) {
                    quit = static_cast<int>(message.wParam);
                } else {
                    TranslateMessage(&message);
                    DispatchMessageW(&message);
                }
            }
            SwitchToThread();  // to the player's own thread, if it has something to do
        });
    // It is for the message loop that this call came from.
    if (quit) PostQuitMessage(*quit);
    return reached;
}

// Starts the current track and waits until it plays. A time-out is logged.
bool playAndWait(IWMPCore& core, IWMPControls& controls) {
    if (FAILED(controls.play())) return false;
    if (waitForPlayState(core, wmppsPlaying)) return true;
    syslog(LOG_ERR, "COrVaneWmpPlugin: timeout occured while waiting for the playback to begin");
    return false;
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
        stopped = waitForPlayState(*core, wmppsStopped);
        if (!stopped)
            syslog(LOG_ERR,
                   "COrVaneWmpPlugin: timeout occured while waiting for the player to stop");
    }
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: Stop called (%s)", outcome(stopped));
    return stopped;
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
