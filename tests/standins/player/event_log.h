#pragma once

// An event sink that writes down what it is told, and on which thread.

#include <functional>
#include <string>
#include <vector>

#include "standins/player/com_support.h"

#include <ocidl.h>
#include <wmp.h>

namespace orvane::standin {

class EventLog final : public ComObject<IWMPEvents> {
public:
    std::vector<std::string> lines;  // "PlayStateChange 3"
    std::vector<long> playStates;
    bool wrongThread = false;  // a call came on another thread than the first
    std::function<void(const std::string&)> onEvent;  // called after the line is noted

    [[nodiscard]] bool has(const std::string& line) const {
        for (const std::string& each : lines) {
            if (each == line) return true;
        }
        return false;
    }

    STDMETHOD_(void, OpenStateChange)(LONG s) override { note("OpenStateChange", s); }
    STDMETHOD_(void, PlayStateChange)(LONG s) override {
        playStates.push_back(s);
        note("PlayStateChange", s);
    }
    STDMETHOD_(void, Error)() override { note("Error"); }
    STDMETHOD_(void, PlaylistChange)(IDispatch*, WMPPlaylistChangeEventType t) override {
        note("PlaylistChange", t);
    }
    STDMETHOD_(void, MediaChange)(IDispatch*) override { note("MediaChange"); }
    STDMETHOD_(void, CurrentItemChange)(IDispatch*) override { note("CurrentItemChange"); }
    STDMETHOD_(void, MediaCollectionChange)() override { note("MediaCollectionChange"); }
    STDMETHOD_(void, PlaylistCollectionChange)() override {}
    STDMETHOD_(void, PlaylistCollectionPlaylistAdded)(BSTR name) override {
        note("PlaylistAdded " + toUtf8(textOf(name)));
    }
    STDMETHOD_(void, PlaylistCollectionPlaylistRemoved)(BSTR name) override {
        note("PlaylistRemoved " + toUtf8(textOf(name)));
    }
    STDMETHOD_(void, ModeChange)(BSTR name, VARIANT_BOOL value) override {
        note("ModeChange " + toUtf8(textOf(name)), value);
    }

    STDMETHOD_(void, AudioLanguageChange)(LONG) override {}
    STDMETHOD_(void, StatusChange)() override {}
    STDMETHOD_(void, ScriptCommand)(BSTR, BSTR) override {}
    STDMETHOD_(void, NewStream)() override {}
    STDMETHOD_(void, Disconnect)(LONG) override {}
    STDMETHOD_(void, Buffering)(VARIANT_BOOL) override {}
    STDMETHOD_(void, Warning)(LONG, LONG, BSTR) override {}
    STDMETHOD_(void, EndOfStream)(LONG) override {}
    STDMETHOD_(void, PositionChange)(double, double) override {}
    STDMETHOD_(void, MarkerHit)(LONG) override {}
    STDMETHOD_(void, DurationUnitChange)(LONG) override {}
    STDMETHOD_(void, CdromMediaChange)(LONG) override {}
    STDMETHOD_(void, CurrentPlaylistChange)(WMPPlaylistChangeEventType) override {}
    STDMETHOD_(void, CurrentPlaylistItemAvailable)(BSTR) override {}
    STDMETHOD_(void, CurrentMediaItemAvailable)(BSTR) override {}
    STDMETHOD_(void, MediaCollectionAttributeStringAdded)(BSTR, BSTR) override {}
    STDMETHOD_(void, MediaCollectionAttributeStringRemoved)(BSTR, BSTR) override {}
    STDMETHOD_(void, MediaCollectionAttributeStringChanged)(BSTR, BSTR, BSTR) override {}
    STDMETHOD_(void, PlaylistCollectionPlaylistSetAsDeleted)(BSTR, VARIANT_BOOL) override {}
    STDMETHOD_(void, MediaError)(IDispatch*) override {}
    STDMETHOD_(void, OpenPlaylistSwitch)(IDispatch*) override {}
    STDMETHOD_(void, DomainChange)(BSTR) override {}
    STDMETHOD_(void, SwitchedToPlayerApplication)() override {}
    STDMETHOD_(void, SwitchedToControl)() override {}
    STDMETHOD_(void, PlayerDockedStateChange)() override {}
    STDMETHOD_(void, PlayerReconnect)() override {}
    STDMETHOD_(void, Click)(short, short, LONG, LONG) override {}
    STDMETHOD_(void, DoubleClick)(short, short, LONG, LONG) override {}
    STDMETHOD_(void, KeyDown)(short, short) override {}
    STDMETHOD_(void, KeyPress)(short) override {}
    STDMETHOD_(void, KeyUp)(short, short) override {}
    STDMETHOD_(void, MouseDown)(short, short, LONG, LONG) override {}
    STDMETHOD_(void, MouseMove)(short, short, LONG, LONG) override {}
    STDMETHOD_(void, MouseUp)(short, short, LONG, LONG) override {}

protected:
    void* find(REFIID iid) override {
        return match<IUnknown, IWMPEvents>(iid, static_cast<IWMPEvents*>(this));
    }

private:
    void note(const std::string& line) {
        if (GetCurrentThreadId() != m_thread) wrongThread = true;
        lines.push_back(line);
        if (onEvent) onEvent(line);
    }
    void note(const std::string& name, long value) { note(name + " " + std::to_string(value)); }

    const DWORD m_thread = GetCurrentThreadId();
};

// The connection point of the player's events; empty when the player has none.
inline ComRef<IConnectionPoint> eventsOf(IWMPCore* core) {
    ComRef<IConnectionPoint> point;
    if (const auto container = ComRef<IWMPCore>(core).query<IConnectionPointContainer>())
        container->FindConnectionPoint(__uuidof(IWMPEvents), point.put());
    return point;
}

}  // namespace orvane::standin
