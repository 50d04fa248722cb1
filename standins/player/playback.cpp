#include "standins/player/playback.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "standins/asf/file.h"
#include "standins/player/model.h"
#include "standins/player/objects.h"

namespace orvane::standin {

std::string nameOfPlayState(long state) {
    static const char* const names[] = {
        "undefined", "stopped", "paused",      "playing",       "scan forward", "rewind",
        "buffering", "waiting", "media ended", "transitioning", "ready",        "reconnecting"};
    const bool known = state >= 0 && static_cast<size_t>(state) < std::size(names);
    return std::to_string(state) + (known ? " (" + std::string(names[state]) + ")" : "");
}

void Playback::enterOpenState(WMPOpenState state) {
    m_model.fire([state](IWMPEvents& sink) { sink.OpenStateChange(state); });
}

void Playback::enter(WMPPlayState state) {
    if (m_state == wmppsPlaying) m_playedBefore += GetTickCount64() - m_playingSince;
    if (state == wmppsStopped) m_playedBefore = 0;
    m_state = state;
    m_heading = state;
    m_model.report("play state " + nameOfPlayState(state));
    m_model.fire([state](IWMPEvents& sink) { sink.PlayStateChange(state); });
    if (state != wmppsPlaying) return;

    m_playingSince = GetTickCount64();
    const double seconds = m_current ? m_model.tags.durationSeconds(*m_current) : 0;
    const auto whole =
        std::max<ULONGLONG>(m_model.options.trackLengthMs, static_cast<ULONGLONG>(seconds * 1000));
    const ULONGLONG left = whole > m_playedBefore ? whole - m_playedBefore : 0;
    const unsigned long change = ++m_change;
    m_model.later(static_cast<unsigned>(left), [this, change] {
        if (change != m_change) return;
        enter(wmppsMediaEnded);
        enter(wmppsStopped);
    });
}

void Playback::enterLater(unsigned milliseconds, WMPPlayState state) {
    const unsigned long change = ++m_change;
    m_heading = state;
    if (m_model.options.neverReached.contains(state)) return;
    m_model.later(milliseconds, [this, change, state] {
        if (change == m_change) enter(state);
    });
}

void Playback::open(TrackPtr track) {
    ++m_change;
    m_current = std::move(track);
    m_file.reset();
    if (m_current && !m_current->synthetic)
        m_file.reset(CreateFileW(asf::extendedLength(m_current->path).c_str(), GENERIC_READ,
                                 FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    m_playedBefore = 0;
    if (m_state == wmppsPlaying || m_state == wmppsPaused || m_heading != m_state)
        enter(wmppsStopped);
    if (!m_current) {
        enterOpenState(wmposPlaylistOpenNoMedia);
        return;
    }
    enterOpenState(wmposMediaOpening);
    enterOpenState(wmposMediaOpen);
    const TrackPtr current = m_current;
    m_model.fire([this, current](IWMPEvents& sink) {
        const auto media = makeMedia(m_model.shared_from_this(), current);
        sink.CurrentItemChange(media);
        sink.MediaChange(media);
    });
    if (m_state != wmppsStopped) enter(wmppsReady);
}

HRESULT Playback::openUrl(const std::wstring& url) {
    const std::wstring& refused = m_model.options.refusePath;
    if (!refused.empty() && foldCase(url).find(foldCase(refused)) != std::wstring::npos)
        return E_FAIL;
    if (url.empty()) {
        open(nullptr);
        return S_OK;
    }
    TrackPtr track = m_model.library.firstWithPath(url);
    if (!track) {
        track = std::make_shared<Track>();
        track->path = url;
    }
    open(std::move(track));
    return S_OK;
}

HRESULT Playback::play() {
    if (!m_current || m_heading == wmppsPlaying) return S_OK;
    if (m_state == wmppsPlaying) {
        // A pause that was on its way is called off; after a stop the track starts anew.
        if (m_heading == wmppsPaused) {
            enter(wmppsPlaying);
            return S_OK;
        }
        enter(wmppsStopped);
    }
    if (m_state != wmppsPaused) enter(wmppsTransitioning);
    enterLater(m_model.options.startDelayMs, wmppsPlaying);
    return S_OK;
}

HRESULT Playback::stop() {
    if (m_heading == wmppsStopped) return S_OK;
    enterLater(m_model.options.stopDelayMs, wmppsStopped);
    return S_OK;
}

HRESULT Playback::pause() {
    if (m_state != wmppsPlaying || m_heading == wmppsPaused) return S_OK;
    enterLater(m_model.options.pauseDelayMs, wmppsPaused);
    return S_OK;
}

}  // namespace orvane::standin
