#pragma once

// The player's transport: what is current, and play states that change over time as a real
// player's do. Guarded by the model's lock; delayed changes happen on the player's own thread.

#include <wmp.h>

#include <string>

#include "platform/handles.h"
#include "standins/player/com_support.h"
#include "standins/player/track.h"

namespace orvane::standin {

class Model;

std::string nameOfPlayState(long state);  // "3 (playing)"

class Playback {
public:
    explicit Playback(Model& model) : m_model(model) {}

    [[nodiscard]] WMPPlayState state() const { return m_state; }
    [[nodiscard]] const TrackPtr& current() const { return m_current; }  // may be null

    // Makes the track current and stops what plays; null for none.
    void open(TrackPtr track);
    // The library's item of that path, or an item without tags; E_FAIL for a refused path.
    HRESULT openUrl(const std::wstring& url);

    // Success means taken on: the state follows after the delay that the options give, or never.
    HRESULT play();
    HRESULT stop();
    HRESULT pause();

    void letFileGo() { m_file.reset(); }

private:
    void enter(WMPPlayState state);
    void enterLater(unsigned milliseconds, WMPPlayState state);
    void enterOpenState(WMPOpenState state);

    Model& m_model;
    WMPPlayState m_state = wmppsUndefined;
    WMPPlayState m_heading = wmppsUndefined;  // where a pending change leads
    TrackPtr m_current;
    UniqueFile m_file;  // the current track's: open for as long as it is current, stopped or not
    unsigned long m_change = 0;  // counts changes of mind; a pending one of an older count is void
    ULONGLONG m_playingSince = 0;
    ULONGLONG m_playedBefore = 0;  // milliseconds of the current track before that
};

}  // namespace orvane::standin
